// The list that follows from the record is that of the plug-in, to the byte.
#include "host/history/replay.h"

#include "host/evidence/dwell_observer.h"
#include "host/simulation/simulated_band.h"
#include "tests/history/history_fixture.h"
#include "tests/support/plugin_host.h"

namespace pelagrim_host {
namespace {

constexpr double kRateHz = 250e3;
constexpr const char* kSettings =
    "start = 145000000\nstop = 145600000\nthreshold_db = 9\ndwell_seconds = 1\n"
    "raster_hz = 3000\nsweep = yes\n";

/// What the record says of the list after each of its dwells.
std::vector<std::string> replayed(const std::filesystem::path& path) {
  std::vector<std::string> lists;
  std::optional<Replay> replay;
  HistoryReader reader(path);
  reader.visit({[&](const auto& anchor) { replay.emplace(anchor.value); },
                [&](const auto& dwell) {
                  replay->add(dwell.record);
                  lists.push_back(replay->list());
                },
                [](const auto&) { ADD_FAILURE() << "a gap"; }},
               false);
  return lists;
}

TEST_F(HistoryTest, ReplayGivesTheListOfThePluginToTheByte) {
  for (const int create_every : {1, 20, 300}) {
    SCOPED_TRACE(create_every);
    std::filesystem::remove(path_);
    PluginHost host;
    host.dir.write("survey.cfg", kSettings);
    // What it begins with: an older format, long lines, rows of one slot, bytes that are no text.
    host.dir.write("survey.csv", "145100000,3000,2900,3100,-10.5,-40.2,7,9,5,6,x\n" +
                                     std::string(1200, '7') +
                                     "\n145101000,3000,2900,3100,-1e1,-40,7,3,5,6" +
                                     std::string(1, '\0') + "\n145300000,1,1,1,1,1,1,1,1,1");
    SimulatedBandConfig config;
    config.sample_rate_hz = kRateHz;
    config.centre_hz = 145.1e6;
    SimulatedBand band(config);
    DwellObserver observer(0.01);
    auto history = writer();
    history.beginRun(run());
    double centre_hz = 145.1e6;
    std::vector<std::string> lists;
    Samples block(24 * 1024 + 300);
    for (int dwell = 0; dwell < 300; ++dwell) {
      if (dwell % create_every == 0) {
        if (dwell > 0) host.iq->destroy(host.handle);
        const std::string list = host.dir.read("survey.csv");
        const HistoryAnchor anchor{.rate_hz = kRateHz,
                                   .threshold_db = 9.0,
                                   .raster_hz = 3000.0,
                                   .band_lo_hz = 145e6,
                                   .band_hi_hz = 145.6e6,
                                   .list = list};
        host.create(kRateHz, centre_hz);
        history.anchor(anchor);
        observer.start({kRateHz, centre_hz}, Replay(anchor).survey(), 9.0);
      }
      band.read(block);
      observer.take(block, host.now_ms);
      const size_t tunes = host.tuned_hz.size();
      host.processUntil(host.now_ms + 1000, block);
      auto record = observer.finishDwell(host.now_ms);
      ASSERT_TRUE(record);
      history.dwell(std::move(*record));
      lists.push_back(host.dir.read("survey.csv"));
      if (host.tuned_hz.size() > tunes) {
        centre_hz = host.tuned_hz.back();
        band.tune(centre_hz);
        host.iq->retune(host.handle, centre_hz);
        observer.retune(centre_hz);
      }
    }
    history.end();
    EXPECT_EQ(told_, std::vector<std::string>());
    const auto follow = replayed(path_);
    ASSERT_EQ(follow.size(), lists.size());
    for (size_t i = 0; i < lists.size(); ++i) {
      ASSERT_EQ(follow[i], lists[i]) << "after dwell " << i;
    }
    EXPECT_GE(std::count(lists.back().begin(), lists.back().end(), '\n'), 8);
  }
}

}  // namespace
}  // namespace pelagrim_host
