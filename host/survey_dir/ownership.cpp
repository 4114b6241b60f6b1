#include "host/survey_dir/ownership.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <stdexcept>

#include "host/process/file_owner.h"

namespace pelagrim_host {
namespace {

void requireOwn(const std::filesystem::path& path, const struct stat& status) {
  if (isOwnUser(status.st_uid)) return;
  throw std::runtime_error(
      fmt::format("{} belongs to user {}, not to you: nothing is read from there or written to it; "
                  "name a directory of your own with --dir",
                  path.string(), status.st_uid));
}

/// Links on the way could lead elsewhere tomorrow.
void requireOwnLinks(const std::filesystem::path& survey_dir) {
  std::filesystem::path way;
  for (const auto& part : survey_dir) {
    way /= part;
    struct stat status = {};
    if (lstat(way.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) requireOwn(way, status);
  }
}

}  // namespace

void requireOwnFiles(const std::filesystem::path& survey_dir) {
  requireOwnLinks(survey_dir);
  for (const char* const name :
       {"", "survey.csv", "survey.cfg", "survey-labels.txt", "survey-source.json", "survey.lock",
        "survey.copy-1", "survey.copy-2"}) {
    const auto path = *name == '\0' ? survey_dir : survey_dir / name;
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0) requireOwn(path, status);
    if (stat(path.c_str(), &status) == 0) requireOwn(path, status);
  }
}

}  // namespace pelagrim_host
