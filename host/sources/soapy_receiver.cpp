// A live receiver as a source: its centre, and the samples dropped after a tune.
#include "host/sources/soapy_receiver.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <vector>

#include "host/sources/soapy_device.h"
#include "host/sources/soapy_setup.h"
#include "host/sources/soapy_stream.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

class SoapyReceiver final : public IqSource {
 public:
  explicit SoapyReceiver(const ReceiverConfig& config);

  std::string name() const override { return config_.device; }
  double sampleRateHz() const override { return rate_hz_; }
  double centreHz() const override { return centre_hz_; }
  bool isLive() const override { return true; }
  bool canTune() const override { return true; }
  uint64_t overflows() const override { return stream_->overflows(); }
  SampleLayout layout() const override { return stream_->layout(); }
  size_t readNative(std::span<std::byte> bytes) override;
  size_t read(std::span<std::complex<float>> block) override {
    return readConverted(block, native_);
  }
  void settle() override;
  WendleTuneResult tune(double hz) override;

 private:
  double readBackCentre(double otherwise_hz) const;
  double deviceHz(double hz) const { return hz / correction_; }
  bool isTunable(double hz) const;

  ReceiverConfig config_;
  SoapyDevice device_;
  std::optional<SoapyStream> stream_;  ///< set from the constructor on
  double rate_hz_ = 0.0;
  double centre_hz_ = 0.0;
  double correction_ = 1.0;  ///< true frequency over the device's: what it cannot correct
  SoapySDR::RangeList tuning_ranges_;
  bool needs_settling_ = true;
  std::vector<std::byte> native_;
};

SoapyReceiver::SoapyReceiver(const ReceiverConfig& config)
    : config_(config), device_(openSoapyDevice(config_)) {
  chooseAntenna(*device_, config_);
  correction_ = correctCrystal(*device_, config_);
  rate_hz_ = setSampleRate(*device_, config_);
  setBandwidth(*device_, config_);
  tuning_ranges_ = tuningRanges(*device_, config_, deviceHz(config_.centre_hz));
  attempt(config_, "--frequency", [this] {
    centre_hz_ = readBackCentre(config_.centre_hz);
    if (tune(config_.centre_hz) != kTuneAccepted) {
      fail(config_, "--frequency: out of the device's range");
    }
  });
  setGain(*device_, config_);
  removeDcOffset(*device_, config_);
  attempt(config_, "cannot start the stream", [this] { stream_.emplace(*device_, config_); });
}

bool SoapyReceiver::isTunable(double hz) const {
  const double device_hz = deviceHz(hz);
  if (!std::isfinite(device_hz)) return false;
  return tuning_ranges_.empty() || isWithin(tuning_ranges_, device_hz, kSlackHz);
}

/// The centre that the device reports; `otherwise_hz` if it does not report one or means that.
double SoapyReceiver::readBackCentre(double otherwise_hz) const {
  const double actual_hz = device_->getFrequency(kRx, kChannel) * correction_;
  const bool is_known = std::isfinite(actual_hz) && actual_hz > 0.0;
  return is_known && std::abs(actual_hz - otherwise_hz) > kSlackHz ? actual_hz : otherwise_hz;
}

WendleTuneResult SoapyReceiver::tune(double hz) {
  if (!isTunable(hz)) return kTuneOutOfRange;
  const double before_hz = centre_hz_;
  std::string refusal;
  try {
    device_->setFrequency(kRx, kChannel, deviceHz(hz));
    centre_hz_ = readBackCentre(hz);
  } catch (const std::exception& failure) {
    refusal = failure.what();
  } catch (...) {
    refusal = kNoReason;
  }
  // Synthesisers move in steps, but one that is far off has not obeyed.
  if (refusal.empty() && std::abs(centre_hz_ - hz) > 0.1 * rate_hz_) {
    refusal = fmt::format("the device stays at {}", formatFrequency(centre_hz_));
  }
  // A refusal may leave the device anywhere, but its samples must still get the right centre.
  if (!refusal.empty()) {
    centre_hz_ =
        attempt(config_, "reading the frequency", [&] { return readBackCentre(before_hz); });
  }
  needs_settling_ = needs_settling_ || refusal.empty() || centre_hz_ != before_hz;
  if (!refusal.empty()) fail(config_, refusal);
  return kTuneAccepted;
}

void SoapyReceiver::settle() {
  if (!needs_settling_) return;
  stream_->drain(static_cast<size_t>(rate_hz_));
  // The buffer that was being filled when the device moved holds samples from before.
  auto left = stream_->bufferSamples() + static_cast<size_t>(config_.settle_seconds * rate_hz_);
  const size_t sample_bytes = layout().sampleBytes();
  std::vector<std::byte> dropped(stream_->bufferSamples() * sample_bytes);
  while (left > 0) {
    const auto room = std::min(left * sample_bytes, dropped.size());
    const size_t got = stream_->read(std::span(dropped).first(room));
    if (got == 0) return;
    left -= got;
  }
  needs_settling_ = false;
}

size_t SoapyReceiver::readNative(std::span<std::byte> bytes) {
  settle();
  return stream_->read(bytes);
}

}  // namespace

std::unique_ptr<IqSource> openReceiver(const ReceiverConfig& config) {
  return std::make_unique<SoapyReceiver>(config);
}

}  // namespace pelagrim_host
