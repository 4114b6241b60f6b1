#include "files/survey_dir.h"

#include <sys/stat.h>

#include <cstdlib>

namespace pelagrim {

std::string pathJoin(const std::string& dir, const std::string& name) {
  if (dir.empty()) return name;
  const bool separated = dir.back() == '/' || dir.back() == '\\';
  return separated ? dir + name : dir + "/" + name;
}

std::string resolveSurveyDir() {
  const char* const chosen = std::getenv("ORVANE_SURVEY_DIR");
  if (chosen != nullptr && *chosen != '\0') return chosen;

  const char* const home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return ".";
  constexpr mode_t kMode = 0755;
  const std::string orvane_dir = pathJoin(home, ".orvane");
  std::string dir = pathJoin(orvane_dir, "pelagrim");
  mkdir(orvane_dir.c_str(), kMode);
  mkdir(dir.c_str(), kMode);
  return dir;
}

}  // namespace pelagrim
