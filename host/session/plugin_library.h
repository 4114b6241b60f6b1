#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "wendle_plugin.h"

namespace pelagrim_host {

/// A plug-in that cannot be loaded or whose descriptor is wrong. The message names the file.
struct PluginError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A loaded plug-in whose descriptor and tables have been checked: sizes, kinds, no null functions
/// in the tables that are used. It is unloaded with the object.
class PluginLibrary {
 public:
  /// Loads the library; a path without a slash is searched for like any library.
  explicit PluginLibrary(const std::filesystem::path& path);
  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  const WendleIqApi& iq() const { return *iq_; }

  /// Null if the plug-in has no panel.
  const WendlePanelApi* panel() const { return panel_; }

  /// Null if the plug-in needs nothing from its host.
  const WendleHostClientApi* hostClient() const { return host_client_; }

  /// What --plugin-info shows: one fact per line, each ending in a line feed.
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

/// Where the plug-in is by default: beside the program, else in lib/pelagrim below the
/// program's prefix. Throws PluginError when it is in neither place, or when it or its folder could
/// have been put there by somebody else than root or the owner of the program.
std::filesystem::path findDefaultPlugin();

/// The same for the program at that path, which has no links in it.
std::filesystem::path findDefaultPlugin(const std::filesystem::path& program);

}  // namespace pelagrim_host
