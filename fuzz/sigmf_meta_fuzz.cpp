// The metadata of a SigMF recording: refused, or segments that lie within the data, in order. The
// first two bytes of the input are the data's length.

#include "host/sources/sigmf_meta.h"

#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  if (size < 2) return 0;
  const uint64_t data_bytes = data[0] + 256U * data[1];
  try {
    const SigmfMeta meta =
        parseSigmfMeta(std::string_view(reinterpret_cast<const char*>(data), size).substr(2));
    FUZZ_EXPECT(meta.format != nullptr && !meta.captures.empty());
    uint64_t end = 0;
    for (const SigmfSegment& segment : sigmfSegments(meta, data_bytes)) {
      FUZZ_EXPECT(segment.first_byte >= end);
      end = segment.first_byte + segment.samples * meta.format->sampleBytes();
    }
    FUZZ_EXPECT(end <= data_bytes);
  } catch (const SigmfError&) {  // the reason, for the user
  }
  return 0;
}
