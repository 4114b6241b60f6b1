#include "files/labels_file.h"

#include "files/c_locale.h"
#include "files/default_labels.h"
#include "files/labels_text.h"
#include "files/survey_dir.h"
#include "files/text_file.h"

namespace pelagrim {

std::optional<LabelsFile> loadLabels(const std::string& dir) {
  const std::string path = pathJoin(dir, kLabelsName);
  LineReader file(path);
  if (file.isMissing()) {
    writeTextFile(path, kDefaultLabelsText);
    file = LineReader(path);
  }
  if (!file.isOpen()) return std::nullopt;

  const CLocale c_locale;
  LabelsFile read;
  while (const char* line = file.next()) {
    if (std::optional<BandLabel> label = parseLabelLine(line)) {
      read.labels.push_back(*std::move(label));
    } else if (looksLikeLabel(line)) {
      ++read.unreadable_lines;
    }
  }
  return read;
}

}  // namespace pelagrim
