#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/sources/byte_stream.h"
#include "host/sources/recording.h"
#include "host/sources/sample_format.h"

namespace pelagrim_host {

/// Samples without a header, from a file or from standard input. Their format comes from elsewhere:
/// the command line, the file's name.
class RawRecording final : public Recording {
 public:
  /// The command line outranks the file's name. Bytes at the end that do not make a whole sample
  /// are dropped and reported as its damage(). Throws UsageError if the command line has to say
  /// more.
  explicit RawRecording(const RecordingRequest& request);

  /// All blocks but the last are full, however the bytes arrive, so a survey of a pipe is cut into
  /// dwells like one of a file. Waiting for a pipe ends when the request's `stop` says so.
  size_t readNative(std::span<std::byte> bytes) override;
  size_t read(std::span<std::complex<float>> block) override {
    return readConverted(block, bytes_);
  }
  SampleLayout layout() const override { return {.format = format_}; }
  std::optional<uint64_t> lengthSamples() const override;
  uint64_t skip(uint64_t samples) override;

 private:
  StopFunction stop_;
  const SampleFormat* format_ = nullptr;
  std::unique_ptr<ByteStream> stream_;
  std::vector<std::byte> bytes_;
  uint64_t taken_bytes_ = 0;  ///< read or skipped so far
};

}  // namespace pelagrim_host
