#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "host/iq_source.h"
#include "host/sample_format.h"

namespace pelagrim_host {

/// Takes a line that the user should see and that stops nothing.
using RemarkSink = std::function<void(const std::string&)>;

/// Samples without a header, from a file or from standard input. What they are is known from
/// elsewhere: the command line, the file's name.
class RawRecording final : public IqSource {
 public:
  /// Opens `path`; "-" is standard input. `format` has to outlive the source. Bytes at the end that
  /// make no whole sample are dropped and remarked on.
  RawRecording(const std::filesystem::path& path, const SampleFormat& format, double rate_hz,
               double centre_hz, RemarkSink remark);
  ~RawRecording() override;

  std::string name() const override { return name_; }
  double sampleRateHz() const override { return rate_hz_; }
  double centreHz() const override { return centre_hz_; }

  /// Blocks are full but for the last, however the bytes arrive, so a survey of a pipe is cut into
  /// dwells like one of a file. Waiting for a pipe ends when the user asks for the end.
  size_t read(std::span<std::complex<float>> block) override;
  uint64_t skip(uint64_t samples) override;

 private:
  size_t readBytes(std::span<std::byte> bytes);

  std::string name_;
  const SampleFormat& format_;
  double rate_hz_;
  double centre_hz_;
  RemarkSink remark_;
  int file_;
  bool seekable_;
  std::vector<std::byte> bytes_;
};

}  // namespace pelagrim_host
