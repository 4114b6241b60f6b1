#include "host/survey_dir/survey_place.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "files/survey_dir.h"
#include "host/process/whole_file.h"

namespace pelagrim_host {
namespace {

constexpr const char* kDirectoryVariable = "ORVANE_SURVEY_DIR";

}  // namespace

std::filesystem::path surveyPlace(const std::filesystem::path& named,
                                  const std::optional<std::filesystem::path>& of_source) {
  if (!named.empty()) return named;
  const char* const moved_to = std::getenv(kDirectoryVariable);
  const bool is_moved = moved_to != nullptr && *moved_to != '\0';
  return of_source && !is_moved ? *of_source : std::filesystem::path(pelagrim::surveyDir());
}

void pointPluginTo(const std::filesystem::path& directory) {
  setenv(kDirectoryVariable, directory.c_str(), 1);
}

bool createSurveyDirectory(const std::filesystem::path& directory) {
  std::error_code error;
  const bool created = std::filesystem::create_directories(directory, error);
  if (error || !std::filesystem::is_directory(directory)) {
    throw std::runtime_error(
        fmt::format("cannot create the survey directory {}: {}; name another with --dir",
                    directory.string(), error ? error.message() : "it is a file"));
  }
  if (access(directory.c_str(), W_OK | X_OK) != 0) {
    throw std::runtime_error(fmt::format(
        "cannot write to the survey directory {}; name another with --dir", directory.string()));
  }
  return created;
}

std::filesystem::path resultsPath(const std::filesystem::path& directory) {
  return directory / pelagrim::kResultsName;
}

std::filesystem::path settingsPath(const std::filesystem::path& directory) {
  return directory / pelagrim::kSettingsName;
}

std::filesystem::path labelsPath(const std::filesystem::path& directory) {
  return directory / pelagrim::kLabelsName;
}

bool isDevice(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::is_character_file(path, error) ||
         std::filesystem::is_block_file(path, error);
}

std::optional<std::string> readIfThere(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return std::nullopt;
  if (std::filesystem::is_fifo(path, error)) {
    throw FileError(fmt::format("{} is a pipe, not a file", path.string()));
  }
  if (isDevice(path)) return "";
  return readWholeFile(path);
}

}  // namespace pelagrim_host
