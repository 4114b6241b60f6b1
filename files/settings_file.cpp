#include "files/settings_file.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "files/c_locale.h"
#include "files/default_settings.h"
#include "files/survey_dir.h"
#include "files/text_file.h"

namespace pelagrim {

namespace {

struct NumberKey {
  std::string_view key;
  double Settings::*field;
};
constexpr NumberKey kNumberKeys[] = {
    {"start", &Settings::start_hz},
    {"stop", &Settings::stop_hz},
    {"threshold_db", &Settings::threshold_db},
    {"dwell_seconds", &Settings::dwell_seconds},
    {"raster_hz", &Settings::raster_hz},
};

std::string_view withoutTrailingBlanks(std::string_view text) {
  const size_t last = text.find_last_not_of(" \t");
  return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

void applyLine(const char* line, Settings& settings) {
  line += std::strspn(line, " \t");
  if (std::strchr("\n\r#", *line) != nullptr) return;  // finds the end of the text, too

  char key_text[64];
  char value[256];
  if (std::sscanf(line, "%63[^=]=%255[^\r\n]", key_text, value) != 2) return;
  const std::string_view key = withoutTrailingBlanks(key_text);

  // "no", "none" and the like; also "on", so the text of the default file offers yes and no.
  if (key == "sweep") settings.sweep = std::strpbrk(value, "nN") == nullptr;
  for (const NumberKey& number : kNumberKeys) {
    if (key == number.key) settings.*number.field = std::strtod(value, nullptr);
  }
}

}  // namespace

void loadSettings(const std::string& dir, Settings& settings) {
  const std::string path = pathJoin(dir, "survey.cfg");
  LineReader file(path);
  if (file.isMissing()) {
    writeTextFile(path, kDefaultSettingsText);
    return;
  }
  const CLocale c_locale;
  while (const char* line = file.next()) applyLine(line, settings);
}

}  // namespace pelagrim
