#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// Where the user's survey is: `named`, a directory or a file, if it is not empty. Else
/// $ORVANE_SURVEY_DIR, if it is set; else `of_source`, which a recording has; else the plug-in's
/// own choice, ~/.orvane/pelagrim. It need not exist.
std::filesystem::path surveyPlace(
    const std::filesystem::path& named,
    const std::optional<std::filesystem::path>& of_source = std::nullopt);

/// Makes a plug-in that is loaded from now on keep its files in `directory`.
void pointPluginTo(const std::filesystem::path& directory);

/// Makes sure that the directory exists and can be written to. Returns whether it was created.
/// Throws std::runtime_error, naming it.
bool createSurveyDirectory(const std::filesystem::path& directory);

/// The files of a survey directory: survey.csv, survey.cfg, survey-labels.txt.
std::filesystem::path resultsPath(const std::filesystem::path& directory);
std::filesystem::path settingsPath(const std::filesystem::path& directory);
std::filesystem::path labelsPath(const std::filesystem::path& directory);

/// Whether the path is a device, links followed. The plug-in takes one for an empty file.
bool isDevice(const std::filesystem::path& path);

/// What one of these files holds; nothing if it is not there, "" if it is a device. Throws
/// std::runtime_error, naming it, if it cannot be read or is a pipe: reading that would wait for a
/// writer, and the user did not name it.
std::optional<std::string> readIfThere(const std::filesystem::path& path);

}  // namespace pelagrim_host
