// A receiver for measurements, as a module for SoapySDR: it sends 16-bit samples at exactly the
// rate asked for, keeps 50 ms of them as a driver does, and loses what is not read by then. At the
// end it says how many that were, apart from those before the first read, when nobody listened yet.
// `signals` in its arguments is the number of carriers in each slice.
#include <SoapySDR/Device.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Registry.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kLoopSamples = 1 << 20;
constexpr size_t kTransferSamples = 16384;
constexpr double kBufferSeconds = 0.05;

/// Noise with carriers on whole bins, so that the end fits the beginning.
std::vector<int16_t> samplesWith(int signals) {
  std::mt19937 random(1);
  std::normal_distribution<float> noise(0.0F, 300.0F);
  std::vector<int16_t> samples(2 * kLoopSamples);
  std::vector<float> sum(2 * kLoopSamples);
  for (float& part : sum) part = noise(random);
  for (int k = 0; k < signals; ++k) {
    const double bin = (k + 0.5) / signals - 0.5;
    const double step = 2.0 * std::numbers::pi * std::round(bin * kLoopSamples) / kLoopSamples;
    const std::complex<double> turn = std::polar(1.0, step);
    std::complex<double> carrier = 200.0;
    for (size_t i = 0; i < kLoopSamples; ++i) {
      sum[2 * i] += static_cast<float>(carrier.real());
      sum[2 * i + 1] += static_cast<float>(carrier.imag());
      carrier *= turn;
    }
  }
  for (size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<int16_t>(std::clamp(sum[i], -32768.0F, 32767.0F));
  }
  return samples;
}

class PacedReceiver : public SoapySDR::Device {
 public:
  explicit PacedReceiver(const SoapySDR::Kwargs& args)
      : loop_(samplesWith(args.count("signals") ? std::atoi(args.at("signals").c_str()) : 20)) {}

  size_t getNumChannels(int) const override { return 1; }
  std::vector<std::string> getStreamFormats(int, size_t) const override { return {SOAPY_SDR_CS16}; }
  std::string getNativeStreamFormat(int, size_t, double& full_scale) const override {
    full_scale = 32768.0;
    return SOAPY_SDR_CS16;
  }
  SoapySDR::Stream* setupStream(int, const std::string&, const std::vector<size_t>&,
                                const SoapySDR::Kwargs&) override {
    return reinterpret_cast<SoapySDR::Stream*>(this);
  }
  int activateStream(SoapySDR::Stream*, int, long long, size_t) override {
    begun_ = Clock::now();
    return 0;
  }
  int deactivateStream(SoapySDR::Stream*, int, long long) override { return 0; }
  void closeStream(SoapySDR::Stream*) override {
    std::fprintf(stderr, "receiver: sent %llu samples, lost %llu, before the first read %llu\n",
                 static_cast<unsigned long long>(sent_),
                 static_cast<unsigned long long>(lost_ - lost_before_),
                 static_cast<unsigned long long>(lost_before_));
  }
  size_t getStreamMTU(SoapySDR::Stream*) const override { return kTransferSamples; }
  size_t getNumDirectAccessBuffers(SoapySDR::Stream*) override {
    return static_cast<size_t>(kBufferSeconds * rate_hz_) / kTransferSamples + 1;
  }

  int readStream(SoapySDR::Stream*, void* const* buffers, size_t count, int&, long long&,
                 long timeout_us) override {
    const uint64_t max_waiting = static_cast<uint64_t>(kBufferSeconds * rate_hz_);
    uint64_t waiting = received() - sent_ - lost_;
    if (waiting > max_waiting + kTransferSamples) {
      lost_ += waiting;
      if (sent_ == 0) lost_before_ = lost_;
      return SOAPY_SDR_OVERFLOW;
    }
    const size_t wanted = std::min(count, kTransferSamples);
    if (waiting < wanted) {
      const double missing_seconds = static_cast<double>(wanted - waiting) / rate_hz_;
      const double patience_seconds = 1e-6 * static_cast<double>(timeout_us);
      std::this_thread::sleep_for(
          std::chrono::duration<double>(std::min(missing_seconds, patience_seconds)));
      waiting = received() - sent_ - lost_;
      if (waiting < wanted) return SOAPY_SDR_TIMEOUT;
    }
    auto* out = static_cast<int16_t*>(buffers[0]);
    for (size_t left = wanted; left > 0;) {
      const size_t here = sent_ % kLoopSamples;
      const size_t run = std::min(left, kLoopSamples - here);
      std::memcpy(out, &loop_[2 * here], 4 * run);
      out += 2 * run;
      sent_ += run;
      left -= run;
    }
    return static_cast<int>(wanted);
  }

  void setFrequency(int, size_t, double hz, const SoapySDR::Kwargs&) override { hz_ = hz; }
  double getFrequency(int, size_t) const override { return hz_; }
  SoapySDR::RangeList getFrequencyRange(int, size_t) const override { return {{1e6, 6e9}}; }
  void setSampleRate(int, size_t, double rate_hz) override { rate_hz_ = rate_hz; }
  double getSampleRate(int, size_t) const override { return rate_hz_; }

 private:
  uint64_t received() const {
    const std::chrono::duration<double> elapsed = Clock::now() - begun_;
    return static_cast<uint64_t>(elapsed.count() * rate_hz_);
  }

  std::vector<int16_t> loop_;
  double rate_hz_ = 2.4e6;
  double hz_ = 100e6;
  Clock::time_point begun_;
  uint64_t sent_ = 0;
  uint64_t lost_ = 0;
  uint64_t lost_before_ = 0;  ///< of those, before the first read
};

SoapySDR::KwargsList findPaced(const SoapySDR::Kwargs& args) {
  if (!args.count("driver") || args.at("driver") != "paced") return {};
  return {{{"driver", "paced"}, {"label", "paced receiver"}}};
}

SoapySDR::Device* makePaced(const SoapySDR::Kwargs& args) {
  return new PacedReceiver(args);
}

const SoapySDR::Registry registration("paced", &findPaced, &makePaced, SOAPY_SDR_ABI_VERSION);

}  // namespace
