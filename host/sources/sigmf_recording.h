#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/sources/byte_stream.h"
#include "host/sources/recording.h"
#include "host/sources/sigmf_meta.h"

namespace pelagrim_host {

/// A SigMF recording: metadata and samples, as a pair of files or in one archive. If its captures
/// change the centre, so does the source; if there is a gap between them, its time jumps.
class SigmfRecording final : public Recording {
 public:
  /// The name ends in .sigmf-meta, .sigmf-data or .sigmf. The command line outranks the metadata: a
  /// centre applies to every capture, a start moves them all. `remark` is called at once or not at
  /// all.
  SigmfRecording(const RecordingRequest& request, const RemarkSink& remark);

  double centreHz() const override;
  std::optional<int64_t> nextUnixMs() const override;
  std::optional<RecordingFacts> facts() const override;
  std::optional<double> shortestStaySeconds() const override;
  std::optional<uint64_t> lengthSamples() const override;
  size_t readNative(std::span<std::byte> bytes) override;
  size_t read(std::span<std::complex<float>> block) override {
    return readConverted(block, bytes_);
  }
  SampleLayout layout() const override { return {.format = meta_.format}; }
  uint64_t skip(uint64_t samples) override;

 private:
  void enterNextSegment();

  StopFunction stop_;
  SigmfMeta meta_;
  std::unique_ptr<ByteStream> data_;
  std::vector<SigmfSegment> segments_;  ///< without empty ones; every centre is known
  size_t segment_ = 0;                  ///< the segment of the next read
  uint64_t left_in_segment_ = 0;
  uint64_t position_bytes_ = 0;
  uint64_t left_over_bytes_ = 0;  ///< at the end, not a whole sample
  std::vector<std::byte> bytes_;
};

}  // namespace pelagrim_host
