// The settings file: any bytes are read without harm, and whatever they say, the slices can be
// planned.

#include "files/settings_file.h"
#include "input_file.h"
#include "survey/slice_plan.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScratchDir dir;
  dir.write("survey.cfg", data, size);
  pelagrim::Settings settings;
  pelagrim::loadSettings(dir.path(), settings);
  FUZZ_EXPECT(dir.read("survey.cfg") == std::string(reinterpret_cast<const char*>(data), size));

  // A rate that keeps most plans short, for speed.
  const auto slices = pelagrim::planSlices(settings.start_hz, settings.stop_hz, 1e8);
  FUZZ_EXPECT(slices.size() <= 100'001);
  FUZZ_EXPECT(slices.empty() == !(settings.start_hz < settings.stop_hz));
  pelagrim::dwellIsOver(1, 2, settings.dwell_seconds);
  return 0;
}
