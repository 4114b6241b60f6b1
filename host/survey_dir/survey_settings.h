#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "survey/settings.h"

namespace pelagrim_host {

/// What a survey.cfg sets, or what is to be set in one. Nothing for a key that it does not have.
struct SurveySettings {
  std::optional<double> start_hz{};
  std::optional<double> stop_hz{};
  std::optional<double> threshold_db{};
  std::optional<double> dwell_seconds{};
  std::optional<double> raster_hz{};
  std::optional<bool> sweep{};

  bool isEmpty() const;

  /// These settings, with those of `newer` in their place.
  SurveySettings changedBy(const SurveySettings& newer) const;

  /// What is set here and not in `others`.
  SurveySettings without(const SurveySettings& others) const;

  /// All settings: those set here, and `others` for the rest.
  pelagrim::Settings inForce(const pelagrim::Settings& others = {}) const;

  /// For the user: "start = 144000000, sweep = no".
  std::string text() const;
};

/// Reads the text of a settings file as the plug-in does, except that a number that is not finite
/// counts as not set.
SurveySettings parseSettings(std::string_view text);

/// `text` with the keys of `changes` set and every other byte kept. A key gets its new value in its
/// last line. Only the number is replaced, so that a comment after it stays; but a value of sweep
/// is replaced whole, because every letter of it counts. A missing key gets a line at the end.
std::string withSettings(std::string_view text, const SurveySettings& changes);

/// What the settings file of a survey directory sets; nothing if there is no such file. Throws
/// std::runtime_error, naming the file, if it cannot be read or is a pipe.
std::optional<SurveySettings> readSettings(const std::filesystem::path& directory);

/// Sets the keys of `changes` in the settings file of a survey directory, which is replaced in one
/// step. A missing file is written with only those keys: the plug-in has its defaults for the rest.
/// Throws std::runtime_error, naming the file.
void editSettings(const std::filesystem::path& directory, const SurveySettings& changes);

}  // namespace pelagrim_host
