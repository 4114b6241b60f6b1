#pragma once

#include <span>
#include <string>

#include "host/sources/recording.h"
#include "host/sources/wav_file.h"

namespace pelagrim_host {

/// What the auxi chunk of a receiver's WAV file says: little-endian, the start as eight 16-bit
/// numbers (year, month, day of the week, day, hour, minute, second, millisecond; UTC) at byte 0,
/// the centre in Hz as 32 bits at byte 32. A chunk may end before either.
struct AuxiChunk {
  std::optional<int64_t> start_unix_ms;
  std::optional<double> centre_hz;
};

/// Reads an auxi chunk; a value that makes no sense counts as missing. So does the centre if the
/// start is neither a moment nor zeros, because some recorders put text there.
AuxiChunk parseAuxi(std::span<const std::byte> chunk);

/// I/Q in a two-channel WAV or RF64 file, with I on the left. Integers are scaled like those of raw
/// samples; floats are not scaled. Headers without a length, as streaming writers leave them, are
/// fine.
class WavRecording final : public Recording {
 public:
  /// The command line outranks the header, and the header outranks the file's name.
  explicit WavRecording(const RecordingRequest& request);

  std::optional<uint64_t> lengthSamples() const override;
  size_t read(std::span<std::complex<float>> block) override;
  uint64_t skip(uint64_t samples) override;

 private:
  void checkLength();

  WavFile file_;
  size_t sample_bytes_ = 0;
};

}  // namespace pelagrim_host
