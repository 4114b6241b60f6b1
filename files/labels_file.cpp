#include "files/labels_file.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "files/c_locale.h"
#include "files/default_labels.h"
#include "files/survey_dir.h"
#include "files/text_file.h"

namespace pelagrim {

namespace {

std::optional<BandLabel> labelOf(std::string_view line) {
  const std::string text(line.substr(0, line.find('#')));
  double low_mhz = 0.0;
  double high_mhz = 0.0;
  int name_at = -1;  // stays so when the line ends before a name
  const int numbers = std::sscanf(text.c_str(), "%lf %lf %n", &low_mhz, &high_mhz, &name_at);
  if (numbers != 2 || low_mhz > high_mhz || name_at < 0) return std::nullopt;

  std::string name = text.substr(static_cast<size_t>(name_at));
  name.erase(name.find_last_not_of(" \t\r\n") + 1);
  if (name.empty()) return std::nullopt;
  return BandLabel{low_mhz * 1000000.0, high_mhz * 1000000.0, std::move(name)};
}

/// Whoever begins a line with a digit means a label.
bool looksLikeLabel(const char* line) {
  const char first = line[std::strspn(line, " \t")];
  return first >= '0' && first <= '9';
}

}  // namespace

std::optional<LabelsFile> loadLabels(const std::string& dir) {
  const std::string path = pathJoin(dir, "survey-labels.txt");
  LineReader file(path);
  if (file.isMissing()) {
    writeTextFile(path, kDefaultLabelsText);
    file = LineReader(path);
  }
  if (!file.isOpen()) return std::nullopt;

  const CLocale c_locale;
  LabelsFile read;
  while (const char* line = file.next()) {
    if (std::optional<BandLabel> label = labelOf(line)) {
      read.labels.push_back(*std::move(label));
    } else if (looksLikeLabel(line)) {
      ++read.unreadable_lines;
    }
  }
  return read;
}

}  // namespace pelagrim
