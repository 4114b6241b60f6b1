// Prints the results of the sample path and of a survey, for scripts/check-compilers to compare:
// one hash of many power sums for each form of the kernel, then everything that a scripted run
// through the boundary says and saves. The samples are made from integers, so they are the same
// everywhere.
#include <bit>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

#include "survey/spectrum.h"
#include "survey/spectrum_kernel.h"
#include "tests/support/plugin_host.h"

namespace {

uint32_t random32() {
  static uint64_t state = 88172645463325252;
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return static_cast<uint32_t>(state >> 32);
}

float noise() {
  return static_cast<float>(static_cast<int32_t>(random32())) * 0x1p-34F;
}

/// FNV-1a over the bits; everything that is not a number counts as the same.
uint64_t hashOf(const std::vector<double>& values) {
  uint64_t hash = 14695981039346656037U;
  for (const double value : values) {
    const double counted = std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
    for (int byte = 0; byte < 64; byte += 8) {
      hash = (hash ^ (std::bit_cast<uint64_t>(counted) >> byte & 0xFF)) * 1099511628211U;
    }
  }
  return hash;
}

/// Frames of noise at many levels, and of arbitrary bits, each summed on its own.
void printKernel(const char* name, void (*add)(const float*, const float*, double*) noexcept,
                 const std::vector<float>& samples) {
  pelagrim::Spectrum spectrum;
  spectrum.prepare();
  std::vector<double> sums;
  for (size_t at = 0; at < samples.size(); at += 2 * pelagrim::kSpectrumBins) {
    std::vector<double> sum(pelagrim::kSpectrumBins);
    add(&samples[at], spectrum.window.data(), sum.data());
    sums.insert(sums.end(), sum.begin(), sum.end());
  }
  std::printf("%s: %016" PRIx64 "\n", name, hashOf(sums));
}

void printKernels() {
  std::vector<float> samples;
  for (int frame = 0; frame < 2000; ++frame) {
    for (size_t i = 0; i < 2 * pelagrim::kSpectrumBins; ++i) {
      samples.push_back(frame % 8 == 7 ? std::bit_cast<float>(random32())
                                       : std::ldexp(noise(), frame % 256 - 128));
    }
  }
  printKernel("chosen", pelagrim::addFramePower, samples);
  printKernel("4 lanes", pelagrim::addFramePower4, samples);
  if (__builtin_cpu_supports("avx2")) printKernel("8 lanes", pelagrim::addFramePower8, samples);
}

/// Noise with square waves in quadrature, whose periods change from dwell to dwell.
Samples signals(size_t dwell) {
  Samples samples(100'003);
  for (size_t n = 0; n < samples.size(); ++n) {
    samples[n] = {noise(), noise()};
    for (const size_t period : {size_t{24}, size_t{52}, 152 + 4 * (dwell % 3)}) {
      const size_t quarter = n % period * 4 / period;
      const float level = static_cast<float>(period) * 0x1p-10F;
      samples[n] += std::complex<float>(quarter < 2 ? level : -level,
                                        quarter == 0 || quarter == 3 ? level : -level);
    }
  }
  return samples;
}

void printSurvey() {
  PluginHost host;
  host.dir.write("survey.cfg", "start=144e6\nstop=146e6\ndwell_seconds=1\nthreshold_db=9\n");
  host.create(1e6, 144.5e6);
  for (size_t dwell = 0; dwell < 12; ++dwell) {
    host.processUntil(host.now_ms + 1100, signals(dwell));
    host.iq->retune(host.handle, host.tuned_hz.back());
    for (const auto& line : host.lines()) std::printf("%s\n", line.c_str());
  }
  for (const auto& row : host.rows()) {
    for (const auto& cell : row) std::printf("%s|", cell.c_str());
    std::printf("\n");
  }
  std::printf("%s", host.dir.read("survey.csv").c_str());
}

}  // namespace

int main() {
  printKernels();
  printSurvey();
}
