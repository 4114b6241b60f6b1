#include "host/survey_dir/survey_place.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "host/process/whole_file.h"

namespace pelagrim_host {
namespace {

constexpr const char* kDirectoryVariable = "ORVANE_SURVEY_DIR";

/// Empty when the variable is not set.
std::filesystem::path fromEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? "" : value;
}

}  // namespace

std::filesystem::path surveyPlace(const std::filesystem::path& named,
                                  const std::filesystem::path& fallback) {
  if (!named.empty()) return named;
  const auto moved_to = fromEnvironment(kDirectoryVariable);
  return moved_to.empty() ? fallback : moved_to;
}

std::filesystem::path ownSurveyDirectory() {
  const auto home = fromEnvironment("HOME");
  return home.empty() ? "." : home / ".orvane" / "pelagrim";
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
  return directory / "survey.csv";
}

std::filesystem::path settingsPath(const std::filesystem::path& directory) {
  return directory / "survey.cfg";
}

std::filesystem::path labelsPath(const std::filesystem::path& directory) {
  return directory / "survey-labels.txt";
}

std::optional<std::string> readIfThere(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::exists(path, error)) return std::nullopt;
  if (std::filesystem::is_fifo(path, error)) {
    throw FileError(fmt::format("{} is a pipe, not a file", path.string()));
  }
  return readWholeFile(path);
}

}  // namespace pelagrim_host
