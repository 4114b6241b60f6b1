#include "host/survey_dir/survey_settings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kSweep = "sweep";

constexpr const char* kNewFileHead =
    "# Written by pelagrim-survey. A key that is not here has its default: start, stop,\n"
    "# threshold_db, dwell_seconds, raster_hz, sweep.\n";

struct NumberKey {
  std::string_view key;
  std::optional<double> SurveySettings::*set;
  double pelagrim::Settings::*in_force;
};
constexpr NumberKey kNumberKeys[] = {
    {"start", &SurveySettings::start_hz, &pelagrim::Settings::start_hz},
    {"stop", &SurveySettings::stop_hz, &pelagrim::Settings::stop_hz},
    {"threshold_db", &SurveySettings::threshold_db, &pelagrim::Settings::threshold_db},
    {"dwell_seconds", &SurveySettings::dwell_seconds, &pelagrim::Settings::dwell_seconds},
    {"raster_hz", &SurveySettings::raster_hz, &pelagrim::Settings::raster_hz},
};

/// Where the value of a key stands in a text, without the blanks around it.
struct ValuePlace {
  size_t begin;
  size_t length;
};

std::string_view withoutBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<ValuePlace> findPlace(std::string_view text, std::string_view key) {
  std::optional<ValuePlace> place;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    std::string_view line = text.substr(begin, end - begin);
    line = line.substr(0, line.find('\r'));
    const size_t equals = line.find('=');
    if (equals != std::string_view::npos && withoutBlanks(line.substr(0, equals)) == key &&
        equals + 1 < line.size()) {
      const std::string_view value = withoutBlanks(line.substr(equals + 1));
      const size_t at =
          value.empty() ? begin + line.size() : static_cast<size_t>(value.data() - text.data());
      place = ValuePlace{at, value.size()};
    }
    begin = end + 1;
  }
  return place;
}

std::optional<std::string> findValue(std::string_view text, std::string_view key) {
  const auto place = findPlace(text, key);
  if (!place) return std::nullopt;
  return std::string(text.substr(place->begin, place->length));
}

std::optional<double> findNumber(std::string_view text, std::string_view key) {
  const auto value = findValue(text, key);
  if (!value) return std::nullopt;
  // As the plug-in reads it: 0 where there is no number. This program sets no locale.
  const double number = std::strtod(value->c_str(), nullptr);
  return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// Calls `visit` with key and value for everything that is set.
template <typename Visit>
void forEachSet(const SurveySettings& settings, Visit visit) {
  for (const NumberKey& number : kNumberKeys) {
    if (const auto& value = settings.*number.set) visit(number.key, formatNumber(*value));
  }
  if (settings.sweep) visit(kSweep, std::string(*settings.sweep ? "yes" : "no"));
}

void setOne(std::string& text, std::string_view key, const std::string& value) {
  const auto place = findPlace(text, key);
  if (!place) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    text += fmt::format("{} = {}\n", key, value);
    return;
  }
  size_t length = place->length;
  if (key != kSweep) {
    length = std::min(length, text.find_first_of(" \t#", place->begin) - place->begin);
  }
  text.replace(place->begin, length, value);
}

}  // namespace

bool SurveySettings::isEmpty() const {
  bool is_empty = true;
  forEachSet(*this, [&](std::string_view, const std::string&) { is_empty = false; });
  return is_empty;
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
  for (const NumberKey& number : kNumberKeys) settings.*number.set = findNumber(text, number.key);
  if (const auto value = findValue(text, kSweep)) {
    settings.sweep = value->find_first_of("nN") == std::string::npos;
  }
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
  const auto old_text = readIfThere(path);
  const std::string text = withSettings(old_text.value_or(kNewFileHead), changes);
  if (old_text != text) replaceFile(path, text);
}

}  // namespace pelagrim_host
