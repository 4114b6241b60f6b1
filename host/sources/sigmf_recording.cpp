#include "host/sources/sigmf_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/sources/recording_kind.h"
#include "host/sources/sha512.h"
#include "host/sources/sigmf_archive.h"
#include "host/text/letter_case.h"

namespace pelagrim_host {
namespace {

constexpr const char* kMetadata = "the metadata";

std::string readMetaFile(const std::filesystem::path& path) {
  const auto stream = openFileBytes(path, neverStop);
  std::string text(std::min<uint64_t>(stream->size().value_or(0), kMaxSigmfMetaBytes + 1), '\0');
  text.resize(stream->read(std::as_writable_bytes(std::span(text))));
  return text;
}

/// The file with that extension, given in lower case: `path` itself or a file beside it. Some
/// systems write names in capitals.
std::filesystem::path fileOfPair(const std::filesystem::path& path, const std::string& extension) {
  if (lowerCase(path.extension().string()) == extension) return path;
  const auto beside = std::filesystem::path(path).replace_extension(extension);
  const auto in_capitals = std::filesystem::path(path).replace_extension(upperCase(extension));
  return !std::filesystem::exists(beside) && std::filesystem::exists(in_capitals) ? in_capitals
                                                                                  : beside;
}

std::filesystem::path dataFile(const std::filesystem::path& meta_path, const SigmfMeta& meta) {
  if (meta.dataset.empty()) {
    auto path = fileOfPair(meta_path, ".sigmf-data");
    if (!std::filesystem::exists(path)) {
      throw SigmfError(fmt::format("it holds only metadata: there is no {} beside it",
                                   path.filename().string()));
    }
    return path;
  }
  // A recording may name only a file in its own directory.
  if (std::filesystem::path(meta.dataset).filename() != meta.dataset || meta.dataset == "..") {
    throw SigmfError("its core:dataset is not the name of a file beside it");
  }
  return std::filesystem::absolute(meta_path).replace_filename(meta.dataset);
}

}  // namespace

SigmfRecording::SigmfRecording(const RecordingRequest& request, const RemarkSink& remark)
    : Recording(std::filesystem::path(request.source).filename().string()), stop_(request.stop) {
  const std::filesystem::path path(request.source);
  const RecordingFacts& told = request.told;
  const bool is_archive = recordingKind(path) == RecordingKind::kSigmfArchive;
  const auto meta_path = fileOfPair(path, ".sigmf-meta");
  try {
    meta_ = parseSigmfMeta(is_archive ? sigmfArchiveMeta(path) : readMetaFile(meta_path));
    const auto data_path = is_archive ? path : dataFile(meta_path, meta_);
    const auto openData = [&] {
      return is_archive ? openSigmfArchiveData(data_path) : openFileBytes(data_path, stop_);
    };
    data_ = openData();
    if (!data_->size()) throw SigmfError("its samples are not in a plain file");
    segments_ = sigmfSegments(meta_, *data_->size());
    if (request.verify) {
      if (meta_.sha512.empty()) throw SigmfError("it has no core:sha512 for --verify to check");
      if (sha512Of(*openData(), stop_) != meta_.sha512 && !stop_()) {
        throw SigmfError("its samples do not agree with its core:sha512: they were changed");
      }
    }
  } catch (const SigmfError& error) {
    throw SourceError(fmt::format("{}: {}", name(), error.what()));
  }

  const SigmfCapture& first = meta_.captures.front();
  RecordingFacts facts;
  facts.format = {fmt::format("SigMF {}", meta_.datatype), kMetadata};
  if (meta_.sample_rate_hz) facts.rate_hz = {*meta_.sample_rate_hz, kMetadata};
  if (first.frequency_hz) facts.centre_hz = {*first.frequency_hz, kMetadata};
  if (first.start_unix_ms) facts.start_unix_ms = {*first.start_unix_ms, kMetadata};
  facts = firstKnown(told, facts);
  setFacts(firstKnown(facts, factsOfName(name())));
  for (SigmfSegment& segment : segments_) {
    if (told.centre_hz || !segment.centre_hz) segment.centre_hz = known().centre_hz->value;
    if (told.start_unix_ms && segment.start_unix_ms) {
      *segment.start_unix_ms +=
          told.start_unix_ms->value - first.start_unix_ms.value_or(*segment.start_unix_ms);
    }
    RecordingFacts here = known();
    here.centre_hz->value = *segment.centre_hz;
    requireKnown(name(), here);
  }
  if (segments_.front().first_byte > first.header_bytes) {
    remark(fmt::format("{}: the samples before its first capture are dropped", name()));
  }
  left_over_bytes_ = (*data_->size() - std::min(*data_->size(), segments_.back().first_byte +
                                                                    meta_.trailing_bytes)) %
                     meta_.format->sampleBytes();
  std::erase_if(segments_, [](const SigmfSegment& segment) { return segment.samples == 0; });
  if (!segments_.empty()) left_in_segment_ = segments_.front().samples;
}

double SigmfRecording::centreHz() const {
  if (segments_.empty()) return Recording::centreHz();
  // At the end it stays there: no more samples come from anywhere else.
  return *segments_[std::min(segment_, segments_.size() - 1)].centre_hz;
}

std::optional<int64_t> SigmfRecording::nextUnixMs() const {
  if (segment_ == segments_.size() || !segments_[segment_].start_unix_ms) return std::nullopt;
  const uint64_t before = segments_[segment_].samples - left_in_segment_;
  const double before_ms = static_cast<double>(before) * 1000.0 / sampleRateHz();
  return *segments_[segment_].start_unix_ms + static_cast<int64_t>(before_ms);
}

size_t SigmfRecording::readNative(std::span<std::byte> bytes) {
  if (segment_ == segments_.size()) return 0;
  const uint64_t first_byte =
      segments_[segment_].first_byte +
      (segments_[segment_].samples - left_in_segment_) * meta_.format->sampleBytes();
  position_bytes_ += data_->skip(first_byte - position_bytes_);
  const size_t sample_bytes = meta_.format->sampleBytes();
  const auto wanted =
      static_cast<size_t>(std::min<uint64_t>(bytes.size() / sample_bytes, left_in_segment_));
  const auto taken = bytes.first(wanted * sample_bytes);
  const size_t got = data_->read(taken);
  position_bytes_ += got;
  const size_t samples = got / sample_bytes;
  if (samples < wanted && !stop_()) {
    throw SourceError(fmt::format("{}: its samples end early: the file has changed", name()));
  }
  if (meta_.big_endian) reverseComponents(taken, meta_.format->component_bytes);
  left_in_segment_ -= samples;
  if (left_in_segment_ == 0) enterNextSegment();
  return samples;
}

uint64_t SigmfRecording::skip(uint64_t samples) {
  uint64_t skipped = 0;
  while (skipped < samples && segment_ < segments_.size()) {
    const uint64_t here = std::min(samples - skipped, left_in_segment_);
    skipped += here;
    left_in_segment_ -= here;
    if (left_in_segment_ == 0) enterNextSegment();
  }
  return skipped;
}

void SigmfRecording::enterNextSegment() {
  ++segment_;
  if (segment_ < segments_.size()) {
    left_in_segment_ = segments_[segment_].samples;
  } else if (left_over_bytes_ != 0) {
    setLeftOver(left_over_bytes_, meta_.datatype);
  }
}

std::optional<RecordingFacts> SigmfRecording::facts() const {
  RecordingFacts facts = known();
  if (segments_.size() < 2) return facts;
  for (const SigmfSegment& segment : segments_) {
    facts.segments.push_back({*segment.centre_hz, segment.samples});
  }
  return facts;
}

std::optional<double> SigmfRecording::shortestStaySeconds() const {
  std::optional<uint64_t> shortest;
  uint64_t stay = 0;  // samples
  for (size_t i = 0; i + 1 < segments_.size(); ++i) {
    stay += segments_[i].samples;
    if (*segments_[i].centre_hz == *segments_[i + 1].centre_hz) continue;
    shortest = std::min(stay, shortest.value_or(stay));
    stay = 0;
  }
  if (!shortest) return std::nullopt;
  return static_cast<double>(*shortest) / sampleRateHz();
}

std::optional<uint64_t> SigmfRecording::lengthSamples() const {
  uint64_t samples = 0;
  for (const SigmfSegment& segment : segments_) samples += segment.samples;
  return samples;
}

}  // namespace pelagrim_host
