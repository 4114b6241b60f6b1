#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// Where the survey is that the user means: `named`, a directory or a file, where it is not empty.
/// Else $ORVANE_SURVEY_DIR, where it is set; else `of_source`, which a recording has; else the
/// directory that the plug-in takes by itself, ~/.orvane/pelagrim. It need not exist.
std::filesystem::path surveyPlace(
    const std::filesystem::path& named,
    const std::optional<std::filesystem::path>& of_source = std::nullopt);

/// Has a plug-in that is loaded from now on keep its files in `directory`.
void pointPluginTo(const std::filesystem::path& directory);

/// Makes sure that the directory is there and can be written to. Returns whether it was created.
/// Throws std::runtime_error, naming it.
bool createSurveyDirectory(const std::filesystem::path& directory);

/// The files of a survey directory: survey.csv, survey.cfg, survey-labels.txt.
std::filesystem::path resultsPath(const std::filesystem::path& directory);
std::filesystem::path settingsPath(const std::filesystem::path& directory);
std::filesystem::path labelsPath(const std::filesystem::path& directory);

/// Whether a device stands there, links followed. To the plug-in it is an empty file.
bool isDevice(const std::filesystem::path& path);

/// What one of these files holds, nothing when it is not there, "" when it is a device. Throws
/// std::runtime_error, naming it, when it cannot be read, or is a pipe: reading one waits for a
/// writer, and nobody named it.
std::optional<std::string> readIfThere(const std::filesystem::path& path);

}  // namespace pelagrim_host
