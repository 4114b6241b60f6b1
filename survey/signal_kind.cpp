#include "survey/signal_kind.h"

namespace pelagrim {

namespace {

constexpr const char* kUnknown = "?";

struct Kind {
  double below_hz;
  const char* text;
};
constexpr Kind kKinds[] = {
    {1200.0, "carrier?"},   {4000.0, "SSB/CW?"},  {9000.0, "AM?"},    {20000.0, "NFM?"},
    {40000.0, "wide NFM?"}, {120000.0, kUnknown}, {260000.0, "WFM?"},
};
constexpr const char* kWidest = "wideband?";

}  // namespace

const char* guessKind(double width_hz) {
  if (!(width_hz > 0.0)) return kUnknown;
  for (const Kind& kind : kKinds) {
    if (width_hz < kind.below_hz) return kind.text;
  }
  return kWidest;
}

std::vector<std::string_view> signalKinds() {
  std::vector<std::string_view> all;
  for (const Kind& kind : kKinds) {
    if (kind.text != kUnknown) all.emplace_back(kind.text);
  }
  all.insert(all.end(), {kWidest, kUnknown});
  return all;
}

}  // namespace pelagrim
