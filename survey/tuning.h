#pragma once

#include <string>

namespace pelagrim {

/// Whether the host lets the survey tune, as far as the user has been told.
struct Tuning {
  std::string status;         ///< why the last reported request was refused; empty when none was
  bool tune_refused = false;  ///< a refusal has been reported and no request has succeeded since
};

/// What the answer to a tune request means for the user.
enum class TuneNews { kNone, kRefused, kRecovered };

/// Takes the result of a tune request (0 accepted, else the host's reason) and says what is new. A
/// series of refusals is news once and keeps the reason of the first.
TuneNews noteTuneResult(Tuning& tuning, int result);

}  // namespace pelagrim
