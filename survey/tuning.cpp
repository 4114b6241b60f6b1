#include "survey/tuning.h"

namespace pelagrim {

namespace {

const char* refusalReason(int result) {
  switch (result) {
    case -1:
      return "not allowed to tune - tick 'allow tuning' on this plugin's row to sweep";
    case -2:
      return "the band in survey.cfg is outside this radio's range";
    case -3:
      return "no radio open";
    default:
      return "the radio refused to tune";
  }
}

}  // namespace

TuneNews noteTuneResult(Tuning& tuning, int result) {
  const bool refused = result != 0;
  if (refused == tuning.tune_refused) return TuneNews::kNone;
  if (refused) {
    tuning.status = refusalReason(result);
  } else {
    tuning.status.clear();
  }
  tuning.tune_refused = refused;
  return refused ? TuneNews::kRefused : TuneNews::kRecovered;
}

}  // namespace pelagrim
