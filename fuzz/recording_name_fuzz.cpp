// The names of recordings, and words such as 2.4M: a sensible value comes out, or nothing.

#include "host/sources/recording_name.h"

#include <cmath>

#include "host/sources/gain_setting.h"
#include "host/text/quantity_text.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const RecordingName name = parseRecordingName(text);
  FUZZ_EXPECT(!name.rate_hz || (*name.rate_hz > 0.0 && std::isfinite(*name.rate_hz)));
  FUZZ_EXPECT(!name.centre_hz || (*name.centre_hz >= 0.0 && std::isfinite(*name.centre_hz)));
  FUZZ_EXPECT(!name.start_unix_ms || *name.start_unix_ms % 1000 == 0);

  if (const auto quantity = parseQuantity(text)) {
    FUZZ_EXPECT(std::isfinite(*quantity));
    if (std::abs(*quantity) < 1e15) {  // as a settings file has it, to 15 digits
      const auto again = parseQuantity(formatNumber(*quantity));
      FUZZ_EXPECT(again && std::abs(*again - *quantity) <= 1e-14 * std::abs(*quantity));
    }
  }
  if (const auto range = parseFrequencyRange(text)) FUZZ_EXPECT(range->low_hz < range->high_hz);
  if (const auto gain = parseGain(text)) {
    FUZZ_EXPECT(gain->automatic + gain->overall_db.has_value() + !gain->stages_db.empty() == 1);
  }
  if (const auto moment = parseMoment(text)) {
    const auto again = parseMoment(formatMoment(*moment));
    FUZZ_EXPECT(again && *moment - *again >= 0 && *moment - *again < 1000);
  }
  return 0;
}
