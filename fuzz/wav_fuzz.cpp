// A WAV file: refused, or no more samples than the file has room for.

#include "host/sources/wav_recording.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  static const ScratchDir dir;
  dir.write("x.wav", data, size);
  parseAuxi(std::as_bytes(std::span(data, size)));
  try {
    RecordingRequest request{.source = dir.pathOf("x.wav"), .told = {}};
    request.told.centre_hz = {100e6, "the command line"};
    WavRecording recording(request);
    const size_t skipped = recording.skip(3);
    FUZZ_EXPECT(skipped <= 3 && recording.sampleRateHz() >= 1.0);
    std::vector<std::complex<float>> block(64);
    size_t samples = skipped;
    while (const size_t got = recording.read(block)) samples += got;
    FUZZ_EXPECT(2 * samples <= size);
    FUZZ_EXPECT(recording.facts()->rate_hz && !recording.facts()->format->value.empty());
  } catch (const SourceError&) {  // the reason, for the user
  }
  return 0;
}
