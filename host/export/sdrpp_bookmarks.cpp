#include <nlohmann/json.hpp>

#include "host/export/export_formats.h"

namespace pelagrim_host {
namespace {

/// The place in SDR++'s list of demodulators; 7: raw.
constexpr ModeNames<int> kModeNumbers = {
    .none = 7, .cw = 5, .usb = 4, .lsb = 6, .am = 2, .nfm = 0, .wfm = 1};

}  // namespace

std::string sdrppBookmarks(const ExportedChannels& channels) {
  nlohmann::json bookmarks = nlohmann::json::object();
  for (const ExportedChannel& channel : channels) {
    bookmarks[channel.name] = {{"frequency", channel.listening.dial_hz},
                               {"bandwidth", channel.listening.bandwidth_hz},
                               {"mode", kModeNumbers[channel.listening.mode]}};
  }
  constexpr int kIndent = 4;
  return nlohmann::json{{"bookmarks", bookmarks}}.dump(kIndent, ' ', true) + "\n";
}

}  // namespace pelagrim_host
