// The results file: rows that come out make sense, and read back the same after they are written.

#include <algorithm>

#include "files/results_file.h"
#include "input_file.h"

namespace {

pelagrim::Survey surveyOf(const pelagrim::ResultsFile& file) {
  pelagrim::Survey survey;
  for (const pelagrim::Channel& channel : file.channels) survey.restore(channel);
  return survey;
}

/// Values beyond any receiver may not come back: levels so long that their row is cut at 255 bytes,
/// and centres that no 64-bit integer holds.
bool isBeyondTheFormat(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() >= 255 || line[0] == '-') return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScratchDir dir;
  dir.write("survey.csv", data, size);
  const pelagrim::ResultsFile file = pelagrim::loadSurvey(dir.path(), 1024.0);
  for (const pelagrim::Channel& channel : file.channels) {
    FUZZ_EXPECT(channel.centre_hz >= (file.older ? 0.5 : 1.0));
    FUZZ_EXPECT(channel.hits >= 1 && channel.looks >= channel.hits);
  }

  const pelagrim::Survey survey = surveyOf(file);
  pelagrim::saveSurvey(dir.path(), survey);
  const std::string saved = dir.read("survey.csv");
  FUZZ_EXPECT(saved == pelagrim::surveyText(survey));
  if (isBeyondTheFormat(saved)) return 0;
  const pelagrim::ResultsFile again = pelagrim::loadSurvey(dir.path(), 1024.0);
  FUZZ_EXPECT(!again.older && again.channels.size() == survey.size());
  return 0;
}
