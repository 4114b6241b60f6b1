// Writes the simulated band to standard output as 16-bit samples.
//   record_simulated_band RATE_HZ SECONDS >FILE.cs16
#include <algorithm>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "host/simulation/simulated_band.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: %s RATE_HZ SECONDS >FILE.cs16\n", argv[0]);
    return 2;
  }
  pelagrim_host::SimulatedBandConfig config;
  config.sample_rate_hz = std::atof(argv[1]);
  config.duration_seconds = std::atof(argv[2]);
  pelagrim_host::SimulatedBand band(config);
  std::vector<std::complex<float>> samples(65536);
  std::vector<int16_t> parts(2 * samples.size());
  const auto rounded = [](float part) {
    return static_cast<int16_t>(std::clamp(part * 32768.0F, -32768.0F, 32767.0F));
  };
  while (const size_t count = band.read(samples)) {
    for (size_t i = 0; i < count; ++i) {
      parts[2 * i] = rounded(samples[i].real());
      parts[2 * i + 1] = rounded(samples[i].imag());
    }
    if (std::fwrite(parts.data(), 4, count, stdout) != count) {
      std::perror("cannot write the recording");
      return 1;
    }
  }
  return std::fflush(stdout) == 0 ? 0 : 1;
}
