#include "files/survey_dir.h"

#include <sys/stat.h>

#include <cstdlib>

namespace pelagrim {

namespace {

constexpr const char* kDirVariable = "ORVANE_SURVEY_DIR";
constexpr const char* kHomeVariable = "HOME";

/// Null if it is empty, too.
const char* variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

std::string orvaneDirIn(const char* home) {
  return pathJoin(home, ".orvane");
}

}  // namespace

std::string pathJoin(const std::string& dir, const std::string& name) {
  if (dir.empty()) return name;
  const bool separated = dir.back() == '/' || dir.back() == '\\';
  return separated ? dir + name : dir + "/" + name;
}

std::string surveyDir() {
  if (const char* const chosen = variable(kDirVariable)) return chosen;
  const char* const home = variable(kHomeVariable);
  return home == nullptr ? "." : pathJoin(orvaneDirIn(home), "pelagrim");
}

std::string resolveSurveyDir() {
  constexpr mode_t kMode = 0755;
  std::string dir = surveyDir();
  const char* const home = variable(kHomeVariable);
  if (variable(kDirVariable) == nullptr && home != nullptr) {
    mkdir(orvaneDirIn(home).c_str(), kMode);
    mkdir(dir.c_str(), kMode);
  }
  return dir;
}

}  // namespace pelagrim
