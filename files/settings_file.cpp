#include "files/settings_file.h"

#include "files/c_locale.h"
#include "files/default_settings.h"
#include "files/settings_text.h"
#include "files/survey_dir.h"
#include "files/text_file.h"

namespace pelagrim {

void loadSettings(const std::string& dir, Settings& settings) {
  const std::string path = pathJoin(dir, kSettingsName);
  LineReader file(path);
  if (file.isMissing()) {
    writeTextFile(path, kDefaultSettingsText);
    return;
  }
  const CLocale c_locale;
  while (const char* line = file.next()) {
    if (const auto setting = parseSettingLine(line)) applySetting(*setting, settings);
  }
}

}  // namespace pelagrim
