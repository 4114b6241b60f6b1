#pragma once

#include <optional>

#include "host/session/survey_clock.h"
#include "host/session/tune_request.h"
#include "host/sources/iq_source.h"
#include "wendle_plugin.h"

namespace pelagrim_host {

/// What the plug-in may ask of its host: the clock, and to tune.
///
/// A request is answered truthfully on the spot, by the user's permission and then by the source,
/// which moves at once; telling the plug-in (retune) has to wait until its process call has
/// returned, so the request is kept for whoever made that call. All calls on one thread; the object
/// stays where it is, as the plug-in holds the address of its table.
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
