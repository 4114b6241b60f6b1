#include "host/sources/open_recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "host/process/usage_error.h"
#include "host/sources/raw_recording.h"
#include "host/sources/sample_format.h"
#include "host/sources/sigmf_recording.h"
#include "host/sources/wav_recording.h"
#include "host/text/letter_case.h"

namespace pelagrim_host {
namespace {

bool isOneOf(const std::string& extension, std::initializer_list<const char*> extensions) {
  return std::find(extensions.begin(), extensions.end(), lowerCase(extension)) != extensions.end();
}

std::unique_ptr<IqSource> openRaw(const RecordingRequest& request) {
  const std::filesystem::path path(request.source);
  const bool has_name = request.source != "-";
  RecordingFacts facts = request.told;
  if (has_name) {
    const auto& centre = request.told.centre_hz;
    facts = firstKnown(facts, factsOfName(path.filename().string(),
                                          centre ? std::optional(centre->value) : std::nullopt));
  }
  requireKnown(request.source, facts);
  const SampleFormat* const format = findSampleFormat(lowerCase(facts.format->value));
  if (format == nullptr) {
    throw UsageError(fmt::format("--format {} is not known; there are {}", facts.format->value,
                                 sampleFormatNames()));
  }
  facts.format->value = format->name;
  return std::make_unique<RawRecording>(path, *format, std::move(facts));
}

}  // namespace

std::unique_ptr<IqSource> openRecording(const RecordingRequest& request, const RemarkSink& remark) {
  const std::filesystem::path path(request.source);
  const std::string extension = path.extension().string();
  const bool is_raw = request.told.format.has_value();
  if (is_raw && isOneOf(extension, {".sigmf", ".sigmf-meta"})) {
    throw UsageError(fmt::format(
        "--format: {} is no file of samples; to read a recording's samples whatever its metadata "
        "say, name its .sigmf-data",
        request.source));
  }
  if (!is_raw && isOneOf(extension, {".sigmf", ".sigmf-meta", ".sigmf-data"})) {
    return std::make_unique<SigmfRecording>(path, request.told, request.verify, remark);
  }
  if (request.verify) {
    throw UsageError("--verify: only a SigMF recording has a checksum");
  }
  if (!is_raw && isOneOf(extension, {".wav", ".wave", ".rf64"})) {
    return std::make_unique<WavRecording>(path, request.told);
  }
  return openRaw(request);
}

}  // namespace pelagrim_host
