// What is observed of a dwell beside the plug-in: its spectra, and what was on the air when.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "files/results_file.h"
#include "host/evidence/dwell_observer.h"
#include "host/evidence/evidence_thread.h"
#include "host/evidence/on_air.h"
#include "host/session/survey_session.h"
#include "host/simulation/simulated_band.h"
#include "survey/detection.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;
using Samples = std::vector<std::complex<float>>;

Samples noise(size_t count, uint64_t seed = 1) {
  std::mt19937_64 random(seed);
  std::normal_distribution<float> normal;
  Samples samples(count);
  for (auto& sample : samples) sample = {normal(random), normal(random)};
  return samples;
}

/// Both get the same samples in blocks of every size, with ends of dwells and retunes in between.
TEST(DwellObserver, JudgesTheVeryLevelsThatThePluginJudges) {
  const Samples samples = noise(2'000'000);
  const pelagrim::Slice slice{250e3, 100e6};
  pelagrim::Spectrum plugin;
  plugin.prepare();
  DwellObserver observer(0.01);
  observer.start(slice, {}, 12.0);
  std::mt19937 random(2);
  size_t dwells = 0;
  for (size_t at = 0; at < samples.size();) {
    const size_t count = std::min<size_t>(1 + random() % 9000, samples.size() - at);
    const auto block = std::span(samples).subspan(at, count);
    const auto at_ms = static_cast<int64_t>(1'000'000 + at / 250);
    at += count;
    plugin.take(reinterpret_cast<const float*>(block.data()), count);
    switch (random() % 8) {
      case 0:  // dropped, and what is left of a frame goes on where the plug-in's does
        observer.skip(count);
        plugin.clearSum();
        EXPECT_FALSE(observer.finishDwell(at_ms));
        break;
      case 1:
        observer.take(block, at_ms);
        observer.retune(100e6);
        plugin.restart();
        break;
      case 2: {
        observer.take(block, at_ms);
        const auto record = observer.finishDwell(at_ms);
        if (record) {
          ++dwells;
          EXPECT_EQ(record->mean_db, pelagrim::levelsDb(plugin.power_sum, plugin.frames));
          EXPECT_EQ(record->frames, plugin.frames);
          EXPECT_EQ(record->end_unix_ms, at_ms);
          EXPECT_EQ(record->first_sample + record->samples, at);
          EXPECT_NEAR(double(record->first_unix_ms), 1e6 + double(record->first_sample) / 250, 1.0);
        }
        plugin.clearSum();
        break;
      }
      default:
        observer.take(block, at_ms);
    }
  }
  EXPECT_GE(dwells, 40u);
}

struct NoView : SurveyView {
  void opened(const SourceFacts&) override {}
  void note(const std::string&) override {}
  void warning(const std::string&) override {}
  void message(const std::string&) override {}
  void dwellDone(const SurveyProgress&) override {}
  void tuned(const TuneRequest&, double) override {}
  void finished(const Panel&) override {}
};

/// The detections of the records, entered into a list of our own, make the plug-in's file.
TEST(EvidenceThread, SeesEveryDwellOfASweepAsThePluginDoes) {
  for (const bool has_reader_thread : {false, true}) {
    const TemporaryDir dir;
    setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
    dir.write("survey.cfg", "start = 144000000\nstop = 146000000\ndwell_seconds = 1.5\n");
    SimulatedBandConfig config;
    config.centre_hz = 144.5e6;
    SimulatedBand band(config);
    pelagrim::Survey list;
    list.band_lo_hz = 144e6;
    list.band_hi_hz = 146e6;
    uint64_t next_sample = 0;
    int64_t before_ms = config.start_unix_ms;
    size_t records = 0, gaps = 0, on = 0;
    {
      EvidenceThread evidence({.start =
                                   [] {
                                     return EvidenceStart{{}, 12.0};
                                   },
                               .record =
                                   [&](const DwellRecord& dwell) {
                                     ++records;
                                     EXPECT_EQ(dwell.end_unix_ms - before_ms, 1500);
                                     before_ms = dwell.end_unix_ms;
                                     EXPECT_GE(dwell.first_sample, next_sample);
                                     next_sample = dwell.first_sample + dwell.samples;
                                     list.lookAt(dwell.slice.lowHz(), dwell.slice.highHz());
                                     for (const auto& found : dwell.detections) {
                                       list.add(found, dwell.end_unix_ms);
                                     }
                                     EXPECT_TRUE(dwell.floor_is_sure);
                                     for (const auto& place : dwell.places) {
                                       on += place.edges_ms.empty() ? 0 : 1;
                                     }
                                   },
                               .gap = [&](int64_t) { ++gaps; }},
                              true, 0.01);
      NoView view;
      const PluginLibrary plugin(PELAGRIM_PLUGIN_PATH);
      SurveySession session(plugin, band, ClockPolicy::sampleClock(config.start_unix_ms), view,
                            {.may_tune = true,
                             .passes = 2,
                             .has_reader_thread = has_reader_thread,
                             .observer = &evidence,
                             .dwell_length_ms = [] { return int64_t{1500}; }});
      session.run([] { return false; });
    }
    EXPECT_EQ(pelagrim::surveyText(list), dir.read("survey.csv"));
    EXPECT_EQ(records, 6u);
    EXPECT_EQ(gaps, 0u);
    EXPECT_GE(on, 15u);
  }
}

