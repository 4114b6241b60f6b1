#include "host/sources/recording_facts.h"

#include <fmt/format.h>

#include "host/sources/iq_source.h"
#include "host/sources/recording_name.h"
#include "host/sources/sample_format.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr const char* kFileName = "the file name";

// No receiver is outside; numbers beyond them are those of a damaged or hostile file.
constexpr double kMinRateHz = 1.0;
constexpr double kMaxRateHz = 1e11;
constexpr double kMaxCentreHz = 1e13;

void requireBetween(const std::string& name, const char* what, const char* flag,
                    const Known<double>& known, double min, double max) {
  if (known.value >= min && known.value <= max) return;
  throw SourceError(fmt::format("{}: the {} of {} Hz from {} makes no sense; give {}", name, what,
                                formatNumber(known.value), known.origin, flag));
}

}  // namespace

RecordingFacts firstKnown(RecordingFacts facts, const RecordingFacts& otherwise) {
  if (!facts.format) facts.format = otherwise.format;
  if (!facts.rate_hz) facts.rate_hz = otherwise.rate_hz;
  if (!facts.centre_hz) facts.centre_hz = otherwise.centre_hz;
  if (!facts.start_unix_ms) facts.start_unix_ms = otherwise.start_unix_ms;
  return facts;
}

RecordingFacts factsOfName(std::string_view file_name, std::optional<double> told_centre_hz) {
  const RecordingName name = parseRecordingName(file_name, told_centre_hz);
  RecordingFacts facts;
  if (name.format != nullptr) facts.format = {std::string(name.format->name), kFileName};
  if (name.rate_hz) facts.rate_hz = {*name.rate_hz, kFileName};
  if (name.centre_hz) facts.centre_hz = {*name.centre_hz, kFileName};
  if (name.start_unix_ms) facts.start_unix_ms = {*name.start_unix_ms, kFileName};
  return facts;
}

void requireKnown(const std::string& name, const RecordingFacts& facts) {
  std::string missing;
  const auto miss = [&missing](bool is_known, const std::string& line) {
    if (!is_known) missing += (missing.empty() ? "" : "; ") + line;
  };
  miss(facts.format.has_value(), fmt::format("the format of the samples is not known; give "
                                             "--format with {}",
                                             sampleFormatNames()));
  miss(facts.rate_hz.has_value(), "the sample rate is not known; give --sample-rate, e.g. 2.4M");
  miss(facts.centre_hz.has_value(), "the centre is not known; give --frequency, e.g. 145.5M");
  if (!missing.empty()) throw UnknownFacts(fmt::format("{}: {}", name, missing), facts);
  requireBetween(name, "sample rate", "--sample-rate", *facts.rate_hz, kMinRateHz, kMaxRateHz);
  requireBetween(name, "centre", "--frequency", *facts.centre_hz, 0.0, kMaxCentreHz);
}

}  // namespace pelagrim_host
