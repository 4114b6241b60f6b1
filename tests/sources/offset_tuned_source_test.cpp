#include "host/sources/offset_tuned_source.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace pelagrim_host {
namespace {

/// 1 at the receiver's own centre, forever.
struct Spike : IqSource {
  std::string name() const override { return "spike"; }
  double sampleRateHz() const override { return 1e6; }
  double centreHz() const override { return hz; }
  size_t read(std::span<std::complex<float>> block) override {
    std::fill(block.begin(), block.end(), 1.0F);
    return block.size();
  }
  WendleTuneResult tune(double to_hz) override {
    if (to_hz > limit_hz) return kTuneOutOfRange;
    return hz = to_hz, kTuneAccepted;
  }
  double hz = 100e6, limit_hz = 200e6;
};

TEST(OffsetTunedSource, MovesTheSpikeByExactlyTheOffsetHoweverLongItRuns) {
  for (const double offset_hz : {25e3, -123.456e3}) {
    OffsetTunedSource source(std::make_unique<Spike>(), offset_hz);
    EXPECT_EQ(source.centreHz(), 100e6);
    EXPECT_EQ(source.tune(101e6), kTuneAccepted);
    EXPECT_EQ(source.centreHz(), 101e6);
    std::vector<std::complex<float>> block(3777);
    for (size_t first = 0; first < 5'000'000; first += block.size()) {
      source.read(block);
      const size_t i = first / 101 % block.size();
      const double turns = std::fmod(offset_hz * static_cast<double>(first + i), 1e6) / 1e6;
      const auto expected = std::polar(1.0, 2 * std::numbers::pi * turns);
      EXPECT_LT(std::abs(std::complex<double>(block[i]) - expected), 1e-6);
    }
  }
  EXPECT_EQ(Spike().skip(65537), 65537U) << "a source that cannot skip reads";
  EXPECT_THROW(OffsetTunedSource(std::make_unique<Spike>(), 500e3), SourceError);
  auto at_its_limit = std::make_unique<Spike>();
  at_its_limit->limit_hz = at_its_limit->hz;
  EXPECT_THROW(OffsetTunedSource(std::move(at_its_limit), 25e3), SourceError);
}

}  // namespace
}  // namespace pelagrim_host
