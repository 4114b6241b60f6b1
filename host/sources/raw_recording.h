#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/sources/byte_stream.h"
#include "host/sources/recording.h"
#include "host/sources/sample_format.h"

namespace pelagrim_host {

/// Samples without a header, from a file or from standard input. What they are is known from
/// elsewhere: the command line, the file's name.
class RawRecording final : public Recording {
 public:
  /// Opens `path`; "-" is standard input. `format` has to outlive the source. Bytes at the end that
  /// make no whole sample are dropped, and are its damage().
  RawRecording(const std::filesystem::path& path, const SampleFormat& format, RecordingFacts facts);

  /// Blocks are full but for the last, however the bytes arrive, so a survey of a pipe is cut into
  /// dwells like one of a file. Waiting for a pipe ends when the user asks for the end.
  size_t read(std::span<std::complex<float>> block) override;
  std::optional<uint64_t> lengthSamples() const override;
  uint64_t skip(uint64_t samples) override;

 private:
  const SampleFormat& format_;
  std::unique_ptr<ByteStream> stream_;
  std::vector<std::byte> bytes_;
};

}  // namespace pelagrim_host
