#include "host/survey_dir/survey_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "files/settings_text.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kBlanks = " \t";

constexpr const char* kNewFileHead =
    "# Written by pelagrim-survey. A key that is not here has its default: start, stop,\n"
    "# threshold_db, dwell_seconds, raster_hz, sweep.\n";

struct NumberKey {
  std::string_view key;
  std::optional<double> SurveySettings::*set;
  double pelagrim::Settings::*in_force;
};
constexpr NumberKey kNumberKeys[] = {
    {pelagrim::kStartKey, &SurveySettings::start_hz, &pelagrim::Settings::start_hz},
    {pelagrim::kStopKey, &SurveySettings::stop_hz, &pelagrim::Settings::stop_hz},
    {pelagrim::kThresholdKey, &SurveySettings::threshold_db, &pelagrim::Settings::threshold_db},
    {pelagrim::kDwellKey, &SurveySettings::dwell_seconds, &pelagrim::Settings::dwell_seconds},
    {pelagrim::kRasterKey, &SurveySettings::raster_hz, &pelagrim::Settings::raster_hz},
};

/// Calls `visit` with every setting of the text, as the plug-in reads it.
template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    if (const auto setting = pelagrim::parseSettingLine(text.substr(0, length))) visit(*setting);
    text.remove_prefix(length);
  }
}

/// The value in the last line of a key, up to the end of the line, without the blanks around it: a
/// part of `text`.
std::optional<std::string_view> findValue(std::string_view text, std::string_view key) {
  std::optional<std::string_view> found;
  forEachLine(text, [&](const pelagrim::SettingLine& line) {
    if (line.key != key) return;
    std::string_view value = text.substr(static_cast<size_t>(line.value.data() - text.data()));
    value = value.substr(0, value.find_first_of("\r\n"));
    value.remove_prefix(std::min(value.find_first_not_of(kBlanks), value.size()));
    found = value.substr(0, value.find_last_not_of(kBlanks) + 1);
  });
  return found;
}

/// Calls `visit` with the key and value of everything that is set.
template <typename Visit>
void forEachSet(const SurveySettings& settings, Visit visit) {
  for (const NumberKey& number : kNumberKeys) {
    if (const auto& value = settings.*number.set) visit(number.key, formatNumber(*value));
  }
  if (settings.sweep) visit(pelagrim::kSweepKey, std::string(*settings.sweep ? "yes" : "no"));
}

void setOne(std::string& text, std::string_view key, const std::string& value) {
  const auto old_value = findValue(text, key);
  if (!old_value) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    text += fmt::format("{} = {}\n", key, value);
    return;
  }
  const size_t number_length = std::min(old_value->find_first_of(" \t#"), old_value->size());
  const size_t length = key == pelagrim::kSweepKey ? old_value->size() : number_length;
  text.replace(static_cast<size_t>(old_value->data() - text.data()), length, value);
}

}  // namespace

bool SurveySettings::isEmpty() const {
  bool is_empty = true;
  forEachSet(*this, [&](std::string_view, const std::string&) { is_empty = false; });
  return is_empty;
}

SurveySettings SurveySettings::without(const SurveySettings& others) const {
  SurveySettings left = *this;
  for (const NumberKey& number : kNumberKeys) {
    if (others.*number.set) (left.*number.set).reset();
  }
  if (others.sweep) left.sweep.reset();
  return left;
}

SurveySettings SurveySettings::changedBy(const SurveySettings& newer) const {
  SurveySettings changed = *this;
  for (const NumberKey& number : kNumberKeys) {
    if (newer.*number.set) changed.*number.set = newer.*number.set;
  }
  if (newer.sweep) changed.sweep = newer.sweep;
  return changed;
}

pelagrim::Settings SurveySettings::inForce(const pelagrim::Settings& others) const {
  pelagrim::Settings settings = others;
  for (const NumberKey& number : kNumberKeys) {
    settings.*number.in_force = (this->*number.set).value_or(settings.*number.in_force);
  }
  settings.sweep = sweep.value_or(settings.sweep);
  return settings;
}

std::string SurveySettings::text() const {
  std::string text;
  forEachSet(*this, [&](std::string_view key, const std::string& value) {
    text += fmt::format("{}{} = {}", text.empty() ? "" : ", ", key, value);
  });
  return text;
}

SurveySettings parseSettings(std::string_view text) {
  SurveySettings settings;
  forEachLine(text, [&](const pelagrim::SettingLine& line) {
    if (line.key == pelagrim::kSweepKey) settings.sweep = pelagrim::asksToSweep(line.value);
    for (const NumberKey& number : kNumberKeys) {
      if (line.key != number.key) continue;
      const double value = pelagrim::settingNumber(line.value);
      settings.*number.set = std::isfinite(value) ? std::optional(value) : std::nullopt;
    }
  });
  return settings;
}

std::string withSettings(std::string_view text, const SurveySettings& changes) {
  std::string edited(text);
  forEachSet(changes,
             [&](std::string_view key, const std::string& value) { setOne(edited, key, value); });
  return edited;
}

std::optional<SurveySettings> readSettings(const std::filesystem::path& directory) {
  const auto text = readIfThere(settingsPath(directory));
  return text ? std::optional(parseSettings(*text)) : std::nullopt;
}

void editSettings(const std::filesystem::path& directory, const SurveySettings& changes) {
  const auto path = settingsPath(directory);
  if (isDevice(path)) {
    throw FileError(fmt::format("{} is a device, which keeps no settings", path.string()));
  }
  const auto old_text = readIfThere(path);
  const std::string text = withSettings(old_text.value_or(kNewFileHead), changes);
  if (old_text != text) replaceFile(path, text);
}

}  // namespace pelagrim_host
