#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

#include "host/export/export_formats.h"

namespace pelagrim_host {
namespace {

constexpr const char* kUntagged = "Untagged";  // gqrx's own name for it

constexpr ModeNames<std::string_view> kModulations = {.none = "Raw I/Q",
                                                      .cw = "CW-U",
                                                      .usb = "USB",
                                                      .lsb = "LSB",
                                                      .am = "AM",
                                                      .nfm = "Narrow FM",
                                                      .wfm = "WFM (mono)"};

std::string without(std::string text, std::string_view unwanted) {
  for (char& character : text) {
    if (unwanted.find(character) != std::string_view::npos) character = ' ';
  }
  return text;
}

/// A single tag: no list of tags, no comment, not empty.
std::string tagOf(const ExportedChannel& channel) {
  const std::string tag = without(channel.band, ";,#");
  const bool blank = tag.find_first_not_of(' ') == std::string::npos;
  return blank ? kUntagged : tag;
}

}  // namespace

std::string gqrxBookmarks(const ExportedChannels& channels) {
  std::set<std::string> tags;
  for (const ExportedChannel& channel : channels) tags.insert(tagOf(channel));
  std::string text = fmt::format("{:<20}; {}\n", "# Tag name", " color");
  for (const std::string& tag : tags) text += fmt::format("{:<20}; #c0c0c0\n", tag);
  text += fmt::format("\n{:<12}; {:<25}; {:<20}; {:>10}; {}\n", "# Frequency", "Name", "Modulation",
                      "Bandwidth", "Tags");
  for (const ExportedChannel& channel : channels) {
    const Listening& listening = channel.listening;
    text += fmt::format("{:>12}; {:<25}; {:<20}; {:>10}; {}\n", std::llround(listening.dial_hz),
                        without(channel.name, ";"), kModulations[listening.mode],
                        std::llround(listening.bandwidth_hz), tagOf(channel));
  }
  return text;
}

}  // namespace pelagrim_host
