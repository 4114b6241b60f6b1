// A dwell from samples to survey.csv, through the boundary.

#include "tests/support/plugin_host.h"

namespace {

constexpr double kRateHz = 1024000.0;  // bins of 1000 Hz
constexpr char kHeader[] =
    "# survey.csv format 2: each centre_hz is the middle of its signal's bins\n"
    "centre_hz,width_hz,min_width_hz,max_width_hz,peak_db,floor_db,hits,looks,first_unix_ms,"
    "last_unix_ms,guess\n";

TEST(Dwell, FindsTonesAndSavesThem) {
  PluginHost host;
  host.create(kRateHz, 145e6);
  EXPECT_EQ(host.lines(), (std::vector<std::string>{
                              "survey: 24 band labels loaded",
                              "survey: 144.000-146.000 MHz in 3 slices of 1.02 MHz, 20 s each"}));
  host.processUntil(1'020'000, band(50, {-100, 200}));
  EXPECT_EQ(host.lines(),
            std::vector<std::string>{"survey: 145.000 MHz, 2 here, 2 known after 1 dwell"});
  EXPECT_EQ(host.dir.read("survey.csv"),
            std::string(kHeader) +
                "144900000,3000,3000,3000,54.2,8.8,1,1,1020000,1020000,SSB/CW?\n"
                "145200000,3000,3000,3000,54.2,8.8,1,1,1020000,1020000,SSB/CW?\n");
}

TEST(Dwell, CountsHitsAndLooksOverDwellsAndResumesThem) {
  PluginHost host;
  host.create(kRateHz, 145e6);
  host.processUntil(1'020'000, band(4, {-100, 200}));
  host.processUntil(1'040'000, band(4, {200}));
  host.iq->retune(host.handle, 144.9e6);  // the slice still covers both
  host.processUntil(1'060'000, band(4, {}));
  host.iq->destroy(host.handle);  // nothing gathered since: no dwell
  EXPECT_EQ(host.rows()[0][4], "3");
  host.lines();
  host.create(kRateHz, 145e6);
  EXPECT_EQ(host.lines()[1], "survey: resumed 2 channels from survey.csv");
  EXPECT_EQ(host.rows()[0][4], "0");
  EXPECT_EQ(host.rows()[1][5], "2/3");
  EXPECT_EQ(host.rows()[2][5], "1/3");
}

TEST(Dwell, TakesARasterThatIsNotPositiveAsOneHertz) {
  for (const char* raster_hz : {"0", "-5000", "nan"}) {
    PluginHost host;
    host.dir.write("survey.cfg", std::string("raster_hz=") + raster_hz + "\n");
    host.create(kRateHz, 145e6);
    host.processUntil(1'020'000, band(50, {98, 102}));  // one slot of 5 kHz
    EXPECT_EQ(host.lastLine(), "survey: 145.000 MHz, 2 here, 2 known after 1 dwell") << raster_hz;
  }
}

TEST(Dwell, ResumesTheLastRowOfEachSlot) {
  PluginHost host;
  std::string rows = "# survey.csv format 2\n";
  for (int i = 0; i < 40; ++i) {  // down through one slot, by turns with others
    rows += std::to_string(145502000 - 100 * i) + ",1,1,1,0,0,1,1,0,0\n";
    rows += std::to_string(144900000 - 5000 * i) + ",1,1,1,0,0,1,1,0,0\n";
  }
  host.dir.write("survey.csv", rows);
  host.create(kRateHz, 145e6);
  EXPECT_EQ(host.lines()[1], "survey: resumed 80 channels from survey.csv");
  ASSERT_EQ(host.rows().size(), 42U);
  EXPECT_EQ(host.rows().back()[0], "145.4981 MHz");
}

TEST(Dwell, EndsByTheHostsClockToTheMillisecond) {
  const std::pair<const char*, int64_t> lengths_ms[] = {
      {"20", 20'000}, {"0.0019", 1}, {"nan", 20'000}, {"0", 0}, {"-1", -1000}};
  for (const auto& [dwell_seconds, length_ms] : lengths_ms) {
    PluginHost host;
    host.dir.write("survey.cfg", std::string("dwell_seconds=") + dwell_seconds + "\n");
    host.create(kRateHz, 145e6);
    host.lines();
    host.processUntil(1'000'000 + length_ms - 1, band(1, {}));
    EXPECT_TRUE(host.lines().empty()) << dwell_seconds;
    host.processUntil(1'000'000 + length_ms, {});  // the frame of the previous call still counts
    EXPECT_EQ(host.lines().size(), 1U) << dwell_seconds;
  }
}

TEST(Dwell, ReadsTheClockOnceForTheEndAndOnceForTheDetections) {
  PluginHost host;
  host.services.now_ms = [](void* ctx) {  // advances a second at every reading
    ++static_cast<PluginHost*>(ctx)->clock_readings;
    return static_cast<PluginHost*>(ctx)->now_ms += 1000;
  };
  host.dir.write("survey.cfg", "sweep=no\ndwell_seconds=3\n");
  host.create(kRateHz, 145e6);  // starts at 1 001 000 ms
  const Samples samples = band(1, {100});
  const int readings_by_call[] = {1, 1, 2, 1,
                                  2, 1, 2};  // a dwell starts at the reading that ends one
  for (const int readings : readings_by_call) {
    const int before = host.clock_readings;
    host.process(samples);
    EXPECT_EQ(host.clock_readings - before, readings) << host.now_ms;
  }
  EXPECT_NE(host.dir.read("survey.csv").find(",1005000,1011000,"), std::string::npos)
      << host.dir.read("survey.csv");
}

TEST(Dwell, NeverEndsWhileAClockReadingIsMissing) {
  PluginHost host;
  host.now_ms = 0;
  host.create(kRateHz, 145e6);
  host.lines();
  host.processUntil(1'000'000'000, band(1, {}));
  EXPECT_TRUE(host.lines().empty()) << "the dwell had no start";
  host.iq->retune(host.handle, 145e6);  // now it has
  host.processUntil(0, band(1, {}));
  EXPECT_TRUE(host.lines().empty());
  host.processUntil(1'000'020'000, {});
  EXPECT_EQ(host.lines().size(), 1U);
}

TEST(Dwell, IsDroppedByARetuneAndByANewCreate) {
  PluginHost host;
  host.create(kRateHz, 145e6);
  host.process(band(2, {100}));
  host.process(Samples(1000));
  host.iq->retune(host.handle, 144e6);
  host.process(Samples(1023));  // would complete the old frame
  host.iq->destroy(host.handle);
  EXPECT_FALSE(host.dir.has("survey.csv"));
  host.process(band(2, {100}));
  host.process(Samples(1000));
  host.create(kRateHz, 145e6);
  host.process(Samples(1023));
  host.iq->destroy(host.handle);
  EXPECT_FALSE(host.dir.has("survey.csv"));
}

TEST(Dwell, HandsAHalfGatheredFrameToTheNext) {
  PluginHost host;
  host.create(kRateHz, 145e6);
  const Samples samples = band(2, {100});
  host.processUntil(1'020'000, Samples(samples.begin(), samples.begin() + 1500));
  host.lines();
  host.processUntil(1'030'000, Samples(samples.begin() + 1500, samples.end()));
  host.iq->destroy(host.handle);
  EXPECT_EQ(host.lastLine(), "survey: 145.000 MHz, 1 here, 1 known after 2 dwells");
}

}  // namespace
