// A survey directory's files as the headless host reads them: whatever they hold, what comes out
// makes sense, and a setting that is written is read back.

#include "files/labels_file.h"
#include "host/survey_dir/saved_survey.h"
#include "host/survey_dir/survey_settings.h"
#include "host/text/display_text.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  const std::string text(reinterpret_cast<const char*>(data), size);
  for (const SurveyedChannel& channel : parseSurveyRows(text).channels) {
    FUZZ_EXPECT(channel.hits >= 1 && channel.activity() <= 1.0);
    FUZZ_EXPECT(channel.width_hz >= 0.0 && !channel.kind.empty());
  }

  // A report names a channel as the panel does.
  static const ScratchDir dir;
  dir.write("survey-labels.txt", data, size);
  const auto labels = pelagrim::loadLabels(dir.path())->labels;
  const auto band_plan = parseLabels(text);
  for (const pelagrim::BandLabel& range : labels) {
    for (const double hz : {range.low_hz, range.high_hz, 0.5 * (range.low_hz + range.high_hz)}) {
      const auto* const label = pelagrim::lookupLabel(labels, hz);
      const pelagrim::BandLabel* const found = pelagrim::lookupLabel(band_plan, hz);
      FUZZ_EXPECT((label != nullptr) == (found != nullptr));
      FUZZ_EXPECT(label == nullptr || label->name == found->name);
    }
  }
  for (const pelagrim::BandLabel& range : band_plan) {
    FUZZ_EXPECT(displayText(displayText(range.name)) == displayText(range.name));
    FUZZ_EXPECT(markupText(displayText(range.name)).find_first_of("<>\"") == std::string::npos);
  }
  const SurveySettings changes{.start_hz = 123.0, .sweep = false};
  const std::string set = withSettings(text, changes);
  FUZZ_EXPECT(parseSettings(set).start_hz == 123.0 && parseSettings(set).sweep == false);
  FUZZ_EXPECT(withSettings(set, changes) == set);
  return 0;
}
