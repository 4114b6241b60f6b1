#pragma once

#include <string>

namespace pelagrim {

/// What the user has last been told about tuning.
struct Tuning {
  std::string status;         ///< why the last reported request was refused; empty if none was
  bool tune_refused = false;  ///< a refusal has been reported and no request has succeeded since
};

/// The host's answers to a tune request. Any other value means that the radio refused.
enum class TuneAnswer : int { kAccepted = 0, kNotPermitted = -1, kOutOfRange = -2, kNoRadio = -3 };

/// What the answer to a tune request means for the user.
enum class TuneNews { kNone, kRefused, kRecovered };

/// Takes the answer to a tune request and returns what is new. A series of refusals is news once
/// and keeps the reason for the first.
TuneNews noteTuneAnswer(Tuning& tuning, TuneAnswer answer);

}  // namespace pelagrim
