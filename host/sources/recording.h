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

/// Takes a line that the user should see and that stops nothing.
using RemarkSink = std::function<void(const std::string&)>;

/// A recording, and what the user says of it.
struct RecordingRequest {
  std::string source;   ///< a file's name; "-" is standard input
  RecordingFacts told;  ///< stands over all else; with a format the file is taken for raw samples
  bool verify = false;  ///< compare a SigMF recording with its checksum first
  StopFunction stop = neverStop;
};

/// A recording, and what is known of it.
class Recording : public IqSource {
 public:
  std::string name() const override { return name_; }
  double sampleRateHz() const override { return facts_.rate_hz->value; }
  double centreHz() const override { return facts_.centre_hz->value; }
  std::optional<int64_t> startUnixMs() const override;
  std::optional<RecordingFacts> facts() const override { return facts_; }
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
