#include "files/settings_text.h"

#include <cstdlib>

namespace pelagrim {

namespace {

constexpr std::string_view kBlanks = " \t";
constexpr size_t kMaxKey = 63;
constexpr size_t kMaxValue = 255;

struct NumberKey {
  std::string_view key;
  double Settings::*field;
};
constexpr NumberKey kNumberKeys[] = {
    {kStartKey, &Settings::start_hz},         {kStopKey, &Settings::stop_hz},
    {kThresholdKey, &Settings::threshold_db}, {kDwellKey, &Settings::dwell_seconds},
    {kRasterKey, &Settings::raster_hz},
};

}  // namespace

std::optional<SettingLine> parseSettingLine(std::string_view line) {
  const size_t first = line.find_first_not_of(kBlanks);
  if (first == std::string_view::npos || line[first] == '#') return std::nullopt;
  line.remove_prefix(first);
  const size_t equals = line.find('=');
  if (equals > kMaxKey) return std::nullopt;  // npos is, too

  const std::string_view key = line.substr(0, equals);
  const std::string_view rest = line.substr(equals + 1);
  const std::string_view value = rest.substr(0, rest.find_first_of("\r\n")).substr(0, kMaxValue);
  if (key.empty() || value.empty()) return std::nullopt;
  return SettingLine{key.substr(0, key.find_last_not_of(kBlanks) + 1), value};
}

bool asksToSweep(std::string_view value) {
  return value.find_first_of("nN") == std::string_view::npos;
}

double settingNumber(std::string_view value) {
  char text[kMaxValue + 1];  // strtod needs an end
  text[value.copy(text, kMaxValue)] = '\0';
  return std::strtod(text, nullptr);
}

void applySetting(const SettingLine& line, Settings& settings) {
  // "no", "none" and the like; also "on", so the text of the default file offers yes and no.
  if (line.key == kSweepKey) settings.sweep = asksToSweep(line.value);
  for (const NumberKey& number : kNumberKeys) {
    if (line.key == number.key) settings.*number.field = settingNumber(line.value);
  }
}

}  // namespace pelagrim
