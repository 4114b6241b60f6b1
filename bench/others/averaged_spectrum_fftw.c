// The averaged spectrum of a recording on FFTW, and the signals in it, on one thread.
//   averaged_spectrum_fftw FILE.cs16 RATE_HZ CENTRE_HZ
// Prints a line for each signal at the end of each dwell of 5 s: seconds, centre and width in Hz,
// level over the noise in dB.
#include <fftw3.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kBins = 1024, kFramesPerRead = 64 };
static const double kDwellSeconds = 5.0;
static const float kThresholdDb = 12.0F;
static const double kPi = 3.14159265358979323846;

static int ascending(const void* left, const void* right) {
  const float a = *(const float*)left;
  const float b = *(const float*)right;
  return (a > b) - (a < b);
}

/// The signals: runs of two or more bins that stand out of the median by the threshold.
static void print_signals(const float* power, double seconds, double rate_hz, double centre_hz) {
  float levels[kBins], sorted[kBins];
  for (int k = 0; k < kBins; ++k) {
    levels[k] = 10.0F * log10f(power[(k + kBins / 2) % kBins] + 1e-20F);  // lowest first
  }
  memcpy(sorted, levels, sizeof sorted);
  qsort(sorted, kBins, sizeof *sorted, ascending);
  const float floor_db = 0.5F * (sorted[kBins / 2 - 1] + sorted[kBins / 2]);
  const double bin_hz = rate_hz / kBins;
  for (int k = 0; k < kBins; ++k) {
    const int first = k;
    float peak_db = -INFINITY;
    for (; k < kBins && levels[k] > floor_db + kThresholdDb; ++k)
      peak_db = fmaxf(peak_db, levels[k]);
    const int width = k - first;
    if (width < 2) continue;
    const double middle = first + (width - 1) / 2.0 - kBins / 2;
    printf("%.1f %.0f %.0f %.1f\n", seconds, centre_hz + middle * bin_hz, width * bin_hz,
           peak_db - floor_db);
  }
}

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: %s FILE.cs16 RATE_HZ CENTRE_HZ\n", argv[0]);
    return 2;
  }
  FILE* const file = fopen(argv[1], "rb");
  if (file == NULL) {
    perror(argv[1]);
    return 1;
  }
  const double rate_hz = atof(argv[2]);
  const double centre_hz = atof(argv[3]);
  const long frames_per_dwell = (long)(kDwellSeconds * rate_hz / kBins);

  float* const in = fftwf_alloc_real(2 * kBins);  // complex: real and imaginary parts by turns
  float* const out = fftwf_alloc_real(2 * kBins);
  const fftwf_plan plan =
      fftwf_plan_dft_1d(kBins, (fftwf_complex*)in, (fftwf_complex*)out, FFTW_FORWARD, FFTW_MEASURE);
  float window[2 * kBins];
  for (int n = 0; n < kBins; ++n) {
    window[2 * n] = window[2 * n + 1] = (float)(0.5 - 0.5 * cos(2.0 * kPi * n / (kBins - 1)));
  }

  static int16_t samples[kFramesPerRead][2 * kBins];
  float power[kBins] = {0};
  long frames = 0;
  size_t count;
  while ((count = fread(samples, sizeof samples[0], kFramesPerRead, file)) > 0) {
    for (size_t frame = 0; frame < count; ++frame) {
      for (int n = 0; n < 2 * kBins; ++n) in[n] = (float)samples[frame][n] * window[n];
      fftwf_execute(plan);
      for (int k = 0; k < kBins; ++k) {
        power[k] += out[2 * k] * out[2 * k] + out[2 * k + 1] * out[2 * k + 1];
      }
      if (++frames % frames_per_dwell == 0) {
        print_signals(power, (double)frames * kBins / rate_hz, rate_hz, centre_hz);
        memset(power, 0, sizeof power);
      }
    }
  }
  return ferror(file) ? 1 : 0;
}
