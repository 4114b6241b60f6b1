#include "host/sources/open_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/sources/raw_recording.h"
#include "host/sources/sample_format.h"
#include "host/sources/sigmf_recording.h"
#include "host/sources/wav_recording.h"

namespace pelagrim_host {
namespace {

constexpr const char* kCommandLine = "the command line";

RecordingFacts factsTold(const Options& options) {
  RecordingFacts told;
  if (!options.format.empty()) told.format = {options.format, kCommandLine};
  if (options.sample_rate_hz) told.rate_hz = {*options.sample_rate_hz, kCommandLine};
  if (options.frequency_hz) told.centre_hz = {*options.frequency_hz, kCommandLine};
  if (options.start_unix_ms) told.start_unix_ms = {*options.start_unix_ms, kCommandLine};
  return told;
}

bool isOneOf(const std::string& extension, std::initializer_list<const char*> extensions) {
  const auto lower = [](std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return text;
  };
  return std::find(extensions.begin(), extensions.end(), lower(extension)) != extensions.end();
}

std::unique_ptr<IqSource> openRaw(const Options& options, const RecordingFacts& told) {
  const std::filesystem::path path(options.source);
  const bool has_name = options.source != "-";
  RecordingFacts facts = told;
  if (has_name) facts = firstKnown(facts, factsOfName(path.filename().string()));
  requireKnown(options.source, facts);
  const SampleFormat* const format = findSampleFormat(facts.format->value);
  if (format == nullptr) {
    throw UsageError(
        fmt::format("--format {} is not known; there are {}", options.format, sampleFormatNames()));
  }
  return std::make_unique<RawRecording>(path, *format, std::move(facts));
}

}  // namespace

std::unique_ptr<IqSource> openRecording(const Options& options, const RemarkSink& remark) {
  const std::filesystem::path path(options.source);
  const std::string extension = path.extension().string();
  const RecordingFacts told = factsTold(options);
  const bool is_raw = !options.format.empty();
  if (is_raw && isOneOf(extension, {".sigmf", ".sigmf-meta"})) {
    throw UsageError(fmt::format(
        "--format: {} is no file of samples; to read a recording's samples whatever its metadata "
        "say, name its .sigmf-data",
        options.source));
  }
  if (!is_raw && isOneOf(extension, {".sigmf", ".sigmf-meta", ".sigmf-data"})) {
    return std::make_unique<SigmfRecording>(path, told, options.verify, remark);
  }
  if (options.verify) {
    throw UsageError("--verify: only a SigMF recording has a checksum");
  }
  if (!is_raw && isOneOf(extension, {".wav", ".wave", ".rf64"})) {
    return std::make_unique<WavRecording>(path, told);
  }
  return openRaw(options, told);
}

}  // namespace pelagrim_host
