#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/sources/iq_source.h"
#include "host/sources/recording_facts.h"
#include "host/sources/stop_function.h"

namespace pelagrim_host {

/// Takes a line that the user should see but that does not stop the run.
using RemarkSink = std::function<void(const std::string&)>;

/// A recording, and what the user says about it.
struct RecordingRequest {
  std::string source;   ///< a file's name; "-" is standard input
  RecordingFacts told;  ///< outranks everything else; with a format the file is read as raw samples
  bool verify = false;  ///< check a SigMF recording against its checksum first
  StopFunction stop = neverStop;
  std::optional<double> stall_seconds{};  ///< how long to wait for a pipe; unset: for ever
};

/// A recording, and what is known about it.
class Recording : public IqSource {
 public:
  std::string name() const override { return name_; }
  double sampleRateHz() const override { return facts_.rate_hz->value; }
  double centreHz() const override { return facts_.centre_hz->value; }
  std::optional<int64_t> startUnixMs() const override;
  std::optional<RecordingFacts> facts() const override { return facts_; }
  std::optional<std::string> damage() const override { return damage_; }

 protected:
  /// `name`: for messages. Call setFacts before anything else.
  explicit Recording(std::string name) : name_(std::move(name)) {}

  /// Throws as requireKnown does.
  void setFacts(RecordingFacts facts);

  const RecordingFacts& known() const { return facts_; }

  /// For the end of the data: `what` is wrong, such as "it was cut".
  void setDamage(const std::string& what) { damage_ = name_ + ": " + what; }

  /// The same for `bytes` at the end that are not a whole sample of `format`.
  void setLeftOver(uint64_t bytes, std::string_view format);

  /// The same for a file that somebody cut while it was read.
  void setShrunk();

 private:
  std::string name_;
  RecordingFacts facts_;
  std::optional<std::string> damage_;
};

}  // namespace pelagrim_host
