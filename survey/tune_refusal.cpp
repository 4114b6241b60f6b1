#include "survey/tune_refusal.h"

namespace pelagrim {

namespace {

const char* refusalReason(TuneAnswer answer) {
  switch (answer) {
    case TuneAnswer::kNotPermitted:
      return "not allowed to tune - tick 'allow tuning' on this plugin's row to sweep";
    case TuneAnswer::kOutOfRange:
      return "the band in survey.cfg is outside this radio's range";
    case TuneAnswer::kNoRadio:
      return "no radio open";
    default:
      return "the radio refused to tune";
  }
}

}  // namespace

TuneNews noteTuneAnswer(Tuning& tuning, TuneAnswer answer) {
  const bool refused = answer != TuneAnswer::kAccepted;
  if (refused == tuning.tune_refused) return TuneNews::kNone;
  if (refused) {
    tuning.status = refusalReason(answer);
  } else {
    tuning.status.clear();
  }
  tuning.tune_refused = refused;
  return refused ? TuneNews::kRefused : TuneNews::kRecovered;
}

}  // namespace pelagrim
