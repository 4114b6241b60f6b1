#include "survey/spectrum_kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "survey/spectrum.h"
#include "tests/survey/plain_recurrence.h"

namespace pelagrim {
namespace {

constexpr size_t kFrame = 2 * kSpectrumBins;  // floats
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

using Powers = std::vector<double>;
using Samples = std::vector<float>;

/// Same bits, except that any value that is not a number matches any other.
void expectSame(const Powers& expected, const Powers& actual, const std::string& what) {
  for (size_t k = 0; k < expected.size(); ++k) {
    if (std::isnan(expected[k]) && std::isnan(actual[k])) continue;
    ASSERT_EQ(std::bit_cast<uint64_t>(expected[k]), std::bit_cast<uint64_t>(actual[k]))
        << what << ", entry " << k << ": " << expected[k] << " became " << actual[k];
  }
}

struct Form {
  const char* lanes;
  void (*add_frame_power)(const float*, const float*, double*) noexcept;
  bool (*runs_here)() noexcept;
};

class SpectrumKernel : public testing::TestWithParam<Form> {
 protected:
  void SetUp() override {
    if (!GetParam().runs_here()) GTEST_SKIP() << "no vectors of " << GetParam().lanes << " here";
    spectrum.prepare();
  }

  void expectPlainPowers(std::span<const float> iq, const std::string& what) {
    Powers expected(kSpectrumBins, 0.5);
    Powers actual = expected;
    for (; !iq.empty(); iq = iq.subspan(kFrame)) {
      plain::addFramePower(iq.data(), spectrum.window.data(), expected.data());
      GetParam().add_frame_power(iq.data(), spectrum.window.data(), actual.data());
    }
    expectSame(expected, actual, what);
  }

