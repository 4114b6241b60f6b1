#pragma once

#include <optional>
#include <string>

#include "host/session/host_services.h"

namespace pelagrim_host {

/// "accepted", "out of range" and so on: a WendleTuneResult in words, others as a refusal.
std::string tuneAnswerText(int answer);

/// What the source says about refused tune requests. The plug-in tells the user that tuning was
/// refused and that it works again; the source knows why. It is asked at every dwell's end, so the
/// same words are said once.
class RefusalWords {
 public:
  /// A line for the user, where there is something new to say.
  std::optional<std::string> news(const TuneRequest& request);

 private:
  std::string last_;
};

}  // namespace pelagrim_host
