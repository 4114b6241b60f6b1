#include "survey/signal_kind.h"

namespace pelagrim {

const char* guessKind(double width_hz) {
  struct Kind {
    double below_hz;
    const char* text;
  };
  static constexpr Kind kKinds[] = {
      {1200.0, "carrier?"},   {4000.0, "SSB/CW?"}, {9000.0, "AM?"},    {20000.0, "NFM?"},
      {40000.0, "wide NFM?"}, {120000.0, "?"},     {260000.0, "WFM?"},
  };
  if (!(width_hz > 0.0)) return "?";
  for (const Kind& kind : kKinds) {
    if (width_hz < kind.below_hz) return kind.text;
  }
  return "wideband?";
}

}  // namespace pelagrim
