// The labels file: whatever it holds, labels come out whole.

#include "files/labels_file.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const ScratchDir dir;
  dir.write("survey-labels.txt", data, size);
  const auto file = pelagrim::loadLabels(dir.path());
  FUZZ_EXPECT(file.has_value() && file->unreadable_lines >= 0);
  FUZZ_EXPECT(dir.read("survey-labels.txt") ==
              std::string(reinterpret_cast<const char*>(data), size));
  for (const pelagrim::BandLabel& label : file->labels) {
    FUZZ_EXPECT(!(label.low_hz > label.high_hz));
    FUZZ_EXPECT(!label.name.empty() && label.name.size() < 512);
    FUZZ_EXPECT(label.name.find_first_of("#\n") == std::string::npos);
    FUZZ_EXPECT(label.name.find_last_of(" \t\r") != label.name.size() - 1);
    const pelagrim::BandLabel* const found = pelagrim::lookupLabel(file->labels, label.low_hz);
    FUZZ_EXPECT(found == nullptr || found->low_hz <= label.low_hz);
  }
  return 0;
}
