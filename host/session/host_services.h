#pragma once

#include <optional>

#include "host/session/survey_clock.h"
#include "host/session/tune_request.h"
#include "host/sources/iq_source.h"
#include "wendle_plugin.h"

namespace pelagrim_host {

/// What the plug-in may ask its host for: the time, and to tune.
///
/// A request is answered on the spot: first by the user's permission, then by the source, which
/// moves at once. The plug-in must not be told (retune) until its process call has returned, so the
/// request is kept for the caller of process. All calls on one thread. The object must not move,
/// because the plug-in holds the address of its table.
class HostServices {
 public:
  HostServices(IqSource& source, const SurveyClock& clock, bool may_tune);
  HostServices(const HostServices&) = delete;
  HostServices& operator=(const HostServices&) = delete;

  const WendleHostApi* table() const { return &table_; }

  /// The request made since the last call, if any.
  std::optional<TuneRequest> takeTuneRequest();

 private:
  int tune(double hz) noexcept;

  IqSource& source_;
  const SurveyClock& clock_;
  bool may_tune_;
  std::optional<TuneRequest> request_;
  WendleHostApi table_;
};

}  // namespace pelagrim_host
