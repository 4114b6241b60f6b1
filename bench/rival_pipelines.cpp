#include "bench/rival_pipelines.h"

#include <fftw3.h>
#include <immintrin.h>
#include <kissfft/kiss_fft.h>

#include <complex>
#include <cstddef>
#include <vector>

#include "survey/spectrum.h"

// Must follow <complex>, because liquid takes its complex type from there.
#include <liquid/liquid.h>

namespace pelagrim {

namespace {

void applyWindow(const float* iq, const float* window, float* out) {
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    out[2 * k] = iq[2 * k] * window[k];
    out[2 * k + 1] = iq[2 * k + 1] * window[k];
  }
}

void addPowers(const float* bins, double* power_sum) {
  constexpr size_t kHalf = kSpectrumBins / 2;
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    const size_t bin = (k + kHalf) % kSpectrumBins;
    const auto re = static_cast<double>(bins[2 * bin]);
    const auto im = static_cast<double>(bins[2 * bin + 1]);
    power_sum[k] += re * re + im * im;
  }
}

class FftwPipeline : public FramePipeline {
 public:
  FftwPipeline()
      : in_(fftwf_alloc_complex(kSpectrumBins)),
        out_(fftwf_alloc_complex(kSpectrumBins)),
        plan_(fftwf_plan_dft_1d(kSpectrumBins, in_, out_, FFTW_FORWARD, FFTW_MEASURE)) {}
  ~FftwPipeline() override {
    fftwf_destroy_plan(plan_);
    fftwf_free(out_);
    fftwf_free(in_);
  }
  void addFrame(const float* iq, const float* window, double* power_sum) override {
    applyWindow(iq, window, in());
    fftwf_execute(plan_);
    addPowers(out(), power_sum);
  }

 protected:
  float* in() { return &in_[0][0]; }
  float* out() { return &out_[0][0]; }
  void transform() { fftwf_execute(plan_); }

 private:
  fftwf_complex* in_;
  fftwf_complex* out_;
  fftwf_plan plan_;
};

class TunedFftwPipeline : public FftwPipeline {
 public:
  void addFrame(const float* iq, const float* window, double* power_sum) override {
    applyWindowAvx2(iq, window, in());
    transform();
    constexpr size_t kHalf = kSpectrumBins / 2;
    addPowersAvx2(out() + 2 * kHalf, power_sum);
    addPowersAvx2(out(), power_sum + kHalf);
  }

 private:
  [[gnu::target("avx2")]] static void applyWindowAvx2(const float* iq, const float* window,
                                                      float* out) {
    const __m256i low = _mm256_setr_epi32(0, 0, 1, 1, 2, 2, 3, 3);
    const __m256i high = _mm256_setr_epi32(4, 4, 5, 5, 6, 6, 7, 7);
    for (size_t k = 0; k < kSpectrumBins; k += 8) {
      const __m256 w = _mm256_loadu_ps(window + k);
      const __m256 first = _mm256_loadu_ps(iq + 2 * k);
      const __m256 second = _mm256_loadu_ps(iq + 2 * k + 8);
      _mm256_store_ps(out + 2 * k, _mm256_mul_ps(first, _mm256_permutevar8x32_ps(w, low)));
      _mm256_store_ps(out + 2 * k + 8, _mm256_mul_ps(second, _mm256_permutevar8x32_ps(w, high)));
    }
  }

  /// Half a spectrum.
  [[gnu::target("avx2")]] static void addPowersAvx2(const float* bins, double* power_sum) {
    for (size_t k = 0; k < kSpectrumBins / 2; k += 4) {
      const __m256d a = _mm256_cvtps_pd(_mm_load_ps(bins + 2 * k));
      const __m256d b = _mm256_cvtps_pd(_mm_load_ps(bins + 2 * k + 4));
      const __m256d pairs = _mm256_hadd_pd(_mm256_mul_pd(a, a), _mm256_mul_pd(b, b));
      const __m256d powers = _mm256_permute4x64_pd(pairs, _MM_SHUFFLE(3, 1, 2, 0));
      _mm256_storeu_pd(power_sum + k, _mm256_add_pd(_mm256_loadu_pd(power_sum + k), powers));
    }
  }
};

class KissFftPipeline : public FramePipeline {
 public:
  KissFftPipeline() : plan_(kiss_fft_alloc(kSpectrumBins, 0, nullptr, nullptr)) {}
  ~KissFftPipeline() override { kiss_fft_free(plan_); }
  void addFrame(const float* iq, const float* window, double* power_sum) override {
    applyWindow(iq, window, &in_[0].r);
    kiss_fft(plan_, in_.data(), out_.data());
    addPowers(&out_[0].r, power_sum);
  }

 private:
  kiss_fft_cfg plan_;
  std::vector<kiss_fft_cpx> in_ = std::vector<kiss_fft_cpx>(kSpectrumBins);
  std::vector<kiss_fft_cpx> out_ = std::vector<kiss_fft_cpx>(kSpectrumBins);
};

class LiquidPipeline : public FramePipeline {
 public:
  LiquidPipeline()
      : plan_(fft_create_plan(kSpectrumBins, in_.data(), out_.data(), LIQUID_FFT_FORWARD, 0)) {}
  ~LiquidPipeline() override { fft_destroy_plan(plan_); }
  void addFrame(const float* iq, const float* window, double* power_sum) override {
    applyWindow(iq, window, reinterpret_cast<float*>(in_.data()));
    fft_execute(plan_);
    addPowers(reinterpret_cast<float*>(out_.data()), power_sum);
  }

 private:
  std::vector<std::complex<float>> in_ = std::vector<std::complex<float>>(kSpectrumBins);
  std::vector<std::complex<float>> out_ = std::vector<std::complex<float>>(kSpectrumBins);
  fftplan plan_;
};

}  // namespace

std::unique_ptr<FramePipeline> makeFftwPipeline() {
  return std::make_unique<FftwPipeline>();
}

std::unique_ptr<FramePipeline> makeTunedFftwPipeline() {
  return std::make_unique<TunedFftwPipeline>();
}

std::unique_ptr<FramePipeline> makeKissFftPipeline() {
  return std::make_unique<KissFftPipeline>();
}

std::unique_ptr<FramePipeline> makeLiquidPipeline() {
  return std::make_unique<LiquidPipeline>();
}

}  // namespace pelagrim
