#include <nlohmann/json.hpp>

#include "host/export/export_formats.h"

namespace pelagrim_host {
namespace {

/// The place in SDR++'s list of demodulators.
int modeNumber(ListeningMode mode) {
  switch (mode) {
    case ListeningMode::kNfm:
      return 0;
    case ListeningMode::kWfm:
      return 1;
    case ListeningMode::kAm:
      return 2;
    case ListeningMode::kUsb:
      return 4;
    case ListeningMode::kCw:
      return 5;
    case ListeningMode::kLsb:
      return 6;
    case ListeningMode::kNone:
      break;
  }
  return 7;  // raw
}

}  // namespace

std::string sdrppBookmarks(const ExportedChannels& channels) {
  nlohmann::json bookmarks = nlohmann::json::object();
  for (const ExportedChannel& channel : channels) {
    bookmarks[channel.name] = {{"frequency", channel.listening.dial_hz},
                               {"bandwidth", channel.listening.bandwidth_hz},
                               {"mode", modeNumber(channel.listening.mode)}};
  }
  constexpr int kIndent = 4;
  return nlohmann::json{{"bookmarks", bookmarks}}.dump(kIndent, ' ', true) + "\n";
}

}  // namespace pelagrim_host
