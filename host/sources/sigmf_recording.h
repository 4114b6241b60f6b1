#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/sources/byte_stream.h"
#include "host/sources/recording.h"
#include "host/sources/sigmf_meta.h"

namespace pelagrim_host {

/// A SigMF recording: metadata and samples, as a pair of files or in one archive. Where its
/// captures change the centre, so does the source; where they lie apart in time, its time leaps.
class SigmfRecording final : public Recording {
 public:
  /// `path` ends in .sigmf-meta, .sigmf-data or .sigmf. What is `told` stands over the metadata,
  /// and a centre that is told holds for every capture; a start that is told moves them all. `verify`: compare core:sha512 first.
  SigmfRecording(const std::filesystem::path& path, const RecordingFacts& told, bool verify,
                 const RemarkSink& remark);

  double centreHz() const override;
  std::optional<int64_t> nextUnixMs() const override;
  std::vector<SourceFact> facts() const override;
  std::optional<double> shortestStaySeconds() const override;
  std::optional<uint64_t> lengthSamples() const override;
  size_t read(std::span<std::complex<float>> block) override;
  uint64_t skip(uint64_t samples) override;

 private:
  void enterNextSegment();

  SigmfMeta meta_;
  std::unique_ptr<ByteStream> data_;
  std::vector<SigmfSegment> segments_;  ///< without empty ones; every centre is known
  size_t segment_ = 0;                  ///< that the next read delivers from
  uint64_t left_in_segment_ = 0;
  uint64_t position_bytes_ = 0;
  uint64_t left_over_bytes_ = 0;  ///< at the end, which make no whole sample
  std::vector<std::byte> bytes_;
};

}  // namespace pelagrim_host
