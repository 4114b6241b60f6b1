#include "host/sources/raw_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <utility>

#include "host/process/command_errors.h"
#include "host/text/letter_case.h"

namespace pelagrim_host {
namespace {

std::string fileName(const RecordingRequest& request) {
  return std::filesystem::path(request.source).filename().string();
}

}  // namespace

RawRecording::RawRecording(const RecordingRequest& request)
    : Recording(request.source == "-" ? "standard input" : fileName(request)), stop_(request.stop) {
  RecordingFacts facts = request.told;
  if (request.source != "-") {
    std::optional<double> told_centre_hz;
    if (facts.centre_hz) told_centre_hz = facts.centre_hz->value;
    facts = firstKnown(facts, factsOfName(fileName(request), told_centre_hz));
  }
  requireKnown(request.source, facts);
  format_ = findSampleFormat(lowerCase(facts.format->value));
  if (format_ == nullptr) {
    throw UsageError(fmt::format("--format {} is not known; there are {}", facts.format->value,
                                 sampleFormatNames()));
  }
  facts.format->value = format_->name;
  setFacts(std::move(facts));
  stream_ = openFileBytes(request.source, stop_, request.stall_seconds);
}

size_t RawRecording::readNative(std::span<std::byte> bytes) {
  const size_t got = stream_->read(bytes);
  const size_t left_over = got % format_->sampleBytes();
  taken_bytes_ += got;
  if (got < bytes.size() && !stop_()) {
    if (left_over != 0) setLeftOver(left_over, format_->name);
    if (taken_bytes_ < stream_->size().value_or(0)) setShrunk();
  }
  return got / format_->sampleBytes();
}

uint64_t RawRecording::skip(uint64_t samples) {
  const uint64_t max = std::numeric_limits<uint64_t>::max() / format_->sampleBytes();
  const uint64_t skipped = stream_->skip(std::min(samples, max) * format_->sampleBytes());
  taken_bytes_ += skipped;
  return skipped / format_->sampleBytes();
}

std::optional<uint64_t> RawRecording::lengthSamples() const {
  const auto bytes = stream_->size();
  if (!bytes) return bytes;
  return *bytes / format_->sampleBytes();
}

}  // namespace pelagrim_host
