#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "wendle_plugin.h"

namespace pelagrim_host {

/// A plug-in that cannot be loaded or whose descriptor does not hold. The line names the file.
struct PluginError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A loaded plug-in whose descriptor and tables have been checked: sizes, kinds, no null function
/// in a table that is used. It is unloaded with the object.
class PluginLibrary {
 public:
  /// Loads the library; a path without a slash is looked for as the dynamic loader does.
  explicit PluginLibrary(const std::filesystem::path& path);
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  const WendleIqApi& iq() const { return *iq_; }

  /// Null when the plug-in has no panel.
  const WendlePanelApi* panel() const { return panel_; }

  /// Null when the plug-in wants nothing from its host.
  const WendleHostClientApi* hostClient() const { return host_client_; }

  /// What --plugin-info shows: one line for each thing, each ended by a line end.
  std::string describe() const;

 private:
  void checkDescriptor();
  void takeCapability(const WendleCapability& capability);
  [[noreturn]] void fail(const std::string& what) const;

  std::string path_;
  void* library_ = nullptr;
  const WendlePluginDesc* descriptor_ = nullptr;
  const WendleIqApi* iq_ = nullptr;
  const WendlePanelApi* panel_ = nullptr;
  const WendleHostClientApi* host_client_ = nullptr;
};

/// Where the plug-in is when nobody says: beside the program, one folder above it (a build tree),
/// lib/pelagrim below the program's prefix, else left to the search of the dynamic loader.
std::filesystem::path findDefaultPlugin();

}  // namespace pelagrim_host
