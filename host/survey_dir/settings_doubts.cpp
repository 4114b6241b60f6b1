#include "host/survey_dir/settings_doubts.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "files/settings_text.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// Every letter of the value counts, those of a remark behind it, too.
std::optional<std::string> doubtOfSweep(std::string_view value) {
  const std::string_view meaning = pelagrim::asksToSweep(value) ? "yes" : "no";
  if (value.substr(0, value.find_first_of(" \t#")) == meaning) return std::nullopt;
  return fmt::format("means {}, because of the letters in it; write yes or no alone", meaning);
}

/// `line`: without the blanks around it.
std::optional<std::string> doubtOf(std::string_view line) {
  if (line.empty() || line.front() == '#') return std::nullopt;
  constexpr std::string_view kNumberKeys[] = {pelagrim::kStartKey, pelagrim::kStopKey,
                                              pelagrim::kThresholdKey, pelagrim::kDwellKey,
                                              pelagrim::kRasterKey};
  const auto setting = pelagrim::parseSettingLine(line);
  const std::string_view key = setting ? setting->key : "";
  if (key == pelagrim::kSweepKey) return doubtOfSweep(trimmed(setting->value));
  if (std::find(std::begin(kNumberKeys), std::end(kNumberKeys), key) == std::end(kNumberKeys)) {
    return "sets nothing: lines are start, stop, threshold_db, dwell_seconds, raster_hz or sweep, "
           "= and a value";
  }
  const double read = pelagrim::settingNumber(setting->value);
  if (parsePlainNumber(trimmed(setting->value.substr(0, setting->value.find('#')))) != read) {
    return fmt::format("is read as {}; write a number alone, in hertz, seconds or dB", read);
  }
  const bool is_edge = key == pelagrim::kStartKey || key == pelagrim::kStopKey;
  if (is_edge && read > 0.0 && read < 1000.0) {
    return fmt::format("is in hertz; {0} MHz is {0}e6", read);
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> settingsDoubts(std::string_view text) {
  constexpr size_t kMaxDoubts = 3;
  constexpr size_t kMaxShown = 60;  // bytes of a line
  std::vector<std::string> doubts;
  size_t more = 0;
  for (size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = trimmed(text.substr(0, text.find('\n')));
    text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    const auto doubt = doubtOf(line);
    if (!doubt) continue;
    if (doubts.size() == kMaxDoubts) {
      ++more;
    } else {
      doubts.push_back(
          fmt::format("survey.cfg, line {}: '{}' {}", number, line.substr(0, kMaxShown), *doubt));
    }
  }
  if (more > 0) doubts.push_back(fmt::format("survey.cfg: {} more lines like that", more));
  return doubts;
}

}  // namespace pelagrim_host
