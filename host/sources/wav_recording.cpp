#include "host/sources/wav_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <vector>

#include "host/process/command_errors.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr const char* kHeader = "the header";
constexpr const char* kAuxi = "the auxi chunk";

uint32_t littleEndian(std::span<const std::byte> bytes) {
  uint32_t value = 0;
  for (size_t i = bytes.size(); i > 0; --i)
    value = (value << 8U) | std::to_integer<uint32_t>(bytes[i - 1]);
  return value;
}

struct SampleKind {
  const char* name;
  size_t component_bytes;
};

/// The sample formats that I/Q comes in.
std::optional<SampleKind> sampleKind(int format) {
  switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_U8:
      return SampleKind{"8 bit", 1};
    case SF_FORMAT_PCM_16:
      return SampleKind{"16 bit", 2};
    case SF_FORMAT_PCM_24:
      return SampleKind{"24 bit", 3};
    case SF_FORMAT_PCM_32:
      return SampleKind{"32 bit", 4};
    case SF_FORMAT_FLOAT:
      return SampleKind{"32 bit float", 4};
    case SF_FORMAT_DOUBLE:
      return SampleKind{"64 bit float", 8};
    default:
      return std::nullopt;
  }
}

/// A file that was copied, or written by a program that knew no better, has any rate in its header:
/// where the name has another one, only the user can tell. Throws UsageError.
void requireSameRate(const std::string& name, const Known<double>& in_header,
                     const std::optional<Known<double>>& in_name) {
  constexpr double kTolerance = 0.01;
  if (!in_name) return;
  if (std::abs(in_name->value - in_header.value) <= kTolerance * in_header.value) return;
  throw UsageError(fmt::format(
      "{}: its header says {} and its name {}; say which is right with --sample-rate {} or {}",
      name, formatSampleRate(in_header.value), formatSampleRate(in_name->value),
      formatNumber(in_header.value), formatNumber(in_name->value)));
}

}  // namespace

AuxiChunk parseAuxi(std::span<const std::byte> chunk) {
  constexpr size_t kCentreByte = 32;
  AuxiChunk auxi;
  bool has_time_or_zeros = false;  // otherwise it is something else, such as text
  if (chunk.size() >= 16) {
    std::array<uint32_t, 8> time = {};
    for (size_t i = 0; i < time.size(); ++i) time[i] = littleEndian(chunk.subspan(2 * i, 2));
    const auto [year, month, weekday, day, hour, minute, second, millisecond] = time;
    const auto start = parseMoment(fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}", year,
                                               month, day, hour, minute, second, millisecond));
    if (start && *start > 0) auxi.start_unix_ms = start;
    has_time_or_zeros = auxi.start_unix_ms || time == std::array<uint32_t, 8>{};
  }
  if (has_time_or_zeros && chunk.size() >= kCentreByte + 4) {
    const uint32_t centre_hz = littleEndian(chunk.subspan(kCentreByte, 4));
    if (centre_hz != 0) auxi.centre_hz = centre_hz;
  }
  return auxi;
}

WavRecording::WavRecording(const RecordingRequest& request)
    : Recording(std::filesystem::path(request.source).filename().string()),
      file_(request.source, name()) {
  const SF_INFO& info = file_.info();
  const auto kind = sampleKind(info.format);
  if (!kind) {
    throw SourceError(
        fmt::format("{}: its samples are coded in a way that I/Q is not; 8, 16, 24, 32 bit and "
                    "float are read",
                    name()));
  }
  if (info.channels != 2) {
    throw SourceError(fmt::format("{}: it has {} channel{}; I/Q takes two", name(), info.channels,
                                  info.channels == 1 ? "" : "s"));
  }
  sample_bytes_ = 2 * kind->component_bytes;
  RecordingFacts facts;
  facts.format = {fmt::format("WAV {}", kind->name), kHeader};
  facts.rate_hz = {static_cast<double>(info.samplerate), kHeader};
  const std::string auxi_bytes = file_.chunks().content("auxi");
  const AuxiChunk auxi = parseAuxi(std::as_bytes(std::span(auxi_bytes)));
  if (auxi.centre_hz) facts.centre_hz = {*auxi.centre_hz, kAuxi};
  if (auxi.start_unix_ms) facts.start_unix_ms = {*auxi.start_unix_ms, kAuxi};
  const RecordingFacts by_name = factsOfName(name());
  if (!request.told.rate_hz) requireSameRate(name(), *facts.rate_hz, by_name.rate_hz);
  facts = firstKnown(request.told, facts);
  setFacts(firstKnown(facts, by_name));
}

size_t WavRecording::read(std::span<std::complex<float>> block) {
  auto* const components = reinterpret_cast<float*>(block.data());
  const auto frames =
      sf_readf_float(file_.sound(), components, static_cast<sf_count_t>(block.size()));
  if (sf_error(file_.sound()) != SF_ERR_NO_ERROR) {
    throw SourceError(fmt::format("cannot read {}: {}", name(), sf_strerror(file_.sound())));
  }
  const auto samples = static_cast<size_t>(std::max<sf_count_t>(frames, 0));
  if (samples < block.size()) checkLength();
  if ((file_.info().format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_U8) {
    // The zero of bytes is between 127 and 128, as in raw cu8; the library puts it at 128.
    for (size_t i = 0; i < 2 * samples; ++i) components[i] += 0.5F / 128.0F;
  }
  return samples;
}

/// At the end: whether everything has come that the header promises and that was there at first.
void WavRecording::checkLength() {
  if (sf_seek(file_.sound(), 0, SF_SEEK_CUR) < file_.info().frames) {
    setShrunk();
    return;
  }
  if (file_.bytesAfter() > 0) {
    setDamage(
        fmt::format("it goes on for {} bytes after the samples that its header promises; "
                    "only those samples were surveyed",
                    file_.bytesAfter()));
    return;
  }
  const auto promised = file_.chunks().promisedBytes();
  if (!promised || *promised == 0) return;
  const uint64_t there = *lengthSamples() * sample_bytes_;
  if (*promised >= there + sample_bytes_) {
    setDamage(
        fmt::format("it was cut short: its header promises {} bytes of samples, {} are there "
                    "and were surveyed",
                    *promised, there));
  } else if (*promised > there) {
    setLeftOver(*promised - there, "WAV");
  }
}

uint64_t WavRecording::skip(uint64_t samples) {
  const sf_count_t here = sf_seek(file_.sound(), 0, SF_SEEK_CUR);
  if (here < 0 || here > file_.info().frames) return Recording::skip(samples);
  const uint64_t skipped = std::min(samples, static_cast<uint64_t>(file_.info().frames - here));
  if (sf_seek(file_.sound(), static_cast<sf_count_t>(skipped), SF_SEEK_CUR) < 0) {
    throw SourceError(fmt::format("cannot read {}: {}", name(), sf_strerror(file_.sound())));
  }
  return skipped;
}

std::optional<uint64_t> WavRecording::lengthSamples() const {
  return static_cast<uint64_t>(std::max<sf_count_t>(file_.info().frames, 0));
}

}  // namespace pelagrim_host
