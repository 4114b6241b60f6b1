#include "files/results_file.h"

#include <optional>
#include <string_view>

#include "files/c_locale.h"
#include "files/results_row.h"
#include "files/survey_dir.h"
#include "files/text_file.h"
#include "survey/spectrum.h"

namespace pelagrim {

ResultsFile loadSurvey(const std::string& dir, double sample_rate_hz) {
  LineReader file(pathJoin(dir, kResultsName));
  const CLocale c_locale;
  ResultsFile read;
  bool marked = false;
  while (const char* line = file.next()) {
    marked = marked || std::string_view(line).starts_with(kFormatMark);
    if (const std::optional<ResultsRow> row = parseResultsRow(line)) {
      read.channels.push_back(row->channel);
    }
  }
  read.older = !marked;
  if (read.older) {
    const double half_bin_hz = 0.5 * (sample_rate_hz * (1.0 / kSpectrumBins));
    for (Channel& channel : read.channels) channel.centre_hz -= half_bin_hz;
  }
  return read;
}

std::string surveyText(const Survey& survey) {
  constexpr size_t kUsualRow = 112;
  std::string text(kResultsHeader);
  text.reserve(text.size() + survey.size() * kUsualRow);
  for (const Channel& channel : survey.byActivity()) appendResultsRow(text, channel);
  return text;
}

void saveSurvey(const std::string& dir, const Survey& survey) {
  const std::string path = pathJoin(dir, kResultsName);
  writeTextFile(path, surveyText(survey));
}

}  // namespace pelagrim
