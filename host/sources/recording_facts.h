#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/process/command_errors.h"

namespace pelagrim_host {

/// A value and where it came from: "the command line", "the file name".
template <typename Value>
struct Known {
  Value value;
  std::string origin;
};

/// A run of samples at one centre.
struct RecordingSegment {
  double centre_hz = 0.0;
  uint64_t samples = 0;
};

/// What one origin (command line, header, file name) says about a recording; or what is known in
/// the end.
struct RecordingFacts {
  std::optional<Known<std::string>> format;
  std::optional<Known<double>> rate_hz;
  std::optional<Known<double>> centre_hz;
  std::optional<Known<int64_t>> start_unix_ms;  ///< of the first sample
  std::vector<RecordingSegment> segments{};     ///< if there are several
};

/// `facts`, completed by `otherwise`.
RecordingFacts firstKnown(RecordingFacts facts, const RecordingFacts& otherwise);

/// What the file's own name says (parseRecordingName).
RecordingFacts factsOfName(std::string_view file_name, std::optional<double> told_centre_hz = {});

/// The command line has to say more: the line names every flag that is missing.
struct UnknownFacts : UsageError {
  UnknownFacts(const std::string& line, RecordingFacts known_facts)
      : UsageError(line), known(std::move(known_facts)) {}
  RecordingFacts known;
};

/// Checks that format, rate and centre are known and could be those of a receiver. Throws
/// UnknownFacts if the command line has to give them, else SourceError.
void requireKnown(const std::string& name, const RecordingFacts& facts);

}  // namespace pelagrim_host
