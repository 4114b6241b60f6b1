#include "host/session/plugin_library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <span>
#include <system_error>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr const char* kDefaultPluginName = "pelagrim_plugin.so";
constexpr uint32_t kMaxCapabilities = 32;  // the bits of the mask

/// The text of an optional string of the plug-in.
std::string textOf(const char* text) {
  return text == nullptr ? "(none)" : displayText(text);
}

std::string kindName(uint32_t kind) {
  switch (kind) {
    case kIqProcessor:
      return "IQ processor";
    case kPanel:
      return "panel";
    case kHostClient:
      return "host client";
    default:
      return fmt::format("kind {}, not known here", kind);
  }
}

/// Whether nobody but root and the program's owner can change `plugin`, or put another file in its
/// place. Neither path has links in it.
bool isTrusted(const std::filesystem::path& plugin, const std::filesystem::path& program) {
  struct stat owner = {};
  if (stat(program.c_str(), &owner) != 0) return false;
  const auto is_safe = [&owner](const std::filesystem::path& path) {
    struct stat found = {};
    if (stat(path.c_str(), &found) != 0) return false;
    const bool is_open_to_all = (found.st_mode & S_IWOTH) != 0 && (found.st_mode & S_ISVTX) == 0;
    return (found.st_uid == 0 || found.st_uid == owner.st_uid) && !is_open_to_all;
  };
  const auto folder = plugin.parent_path();
  return is_safe(plugin) && is_safe(folder) && is_safe(folder.parent_path());
}

}  // namespace

PluginLibrary::PluginLibrary(const std::filesystem::path& path) : path_(path.string()) {
  library_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) {
    const char* const reason = dlerror();
    throw PluginError(fmt::format("cannot load the plug-in: {}; name it with --plugin PATH",
                                  reason == nullptr ? path_ : reason));
  }
  try {
    checkDescriptor();
  } catch (...) {
    dlclose(library_);
    throw;
  }
}

PluginLibrary::~PluginLibrary() {
  dlclose(library_);
}

void PluginLibrary::fail(const std::string& what) const {
  throw PluginError(fmt::format("plug-in {}: {}", path_, what));
}

void PluginLibrary::checkDescriptor() {
  const auto query =
      reinterpret_cast<WendlePluginQuery>(dlsym(library_, WENDLE_PLUGIN_QUERY_SYMBOL));
  if (query == nullptr) {
    fail("is no plug-in of this interface, as it does not export " WENDLE_PLUGIN_QUERY_SYMBOL);
  }
  descriptor_ = query(WENDLE_ABI_VERSION);
  if (descriptor_ == nullptr) {
    fail(fmt::format("speaks another version of the interface than {}", WENDLE_ABI_VERSION));
  }
  if (descriptor_->struct_size < sizeof(WendlePluginDesc)) {
    fail(fmt::format("its descriptor has {} bytes instead of {}", descriptor_->struct_size,
                     sizeof(WendlePluginDesc)));
  }
  if (descriptor_->abi_version != WENDLE_ABI_VERSION) {
    fail(fmt::format("its descriptor is of version {} instead of {}", descriptor_->abi_version,
                     WENDLE_ABI_VERSION));
  }
  const uint32_t count = descriptor_->capability_count;
  if (count > kMaxCapabilities || (count > 0 && descriptor_->capabilities == nullptr)) {
    fail(fmt::format("its list of {} capabilities is not there", count));
  }
  uint32_t kinds = 0;
  for (const auto& capability : std::span(descriptor_->capabilities, count)) {
    kinds |= capability.kind;
    takeCapability(capability);
  }
  if (kinds != descriptor_->capability_mask) {
    fail(fmt::format("its capability mask {:#x} does not agree with its list, {:#x}",
                     descriptor_->capability_mask, kinds));
  }
  if (iq_ == nullptr) fail("has no IQ processor, so it cannot survey");
}

void PluginLibrary::takeCapability(const WendleCapability& capability) {
  const auto table = [&]<typename Table>(const Table*& kept) -> const Table& {
    const std::string kind = kindName(capability.kind);
    if (kept != nullptr) fail(fmt::format("lists its {} twice", kind));
    kept = static_cast<const Table*>(capability.table);
    if (kept == nullptr) fail(fmt::format("the table of its {} is null", kind));
    if (capability.table_size < sizeof(Table) || kept->struct_size != capability.table_size) {
      fail(
          fmt::format("the table of its {} has {} bytes in the list and {} in itself instead of {}",
                      kind, capability.table_size, kept->struct_size, sizeof(Table)));
    }
    return *kept;
  };
  bool complete = true;
  if (capability.kind == kIqProcessor) {
    const WendleIqApi& iq = table(iq_);
    complete = iq.create != nullptr && iq.process != nullptr && iq.retune != nullptr &&
               iq.poll_text != nullptr && iq.destroy != nullptr;
  } else if (capability.kind == kPanel) {
    const WendlePanelApi& panel = table(panel_);
    complete = panel.create != nullptr && panel.columns != nullptr && panel.poll_rows != nullptr &&
               panel.destroy != nullptr;
  } else if (capability.kind == kHostClient) {
    complete = table(host_client_).attach != nullptr;
  }
  if (!complete) fail(fmt::format("a function of its {} is null", kindName(capability.kind)));
}

std::string PluginLibrary::describe() const {
  std::string text = fmt::format(
      "file        {}\nname        {}\nversion     {}\nauthor      {}\nlicense     {}\n"
      "interface   version {}\n",
      displayText(path_), textOf(descriptor_->plugin_name), textOf(descriptor_->version),
      textOf(descriptor_->author), textOf(descriptor_->license), descriptor_->abi_version);
  for (const auto& entry : std::span(descriptor_->capabilities, descriptor_->capability_count)) {
    text +=
        fmt::format("capability  {} (table of {} bytes)\n", kindName(entry.kind), entry.table_size);
  }
  return text;
}

std::filesystem::path findDefaultPlugin(const std::filesystem::path& program) {
  namespace fs = std::filesystem;
  const auto folder = program.parent_path();
  for (const auto& place : {folder, folder.parent_path() / "lib" / "pelagrim"}) {
    std::error_code error;
    auto plugin = fs::canonical(place / kDefaultPluginName, error);
    if (error) continue;
    if (isTrusted(plugin, program)) return plugin;
    throw PluginError(
        fmt::format("{} is not loaded: it or its folder can be changed by users other than root "
                    "and the owner of the program; to load it all the same, name it with --plugin",
                    plugin.string()));
  }
  throw PluginError(
      fmt::format("there is no {} beside the program, in {}, or in ../lib/pelagrim from there; "
                  "name it with --plugin PATH",
                  kDefaultPluginName, folder.string()));
}

std::filesystem::path findDefaultPlugin() {
  return findDefaultPlugin(std::filesystem::read_symlink("/proc/self/exe"));
}

}  // namespace pelagrim_host
