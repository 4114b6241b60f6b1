// What a new survey.cfg says for the source that it is made for.
#include "host/commands/survey_setup.h"

#include <gtest/gtest.h>

#include "survey/slice_plan.h"

namespace pelagrim_host {
namespace {

struct FixedSource : IqSource {
  FixedSource(double centre_hz, double rate_hz) : centre_hz_(centre_hz), rate_hz_(rate_hz) {}
  std::string name() const override { return "fixed"; }
  double sampleRateHz() const override { return rate_hz_; }
  double centreHz() const override { return centre_hz_; }
  size_t read(std::span<std::complex<float>>) override { return 0; }

  double centre_hz_;
  double rate_hz_;
};

TEST(SurveySetup, OfARecordingPlansOneSlice) {
  Options recording;
  recording.source = "x";
  for (const double rate_hz :
       {1.0, 11025.0, 48e3, 250e3, 1.024e6, 1.6e6, 2.048e6, 2.4e6, 1e7 / 3}) {
    for (const double centre_hz : {0.0, 7.1e6, 145.5e6, 868.95e6 + 0.1, 10.4e9}) {
      SurveySetup setup;
      fitToSource(setup, recording, FixedSource(centre_hz, rate_hz));
      const auto in_force = setup.inForce();
      EXPECT_EQ(pelagrim::planSlices(in_force.start_hz, in_force.stop_hz, rate_hz).size(), 1u)
          << centre_hz << " " << rate_hz;
      EXPECT_NEAR(0.5 * (in_force.start_hz + in_force.stop_hz), centre_hz, 0.01 * rate_hz);
      EXPECT_FALSE(in_force.sweep);
    }
  }
}

}  // namespace
}  // namespace pelagrim_host
