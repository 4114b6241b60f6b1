#include "host/view/tune_text.h"

#include <fmt/format.h>

#include "host/text/quantity_text.h"

namespace pelagrim_host {

std::string tuneAnswerText(int answer) {
  switch (answer) {
    case kTuneAccepted:
      return "accepted";
    case kTuneNotPermitted:
      return "not permitted";
    case kTuneOutOfRange:
      return "out of range";
    case kTuneNoRadio:
      return "no radio";
    default:
      return "refused";
  }
}

std::optional<std::string> RefusalWords::news(const TuneRequest& request) {
  const bool is_news = !request.why_refused.empty() && request.why_refused != last_;
  last_ = request.why_refused;
  if (!is_news) return std::nullopt;
  return fmt::format("tuning to {}: {}", formatFrequency(request.hz), request.why_refused);
}

}  // namespace pelagrim_host
