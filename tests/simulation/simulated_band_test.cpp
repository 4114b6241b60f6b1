#include "host/simulation/simulated_band.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "host/simulation/station_lines.h"

namespace pelagrim_host {
namespace {

using Stretches = std::vector<Stretch>;
using Samples = std::vector<std::complex<float>>;

Samples readInBlocks(SimulatedBand& band, size_t count, size_t block) {
  Samples samples(count);
  for (size_t i = 0; i < count; i += block) {
    band.read({samples.data() + i, std::min(block, count - i)});
  }
  return samples;
}

/// Correlation with itself `lag` samples later, per sample; at lag 0 the power.
std::complex<double> correlation(const Samples& samples, size_t lag) {
  std::complex<double> sum;
  for (size_t i = lag; i < samples.size(); ++i) {
    sum += std::complex<double>(samples[i] * std::conj(samples[i - lag]));
  }
  return sum / static_cast<double>(samples.size() - lag);
}

double powerDb(const Samples& samples) {
  return 10 * std::log10(correlation(samples, 0).real());
}

TEST(SimulatedBand, SamplesDependOnSeedIndexAndCentreOnly) {
  for (const bool irregular : {false, true}) {
    const SimulatedBandConfig config{.irregular = irregular};
    SimulatedBand whole(config), pieces(config), elsewhere(config);
    SimulatedBand other_seed({.seed = 2, .irregular = irregular});
    const Samples before = readInBlocks(whole, 7001, 7001);
    EXPECT_EQ(before, readInBlocks(pieces, 7001, 333));
    EXPECT_NE(before, readInBlocks(other_seed, 7001, 7001));
    elsewhere.tune(144.5e6);
    EXPECT_NE(before, readInBlocks(elsewhere, 7001, 7001));
    for (auto* band : {&whole, &pieces, &elsewhere}) EXPECT_EQ(band->tune(145.4e6), kTuneAccepted);
    const Samples after = readInBlocks(whole, 9000, 9000);
    EXPECT_EQ(after, readInBlocks(pieces, 9000, 1));
    EXPECT_EQ(after, readInBlocks(elsewhere, 9000, 4096));
  }
}

TEST(SimulatedBand, RefusesFrequenciesOutOfRangeAndEndsOnTime) {
  SimulatedBand band({.duration_seconds = 0.0100009});
  for (const double hz : {142.9e6, 147.1e6, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(band.tune(hz), kTuneOutOfRange);
    EXPECT_EQ(band.centreHz(), 145e6);
    EXPECT_THROW(SimulatedBand({.centre_hz = hz}), SourceError);
  }
  EXPECT_EQ(band.tune(147e6), kTuneAccepted);  // up to one rate beyond the band
  EXPECT_EQ(band.tune(143e6), kTuneAccepted);
  EXPECT_THROW(SimulatedBand({.low_hz = 146e6, .high_hz = 144e6}), SourceError);
  Samples block(20000);
  EXPECT_EQ(band.read(block), 10000U);
  EXPECT_EQ(band.read(block), 0U);
}

TEST(SimulatedPopulation, FillsTheBandInOrderWithStationsApartAndOnTheirRaster) {
  for (const double width_hz : {0.5e6, 2e6, 6e6, 7e6}) {
    const auto stations = simulatedPopulation(144e6, 144e6 + width_hz);
    const double sets = std::max(1.0, std::round(width_hz / 2e6));
    EXPECT_NEAR(static_cast<double>(stations.size()), 16.0 * sets, width_hz < 1e6 ? 10.0 : sets);
    for (size_t i = 0; i < stations.size(); ++i) {
      const double before_hz = i == 0 ? 144e6 : stations[i - 1].highHz() + 8e3;
      EXPECT_GE(stations[i].lowHz(), before_hz) << stations[i].name;
      const bool is_ssb = stations[i].kind == SimulatedKind::kSsbVoice;
      EXPECT_EQ(std::fmod(stations[i].centre_hz, 5e3), is_ssb ? 1500.0 : 0.0) << stations[i].name;
    }
    EXPECT_GT(stations.back().highHz(), 144e6 + 0.85 * width_hz);
    EXPECT_LT(stations.back().highHz(), 144e6 + width_hz);
  }
  SimulatedStation station;
  station.first_on_seconds = 2.0;
  station.on_seconds = 3.0;
  station.period_seconds = 10.0;
  for (const auto& [seconds, strength] :
       {std::pair(1.0, 0.0), {3.0, 1.0}, {6.0, 0.0}, {13.0, 1.0}, {26.0, 0.0}, {-7.0, 1.0}}) {
    EXPECT_EQ(StationStrength(station).at(seconds), strength) << seconds;
  }
}

Stretches stretchesOf(const SimulatedStation& station, int64_t span_ms) {
  Stretches stretches;
  for (int64_t ms = 0; ms < span_ms; ms = stretches.back().end_ms) {
    stretches.push_back(station.stretchAt(ms));
  }
  return stretches;
}

TEST(IrregularStations, AreTheRegularOnesWithOnAndOffTimesThatAreExponential) {
  const auto regular = simulatedPopulation(144e6, 146e6);
  const auto irregular = simulatedPopulation(144e6, 146e6, 5);
  ASSERT_EQ(irregular.size(), regular.size());
  for (size_t i = 0; i < regular.size(); ++i) {
    SCOPED_TRACE(regular[i].name);
    EXPECT_EQ(irregular[i].name, regular[i].name);
    EXPECT_EQ(irregular[i].centre_hz, regular[i].centre_hz);
    EXPECT_FALSE(regular[i].irregular);
    if (!irregular[i].irregular) continue;
    const double means_s[] = {irregular[i].irregular->meanOffSeconds(),
                              irregular[i].irregular->meanOnSeconds()};
    constexpr int kCycles = 20000;
    const auto span_ms = static_cast<int64_t>(1e3 * kCycles * (means_s[0] + means_s[1]));
    double on_ms = 0, sum_s[2] = {}, lag_sum[2] = {};
    int count[2] = {}, long_ones[2] = {};
    double before_s[2] = {means_s[0], means_s[1]};
    bool was_on = !irregular[i].stretchAt(0).is_on;
    for (const Stretch& stretch : stretchesOf(irregular[i], span_ms)) {
      const double length_s = 1e-3 * static_cast<double>(stretch.end_ms - stretch.begin_ms);
      const bool on = stretch.is_on;
      ASSERT_NE(on, was_on);
      was_on = on;
      if (on) on_ms += 1e3 * length_s;
      sum_s[on] += length_s;
      long_ones[on] += length_s > 2 * means_s[on] ? 1 : 0;
      lag_sum[on] += (length_s / means_s[on] - 1) * (before_s[on] / means_s[on] - 1);
      before_s[on] = length_s;
      ++count[on];
    }
    EXPECT_NEAR(on_ms / static_cast<double>(span_ms), irregular[i].onAir(), 0.012);
    for (const bool on : {false, true}) {  // within four standard deviations or more
      EXPECT_NEAR(sum_s[on] / count[on] / means_s[on], 1.0, 0.03) << on;
      EXPECT_NEAR(1.0 * long_ones[on] / count[on], std::exp(-2.0), 0.01) << on;
      EXPECT_NEAR(lag_sum[on] / count[on], 0.0, 0.04) << on;
    }
  }
}

TEST(IrregularStations, AreAFunctionOfSeedStationAndTimeWhateverIsAskedFirst) {
  const auto stations = simulatedPopulation(144e6, 146e6, 5);
  const auto elsewhere = simulatedPopulation(433e6, 439e6, 5);
  const auto other_seed = simulatedPopulation(144e6, 146e6, 6);
  std::set<int64_t> ends;
  for (size_t i = 0; i < stations.size(); ++i) {
    if (!stations[i].irregular) continue;
    SCOPED_TRACE(stations[i].name);
    // In the third week, and before the start: found at once, and the same from anywhere in it.
    for (const int64_t ms : {int64_t{86'400'000} * 20, int64_t{-7'000'000}}) {
      const Stretch at = stations[i].stretchAt(ms);
      ASSERT_TRUE(at.begin_ms <= ms && ms < at.end_ms);
      for (const int64_t inside : {at.begin_ms, at.end_ms - 1}) {
        EXPECT_EQ(stations[i].stretchAt(inside).begin_ms, at.begin_ms);
        EXPECT_EQ(stations[i].stretchAt(inside).end_ms, at.end_ms);
      }
      EXPECT_EQ(stations[i].stretchAt(at.end_ms).begin_ms, at.end_ms);
      EXPECT_EQ(stations[i].stretchAt(at.begin_ms - 1).end_ms, at.begin_ms);
      EXPECT_TRUE(ends.insert(at.end_ms).second) << "as another station";
      EXPECT_NE(other_seed[i].stretchAt(ms).end_ms, at.end_ms);
    }
    // The first of several sets, whose stations are numbered.
    const auto same = std::find_if(elsewhere.begin(), elsewhere.end(), [&](const auto& station) {
      return station.name == stations[i].name + " 1";
    });
    ASSERT_NE(same, elsewhere.end());
    EXPECT_EQ(same->stretchAt(0).end_ms, stations[i].stretchAt(0).end_ms);
    const auto second = std::find_if(elsewhere.begin(), elsewhere.end(), [&](const auto& station) {
      return station.name == stations[i].name + " 2";
    });
    ASSERT_NE(second, elsewhere.end());
    EXPECT_NE(second->stretchAt(0).end_ms, stations[i].stretchAt(0).end_ms);
  }
}

TEST(SimulatedStation, TruthIsCutToTheRun) {
  const auto lines = [](double first_on_s, double on_s, double period_s) {
    return truthLines({{.name = "x",
                        .centre_hz = 145e6,
                        .first_on_seconds = first_on_s,
                        .on_seconds = on_s,
                        .period_seconds = period_s}},
                      1000, 20'000);
  };
  const auto line = [](int start_ms, int end_ms) {
    return "{\"name\":\"x\",\"centre_hz\":145000000,\"start_unix_ms\":" + std::to_string(start_ms) +
           ",\"end_unix_ms\":" + std::to_string(end_ms) + "}\n";
  };
  EXPECT_EQ(lines(0, 0, 0), line(1000, 21'000));
  EXPECT_EQ(lines(8, 5, 10), line(1000, 4000) + line(9000, 14'000) + line(19'000, 21'000));
  EXPECT_EQ(lines(0, 0.25, 12), line(1000, 1250) + line(13'000, 13'250));
  EXPECT_EQ(lines(20, 5, 100), "");
}

TEST(SimulatedStation, StrengthFollowsItsStretchesWithSlopesAtTheEdges) {
  for (const auto seed : {std::optional<uint64_t>(), std::optional<uint64_t>(3)}) {
    for (const SimulatedStation& station : simulatedPopulation(144e6, 146e6, seed)) {
      SCOPED_TRACE(station.name);
      StationStrength strength(station);
      for (const Stretch& stretch : stretchesOf(station, 60'000)) {
        if (stretch.end_ms > 1'000'000) continue;
        const double begin_s = 1e-3 * static_cast<double>(stretch.begin_ms);
        const double end_s = 1e-3 * static_cast<double>(stretch.end_ms);
        const double whole = stretch.is_on && end_s - begin_s > 2 * kKeySlopeSeconds ? 1.0 : 0.0;
        if (stretch.is_on && whole == 0.0) continue;
        EXPECT_EQ(strength.at(0.5 * (begin_s + end_s)), whole);
        EXPECT_NEAR(strength.at(begin_s + 0.25 * kKeySlopeSeconds), 0.25 * whole, 1e-6);
        EXPECT_NEAR(strength.at(end_s - 0.75 * kKeySlopeSeconds), 0.75 * whole, 1e-6);
      }
    }
  }
}

TEST(ProgrammeLoop, RunsStraightFromPointToPointAndIntegratesThatExactly) {
  const ProgrammeLoop loop = {
      .rate_hz = 2.0, .level = {1, -1, 1, -1}, .integral_s = {0, 0, 0, 0}, .side_band = {}};
  const std::tuple<double, double, double> cases[] = {
      {0.0, 1.0, 0.0},     {0.25, 0.0, 0.125},     {0.375, -0.5, 0.09375}, {0.5, -1.0, 0.0},
      {0.75, 0.0, -0.125}, {1.875, 0.5, -0.09375}, {2.25, 0.0, 0.125}};
  for (const auto& [seconds, level, integral_s] : cases) {
    EXPECT_EQ(loop.levelAt(loop.at(seconds)), level) << seconds;
    EXPECT_EQ(loop.integralAt(loop.at(seconds)), integral_s) << seconds;
  }
}

TEST(SimulatedBand, NoiseIsWhiteAndOfTheStatedPower) {
  SimulatedBand too_narrow_for_stations({.high_hz = 144.01e6, .sample_rate_hz = 2e6});
  const Samples noise = readInBlocks(too_narrow_for_stations, 1 << 18, 4096);
  EXPECT_NEAR(powerDb(noise), kSimulatedNoiseDbfsPerHz + 10 * std::log10(2e6), 0.05);
  for (const size_t lag : {1, 2, 3, 512, 4096}) {
    EXPECT_LT(std::abs(correlation(noise, lag)), 0.01 * correlation(noise, 0).real()) << lag;
  }
}

TEST(SimulatedBand, EachStationHasItsFrequencyWidthAndPowerAndIsSilentWhenOff) {
  constexpr double kRateHz = 2.4e6;
  constexpr size_t kChunk = 4096;
  constexpr size_t kLag = 8;  // short compared with any modulation
  constexpr double kHzPerRadian = kRateHz / (2 * std::numbers::pi * kLag);
  const Programmes programmes(1);
  for (const SimulatedStation& station : simulatedPopulation(144e6, 146e6)) {
    SCOPED_TRACE(station.name);
    const StationSignal signal(station, programmes, 3.0, 1e-11);
    const ReceiverSlice slice{.sample_rate_hz = kRateHz, .centre_hz = station.centre_hz - 21.7e3};
    StationStrength strength(station);
    std::complex<double> turned;
    double power = 0, pairs = 0;
    for (uint64_t first = 0; first < 60 * 2'400'000; first += 99 * kChunk) {
      Samples samples(2 * kChunk);
      signal.addTo({samples.data(), kChunk}, first, slice);
      signal.addTo({samples.data() + kChunk, kChunk}, first + kChunk, slice);
      const double from = strength.at(static_cast<double>(first) / kRateHz);
      const double to = strength.at(static_cast<double>(first + 2 * kChunk) / kRateHz);
      ASSERT_TRUE(from > 0 || to > 0 || samples == Samples(2 * kChunk));
      for (size_t i = kLag; i < samples.size() && from == 1 && to == 1; ++i, ++pairs) {
        power += 0.5 * static_cast<double>(std::norm(samples[i]) + std::norm(samples[i - kLag]));
        turned += std::complex<double>(samples[i] * std::conj(samples[i - kLag]));
      }
    }
    // Keys are up and speakers pause some of the time.
    const bool pauses =
        station.kind == SimulatedKind::kCw || station.kind == SimulatedKind::kSsbVoice;
    const double noise_db = -110 + 10 * std::log10(std::max(station.width_hz, 1e3));
    EXPECT_NEAR(10 * std::log10(power / pairs) - noise_db, station.level_db, pauses ? 5.0 : 0.3);
    // The spectrum's centre of gravity, and its standard deviation about it.
    EXPECT_NEAR(std::arg(turned) * kHzPerRadian, 21.7e3, 0.05 * station.width_hz);
    const double spread_hz = std::sqrt(2 - 2 * std::abs(turned) / power) * kHzPerRadian;
    EXPECT_NEAR(spread_hz, 0.22 * station.width_hz, 0.14 * station.width_hz);
  }
}

TEST(SimulatedBand, StationAtTheSliceEdgeIsFilteredOutRatherThanAliased) {
  for (const double edge_below_hz : {60e3, 20e3, 2e3, 0.0, -5e3, -20e3}) {
    SimulatedBand band({.sample_rate_hz = 250e3, .centre_hz = 145.7e6 - edge_below_hz});
    const double noise_db = kSimulatedNoiseDbfsPerHz + 10 * std::log10(250e3);
    const double above_noise_db = powerDb(readInBlocks(band, 50000, 5000)) - noise_db;
    EXPECT_NEAR(above_noise_db, edge_below_hz > 10e3 ? 28.0 : 0.0, 0.2) << edge_below_hz;
  }
}

}  // namespace
}  // namespace pelagrim_host
