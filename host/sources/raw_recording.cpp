#include "host/sources/raw_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "host/process/signals.h"

namespace pelagrim_host {

RawRecording::RawRecording(const std::filesystem::path& path, const SampleFormat& format,
                           RecordingFacts facts)
    : Recording(path == "-" ? "standard input" : path.filename().string()), format_(format) {
  setFacts(std::move(facts));
  stream_ = openFileBytes(path);
}

size_t RawRecording::read(std::span<std::complex<float>> block) {
  bytes_.resize(block.size() * format_.sampleBytes());
  const size_t got = stream_->read(bytes_);
  const size_t samples = got / format_.sampleBytes();
  const size_t left_over = got % format_.sampleBytes();
  if (left_over != 0 && !stopRequested()) setLeftOver(left_over, format_.name);
  // An array of complex numbers is an array of their parts.
  format_.convert(bytes_.data(), 2 * samples, reinterpret_cast<float*>(block.data()));
  return samples;
}

uint64_t RawRecording::skip(uint64_t samples) {
  const uint64_t most = std::numeric_limits<uint64_t>::max() / format_.sampleBytes();
  return stream_->skip(std::min(samples, most) * format_.sampleBytes()) / format_.sampleBytes();
}

std::optional<uint64_t> RawRecording::lengthSamples() const {
  const auto bytes = stream_->size();
  if (!bytes) return bytes;
  return *bytes / format_.sampleBytes();
}

}  // namespace pelagrim_host
