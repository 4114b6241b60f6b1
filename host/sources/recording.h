#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// Takes a line that the user should see and that stops nothing.
using RemarkSink = std::function<void(const std::string&)>;

/// A value and what it was taken from: "the command line", "the file name".
template <typename Value>
struct Known {
  Value value;
  std::string origin;
};

/// What one place says of a recording: the command line, a header, the file's name.
struct RecordingFacts {
  std::optional<Known<std::string>> format;
  std::optional<Known<double>> rate_hz;
  std::optional<Known<double>> centre_hz;
  std::optional<Known<int64_t>> start_unix_ms;  ///< of the first sample
};

/// `facts`, and `otherwise` for what they leave open.
RecordingFacts firstKnown(RecordingFacts facts, const RecordingFacts& otherwise);

/// What the file's own name says (parseRecordingName).
RecordingFacts factsOfName(std::string_view file_name, std::optional<double> told_centre_hz = {});

/// Checks that format, rate and centre are known and could be those of a receiver. Throws UsageError
/// where the command line has to say them, naming every flag that is missing, else SourceError.
void requireKnown(const std::string& name, const RecordingFacts& facts);

/// A recording, and what is known of it.
class Recording : public IqSource {
 public:
  std::string name() const override { return name_; }
  double sampleRateHz() const override { return facts_.rate_hz->value; }
  double centreHz() const override { return facts_.centre_hz->value; }
  std::optional<int64_t> startUnixMs() const override;
  std::vector<SourceFact> facts() const override;
  std::optional<std::string> damage() const override { return damage_; }

 protected:
  /// `name`: as messages call it. setFacts has to follow before anything else is asked.
  explicit Recording(std::string name) : name_(std::move(name)) {}

  /// Throws as requireKnown does.
  void setFacts(RecordingFacts facts);

  const RecordingFacts& known() const { return facts_; }

  /// For when the end has been read: `what` is wrong, such as "it was cut".
  void setDamage(const std::string& what) { damage_ = name_ + ": " + what; }

  /// The same for `bytes` at the end that are no whole sample of `format`.
  void setLeftOver(uint64_t bytes, std::string_view format);

 private:
  std::string name_;
  RecordingFacts facts_;
  std::optional<std::string> damage_;
};

}  // namespace pelagrim_host
