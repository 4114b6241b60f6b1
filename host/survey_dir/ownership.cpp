#include "host/survey_dir/ownership.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace pelagrim_host {
namespace {

/// Who called sudo; nothing if nobody did.
std::optional<uid_t> sudoCaller() {
  const char* const text = std::getenv("SUDO_UID");
  if (geteuid() != 0 || text == nullptr) return std::nullopt;
  const std::string_view digits(text);
  uid_t user = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), user);
  if (error != std::errc() || stop != digits.data() + digits.size()) return std::nullopt;
  return user;
}

void requireOwn(const std::filesystem::path& path, const struct stat& status) {
  const uid_t owner = status.st_uid;
  if (owner == geteuid() || owner == 0 || sudoCaller() == owner) return;
  throw std::runtime_error(
      fmt::format("{} belongs to user {}, not to you: nothing is read from there or written to it; "
                  "name a directory of your own with --dir",
                  path.string(), owner));
}

}  // namespace

void requireOwnFiles(const std::filesystem::path& survey_dir) {
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