TEST(RowSpectra, BecomeLongerWhereThereWouldBeTooMany) {
  RowSpectra spectra(1);
  const Samples frame(kSpectrumBins, {1.0F, 0.0F});
  for (size_t i = 0; i < RowSpectra::kMaxRows + 3; ++i) spectra.take(frame);
  EXPECT_EQ(spectra.rowFrames(), 2u);
  EXPECT_EQ(spectra.rows(), RowSpectra::kMaxRows / 2 + 1);
  EXPECT_EQ(spectra.frames(), RowSpectra::kMaxRows + 3);
  for (const size_t row : {size_t{0}, spectra.rows() - 1}) {
    EXPECT_FLOAT_EQ(spectra.row(row)[512] * static_cast<float>(spectra.frames()),
                    static_cast<float>(spectra.sum()[512]));
  }
  spectra.clear();
  EXPECT_EQ(spectra.rowFrames(), 1u);
  EXPECT_EQ(spectra.rows(), 0u);
}

TEST(OnAir, ThresholdsAreLowerForMoreFramesAndWiderSignals) {
  // One exponential in a million is above 13.8 times its mean; two bins are hardly more than one.
  EXPECT_NEAR(onAirThreshold(2, 1), 10.9, 0.2);
  EXPECT_LT(onAirThreshold(2, 20), onAirThreshold(2, 10));
  EXPECT_LT(onAirThreshold(10, 10), onAirThreshold(2, 10));
  for (const double rate_hz : {12e3, 250e3, 1e6, 2.4e6, 61.44e6}) {
    const uint32_t frames = rowFrames(rate_hz, 0.01);
    EXPECT_LE(onAirThreshold(2, frames), 3.99) << rate_hz;
    EXPECT_GE(frames * 1024.0 / rate_hz, 0.0094) << rate_hz;
    if (frames > 5) {
      EXPECT_LE(frames * 1024.0 / rate_hz, 0.0106) << rate_hz;
    }
  }
}

/// The share of the rows in which a place is on the air.
double shareOn(const WatchedPlace& place, double dwell_ms) {
  double on_ms = 0.0;
  for (size_t i = 0; i < place.edges_ms.size(); i += 2) {
    const bool ends = i + 1 < place.edges_ms.size();
    on_ms += (ends ? place.edges_ms[i + 1] : dwell_ms) - place.edges_ms[i];
  }
  return on_ms / dwell_ms;
}

double watchedMs(const RowSpectra& spectra, double rate_hz) {
  return 1000.0 * double(spectra.rows() * spectra.rowFrames() * kSpectrumBins) / rate_hz;
}

TEST(OnAir, IsNothingOnNoiseAloneWhateverItsShape) {
  enum Shape { kFlat, kSlope, kSpike, kStep };
  for (const double rate_hz : {12e3, 250e3, 2.4e6}) {
    for (const Shape shape : {kFlat, kSlope, kSpike, kStep}) {
      SCOPED_TRACE(std::to_string(rate_hz) + " " + std::to_string(shape));
      Samples samples = noise(1'500'000, 3 + shape);
      std::complex<float> before;
      for (size_t i = 0; i < samples.size(); ++i) {
        const auto now = samples[i];
        if (shape == kSlope) samples[i] += 0.33F * before;  // 6 dB from end to end
        if (shape == kSpike) samples[i] += 1.0F;
        if (shape == kStep && i > samples.size() / 2) samples[i] *= 3.0F;
        before = now;
      }
      RowSpectra spectra(rowFrames(rate_hz, 0.01));
      spectra.take(samples);
      const double bin_hz = rate_hz / kSpectrumBins;
      for (const int bins : {2, 3, 10, 60}) {
        for (const int at : {-450, -300, -60, 40, 250, 400}) {
          const double low_hz = 100e6 + at * bin_hz;
          const FrequencyInterval interval[] = {{low_hz, low_hz + bins * bin_hz}};
          const auto places = watchPlaces(spectra, {rate_hz, 100e6}, interval);
          ASSERT_EQ(places.size(), 1u);
          EXPECT_EQ(shareOn(places[0], watchedMs(spectra, rate_hz)), 0.0) << bins << " at " << at;
        }
      }
    }
  }
}

TEST(OnAir, AgreesWithWhatTheStationsOfTheSimulatedBandDo) {
  SimulatedBandConfig config;
  config.centre_hz = 145.4e6;
  SimulatedBand band(config);
  const pelagrim::Slice slice{config.sample_rate_hz, *config.centre_hz};
  RowSpectra spectra(rowFrames(slice.sample_rate_hz, 0.01));
  Samples block(65536);
  for (int i = 0; i < 600; ++i) {
    band.read(block);
    spectra.take(block);
  }
  std::vector<FrequencyInterval> intervals;
  std::vector<SimulatedStation> stations;
  for (const SimulatedStation& station : band.stations()) {
    if (station.lowHz() < slice.lowHz() || station.highHz() > slice.highHz()) continue;
    intervals.push_back({station.lowHz(), station.highHz()});
    stations.push_back(station);
  }
  const auto places = watchPlaces(spectra, slice, intervals);
  ASSERT_EQ(places.size(), stations.size());
  ASSERT_GE(stations.size(), 8u);
  const double watched_ms = watchedMs(spectra, slice.sample_rate_hz);
  for (size_t i = 0; i < places.size(); ++i) {
    StationStrength strength(stations[i]);
    int on = 0, looked = 0;
    for (double ms = 0.5; ms < watched_ms; ms += 1.0, ++looked) {
      on += strength.at(ms / 1000.0) > 0.5 ? 1 : 0;
    }
    EXPECT_NEAR(shareOn(places[i], watched_ms), double(on) / looked, 0.02) << stations[i].name;
  }
}

}  // namespace
}  // namespace pelagrim_host
