#pragma once

#include <optional>
#include <string>

#include "host/session/host_services.h"

namespace pelagrim_host {

/// A WendleTuneResult in words: "accepted", "out of range" and so on; other values are "refused".
std::string tuneAnswerText(int answer);

/// The source's reasons for refusing to tune. The plug-in tells the user that tuning was refused
/// and when it works again; only the source knows why. It is asked at the end of every dwell, so
/// the same words are shown only once.
class RefusalWords {
 public:
  /// A line for the user, if there is something new to say.
  std::optional<std::string> news(const TuneRequest& request);

 private:
  std::string last_;
};

}  // namespace pelagrim_host
