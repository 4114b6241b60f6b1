#include "host/sources/gain_setting.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace pelagrim_host {
namespace {

/// Plain decibels: a suffix such as the k of frequencies would be a slip here.
std::optional<double> parseDecibels(std::string_view text) {
  double value_db = 0.0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value_db);
  if (error != std::errc() || stop != end || !std::isfinite(value_db)) return std::nullopt;
  return value_db;
}

}  // namespace

std::optional<GainSetting> parseGain(std::string_view text) {
  GainSetting gain;
  gain.automatic = text == "auto";
  gain.overall_db = parseDecibels(text);
  if (gain.automatic || gain.overall_db) return gain;
  for (bool more = true; more;) {
    const size_t comma = text.find(',');
    const std::string_view item = text.substr(0, comma);
    const size_t equals = item.find('=');
    if (equals == 0 || equals == std::string_view::npos) return std::nullopt;
    const auto value_db = parseDecibels(item.substr(equals + 1));
    if (!value_db) return std::nullopt;
    gain.stages_db.emplace_back(item.substr(0, equals), *value_db);
    more = comma != std::string_view::npos;
    if (more) text.remove_prefix(comma + 1);
  }
  return gain;
}

}  // namespace pelagrim_host
