#include <random>
#include <vector>

#include "survey/spectrum.h"

// Takes a hundred frames of noise, for callgrind to count.
int main() {
  constexpr size_t kFrames = 100;
  std::mt19937 random(1);
  std::normal_distribution<float> noise;
  std::vector<float> iq(2 * pelagrim::kSpectrumBins * kFrames);
  for (float& value : iq) value = noise(random);
  pelagrim::Spectrum spectrum;
  spectrum.prepare();
  spectrum.take(iq.data(), pelagrim::kSpectrumBins * kFrames);
  return spectrum.frames == kFrames ? 0 : 1;
}
