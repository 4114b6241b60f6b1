#include "host/simulation/simulated_band.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>

namespace pelagrim_host {
namespace {

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
  SimulatedBand whole({}), pieces({}), elsewhere({}), other_seed({.seed = 2});
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
    EXPECT_EQ(station.strengthAt(seconds), strength) << seconds;
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
    std::complex<double> turned;
    double power = 0, pairs = 0;
    for (uint64_t first = 0; first < 60 * 2'400'000; first += 99 * kChunk) {
      Samples samples(2 * kChunk);
      signal.addTo({samples.data(), kChunk}, first, slice);
      signal.addTo({samples.data() + kChunk, kChunk}, first + kChunk, slice);
      const double from = station.strengthAt(static_cast<double>(first) / kRateHz);
      const double to = station.strengthAt(static_cast<double>(first + 2 * kChunk) / kRateHz);
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
