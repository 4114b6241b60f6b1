#pragma once

#include <optional>

#include "host/session/sample_feed.h"
#include "host/session/survey_clock.h"
#include "host/session/tune_request.h"
#include "wendle_plugin.h"

namespace pelagrim_host {

/// What the plug-in may ask its host for: the time, and to tune.
///
/// A request is answered on the spot: first by the user's permission, then by the source, which
/// moves at once. The plug-in must not be told (retune) until its process call has returned, so the
/// request is kept for the caller of process. All calls on the surveyor's thread. The object must
/// not move, because the plug-in holds the address of its table.
class HostServices {
 public:
  HostServices(SampleFeed& feed, const SurveyClock& clock, bool may_tune);
  HostServices(const HostServices&) = delete;
  HostServices& operator=(const HostServices&) = delete;

  const WendleHostApi* table() const { return &table_; }

  /// A request, and what became of it.
  struct Tuned {
    TuneRequest request;
    TuneOutcome outcome;
  };

  /// The request made since the last call, if any.
  std::optional<Tuned> takeTuneRequest();

 private:
  int tune(double hz) noexcept;

  SampleFeed& feed_;
  const SurveyClock& clock_;
  bool may_tune_;
  std::optional<Tuned> tuned_;
  WendleHostApi table_;
};

}  // namespace pelagrim_host