  Spectrum spectrum;
};

Samples frames(size_t count, const std::function<float(size_t)>& value) {
  Samples iq(kFrame * count);
  for (size_t n = 0; n < iq.size(); ++n) iq[n] = value(n);
  return iq;
}

TEST_P(SpectrumKernel, GivesThePowersOfThePlainRecurrenceToTheBit) {
  std::mt19937 random(1);
  std::normal_distribution<float> noise;
  std::uniform_int_distribution<int> byte(-128, 127);
  std::uniform_int_distribution<int> exponent(-100, 100);
  const std::vector<std::pair<const char*, std::function<float(size_t)>>> inputs = {
      {"noise", [&](size_t) { return noise(random); }},
      {"a tone", [](size_t n) { return std::sin(0.0617F * static_cast<float>(n + n % 2 * 25)); }},
      {"8 bits", [&](size_t) { return static_cast<float>(byte(random)) / 128.0F; }},
      {"silence", [](size_t) { return 0.0F; }},
      {"negative zeros", [](size_t) { return -0.0F; }},
      {"zeros of both signs", [&](size_t) { return byte(random) < 0 ? -0.0F : 0.0F; }},
      {"denormals", [&](size_t) { return static_cast<float>(byte(random)) * kSmallest; }},
      {"1e37", [&](size_t) { return std::clamp(noise(random), -3.0F, 3.0F) * 1e37F; }},
      {"1e-37", [&](size_t) { return noise(random) * 1e-37F; }},
      {"2^-100 to 2^100", [&](size_t) { return std::ldexp(noise(random), exponent(random)); }},
  };
  for (const auto& [name, value] : inputs) expectPlainPowers(frames(5, value), name);
}

TEST_P(SpectrumKernel, KeepsTheClassOfEveryPowerForSamplesThatAreNotFiniteOrOverflow) {
  std::mt19937 random(2);
  std::normal_distribution<float> noise;
  Samples iq = frames(1, [&](size_t) { return noise(random); });
  for (size_t n = 0; n < iq.size(); n += n < 32 || n % 32 > 0 ? 1 : 31) {
    for (const float odd : {kInfinity, -kInfinity, kNan}) {
      const float even = std::exchange(iq[n], odd);
      expectPlainPowers(iq, std::to_string(odd) + " at " + std::to_string(n));
      iq[n] = even;
    }
  }
  expectPlainPowers(frames(9, [&](size_t) { return noise(random) * kLargest; }), "overflow");
  expectPlainPowers(frames(9, [](size_t n) { return n % 3 == 0 ? kLargest : -kLargest; }), "steps");
}

TEST_P(SpectrumKernel, KeepsTheClassOfEveryPowerWhereFiniteSamplesOverflowInOneOfTheFirstStages) {
  std::fill(spectrum.window.begin(), spectrum.window.end(), 1.0F);
  Samples iq(kFrame);
  // Few bits set in n mean few multiplications after these stages, so that the classes stay apart.
  for (const size_t distance : {512U, 256U, 128U, 64U}) {
    for (size_t n = 0; n < kSpectrumBins - distance; n += 16) {
      for (const float partner : {kLargest, -kLargest}) {
        for (const size_t part : {0U, 1U}) {
          iq[2 * n + part] = kLargest;
          iq[2 * (n + distance) + part] = partner;
          expectPlainPowers(iq, std::to_string(n) + " and " + std::to_string(distance) + " on");
          std::fill(iq.begin(), iq.end(), 0.0F);
        }
      }
    }
  }
}

TEST_P(SpectrumKernel, TakesSamplesAlignedToFourBytes) {
  std::mt19937 random(3);
  std::normal_distribution<float> noise;
  const Samples iq = frames(2, [&](size_t) { return noise(random); });
  for (size_t shift = 1; shift < 16; ++shift) {
    expectPlainPowers({&iq[shift], kFrame}, "shifted by " + std::to_string(shift));
  }
}

INSTANTIATE_TEST_SUITE_P(Lanes, SpectrumKernel,
                         testing::Values(Form{"4", addFramePower4, []() noexcept { return true; }},
                                         Form{"8", addFramePower8, hasAddFramePower8},
                                         Form{"16", addFramePower16, hasAddFramePower16}),
                         [](const auto& run) { return run.param.lanes; });

TEST(Spectrum, WindowIsASymmetricHannWindow) {
  Spectrum spectrum;
  spectrum.prepare();
  const std::pair<size_t, float> literals[] = {
      {0, 0.0F}, {1, 9.430769e-06F}, {100, 0.09138035F}, {256, 0.50076777F}, {511, 0.99999762F}};
  for (const auto& [i, value] : literals) {
    EXPECT_FLOAT_EQ(spectrum.window[i], value) << i;
    EXPECT_FLOAT_EQ(spectrum.window[1023 - i], value) << i;
  }
}

TEST(Spectrum, CutsAStreamIntoFramesWhateverTheSizeOfItsBlocks) {
  std::mt19937 random(4);
  std::normal_distribution<float> noise;
  const std::vector<size_t> blocks = {0,    1,    2, 1023,  1024,   1025,   2047, 2500, 0,
                                      4096, 3333, 7, 65536, 100001, 262144, 512,  1536};
  Spectrum spectrum;
  spectrum.prepare();
  Samples iq;
  Powers expected(kSpectrumBins);
  size_t compared = 0;
  for (const size_t n : blocks) {
    const size_t start = iq.size();
    std::generate_n(std::back_inserter(iq), 2 * n, [&] { return noise(random); });
    spectrum.take(iq.data() + start, n);
    for (; (compared + 1) * kFrame <= iq.size(); ++compared) {
      plain::addFramePower(&iq[compared * kFrame], spectrum.window.data(), expected.data());
    }
    ASSERT_EQ(spectrum.frames, compared);
    ASSERT_EQ(spectrum.fill, iq.size() / 2 % kSpectrumBins);
    expectSame(expected, spectrum.power_sum, "after a block of " + std::to_string(n));
  }
}

}  // namespace
}  // namespace pelagrim
