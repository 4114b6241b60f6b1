#include "host/sources/soapy_receiver.h"

#include <fmt/format.h>

#include <SoapySDR/Device.hpp>
#include <SoapySDR/Errors.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Logger.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <thread>

#include "host/sources/sample_format.h"
#include "host/text/letter_case.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr int kRx = SOAPY_SDR_RX;
constexpr size_t kChannel = 0;
constexpr double kSlackHz = 0.5;  // of a rate or frequency: limits and read-backs are rounded

using RangeText = std::string (*)(double);

bool isWithin(const SoapySDR::RangeList& ranges, double value, double slack) {
  return std::any_of(ranges.begin(), ranges.end(), [=](const SoapySDR::Range& range) {
    return value >= range.minimum() - slack && value <= range.maximum() + slack;
  });
}

/// "225 kS/s to 300 kS/s, 2.4 MS/s"
std::string rangesText(const SoapySDR::RangeList& ranges, RangeText text) {
  std::string all;
  for (const SoapySDR::Range& range : ranges) {
    if (!all.empty()) all += ", ";
    all += text(range.minimum());
    if (range.maximum() > range.minimum()) all += " to " + text(range.maximum());
  }
  return all;
}

std::string decibelsText(double value_db) {
  return fmt::format("{:g} dB", value_db);
}

/// The drivers' chatter about what they do would run into the display; warnings stay. Whoever asks
/// SoapySDR for more by its environment variable gets it.
void quietDrivers() {
  if (std::getenv("SOAPY_SDR_LOG_LEVEL") == nullptr) SoapySDR::setLogLevel(SOAPY_SDR_WARNING);
}

/// How the stream's samples become floats.
struct StreamFormat {
  std::string name;             ///< as SoapySDR spells it
  const SampleFormat* convert;  ///< null: complex floats, read in place
  float scale;                  ///< brings the device's full scale to 1.0 after the conversion
};

class SoapyReceiver final : public IqSource {
 public:
  explicit SoapyReceiver(const ReceiverConfig& config);
  ~SoapyReceiver() override;

  std::string name() const override { return config_.device; }
  double sampleRateHz() const override { return rate_hz_; }
  double centreHz() const override { return centre_hz_; }
  bool isLive() const override { return true; }
  bool canTune() const override { return true; }
  uint64_t overflows() const override { return overflows_; }
  size_t read(std::span<std::complex<float>> block) override;
  void settle() override;
  WendleTuneResult tune(double hz) override;

 private:
  using Clock = std::chrono::steady_clock;
  struct Unmake {
    void operator()(SoapySDR::Device* device) const noexcept;
  };
  struct CloseStream {
    SoapySDR::Device* device;
    void operator()(SoapySDR::Stream* stream) const noexcept;
  };

  [[noreturn]] void fail(const std::string& what) const {
    throw SourceError(fmt::format("{}: {}", config_.device, what));
  }
  /// Runs a driver call; whatever it throws becomes a SourceError that says what was attempted.
  template <typename Call>
  auto attempt(const char* what, Call call) const {
    try {
      return call();
    } catch (const SourceError&) {
      throw;
    } catch (const std::exception& failure) {
      fail(fmt::format("{}: {}", what, failure.what()));
    }
  }
  void require(const SoapySDR::RangeList& ranges, double value, double slack, const char* option,
               RangeText text) const;

  void chooseAntenna();
  void correctCrystal();
  void setRate();
  void setBandwidth();
  void setGain();
  void startStream();
  StreamFormat chooseFormat() const;
  double readBackCentre(double otherwise_hz) const;
  double deviceHz(double hz) const { return hz / correction_; }
  bool isTunable(double hz) const;

  int readStream(std::span<std::complex<float>> block, std::chrono::microseconds timeout);
  size_t waitForSamples(std::span<std::complex<float>> block);
  void drainDriver();

  ReceiverConfig config_;
  std::unique_ptr<SoapySDR::Device, Unmake> device_;
  std::unique_ptr<SoapySDR::Stream, CloseStream> stream_{nullptr, {nullptr}};
  StreamFormat format_{};
  std::vector<std::byte> raw_;
  size_t mtu_samples_ = 0;
  double rate_hz_ = 0.0;
  double centre_hz_ = 0.0;
  double correction_ =
      1.0;  ///< true frequency per frequency of the device, for what it corrects not
  SoapySDR::RangeList tuning_ranges_;
  bool needs_settling_ = true;
  uint64_t overflows_ = 0;
};

void SoapyReceiver::Unmake::operator()(SoapySDR::Device* device) const noexcept {
  try {
    SoapySDR::Device::unmake(device);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): it is gone either way
  }
}

void SoapyReceiver::CloseStream::operator()(SoapySDR::Stream* stream) const noexcept {
  try {
    device->closeStream(stream);
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): an unplugged device may object
  }
}

SoapyReceiver::SoapyReceiver(const ReceiverConfig& config) : config_(config) {
  quietDrivers();
  device_.reset(attempt("cannot open the receiver (--list-devices shows what there is)",
                        [this] { return SoapySDR::Device::make(config_.device); }));
  if (device_ == nullptr) fail("cannot open the receiver; --list-devices shows what there is");
  if (device_->getNumChannels(kRx) == 0) fail("the device cannot receive");

  attempt("--antenna", [this] { chooseAntenna(); });
  attempt("--ppm", [this] { correctCrystal(); });
  attempt("--sample-rate", [this] { setRate(); });
  attempt("--bandwidth", [this] { setBandwidth(); });
  attempt("--frequency", [this] {
    tuning_ranges_ = device_->getFrequencyRange(kRx, kChannel);
    require(tuning_ranges_, deviceHz(config_.centre_hz), kSlackHz, "--frequency", formatFrequency);
    centre_hz_ = readBackCentre(config_.centre_hz);
    if (tune(config_.centre_hz) != kTuneAccepted) fail("--frequency: out of the device's range");
  });
  attempt("--gain", [this] { setGain(); });
  attempt("DC offset correction", [this] {
    if (device_->hasDCOffsetMode(kRx, kChannel)) device_->setDCOffsetMode(kRx, kChannel, true);
  });
  attempt("cannot start the stream", [this] { startStream(); });
}

SoapyReceiver::~SoapyReceiver() {
  if (stream_ == nullptr) return;
  try {
    device_->deactivateStream(stream_.get());
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): an unplugged device may object
  }
}

void SoapyReceiver::require(const SoapySDR::RangeList& ranges, double value, double slack,
                            const char* option, RangeText text) const {
  if (ranges.empty() || isWithin(ranges, value, slack)) return;
  fail(fmt::format("{}: the device cannot do {}; it offers {}", option, text(value),
                   rangesText(ranges, text)));
}

void SoapyReceiver::chooseAntenna() {
  if (config_.antenna.empty()) return;
  const auto antennas = device_->listAntennas(kRx, kChannel);
  if (std::find(antennas.begin(), antennas.end(), config_.antenna) == antennas.end()) {
    fail(fmt::format(
        "--antenna: there is no '{}'; the device has {}", config_.antenna,
        antennas.empty() ? "none to choose" : fmt::format("{}", fmt::join(antennas, ", "))));
  }
  device_->setAntenna(kRx, kChannel, config_.antenna);
}

void SoapyReceiver::correctCrystal() {
  double left_ppm = config_.ppm;
  if (device_->hasFrequencyCorrection(kRx, kChannel)) {
    device_->setFrequencyCorrection(kRx, kChannel, config_.ppm);
    left_ppm -= device_->getFrequencyCorrection(kRx, kChannel);
    // Some drivers take whole numbers. More than a fraction is left where one cannot tell.
    if (!(std::abs(left_ppm) < 1.0)) left_ppm = 0.0;
  }
  correction_ = 1.0 + 1e-6 * left_ppm;
}

void SoapyReceiver::setRate() {
  require(device_->getSampleRateRange(kRx, kChannel), config_.sample_rate_hz, kSlackHz,
          "--sample-rate", formatSampleRate);
  device_->setSampleRate(kRx, kChannel, config_.sample_rate_hz);
  const double actual_hz = device_->getSampleRate(kRx, kChannel);
  rate_hz_ = std::isfinite(actual_hz) && actual_hz > 0.0 ? actual_hz : config_.sample_rate_hz;
}

void SoapyReceiver::setBandwidth() {
  if (!config_.bandwidth_hz) return;
  const auto ranges = device_->getBandwidthRange(kRx, kChannel);
  if (ranges.empty()) fail("--bandwidth: the device's filter cannot be set; leave the option out");
  require(ranges, *config_.bandwidth_hz, kSlackHz, "--bandwidth", formatFrequency);
  device_->setBandwidth(kRx, kChannel, *config_.bandwidth_hz);
}

void SoapyReceiver::setGain() {
  if (!config_.gain) return;
  const bool has_mode = device_->hasGainMode(kRx, kChannel);
  const auto overall = device_->getGainRange(kRx, kChannel);
  if (config_.gain->automatic && !has_mode) {
    fail(fmt::format("--gain: the device has no automatic gain; give {}",
                     rangesText({overall}, decibelsText)));
  }
  if (has_mode) device_->setGainMode(kRx, kChannel, config_.gain->automatic);
  if (const auto gain_db = config_.gain->overall_db) {
    require({overall}, *gain_db, 0.0, "--gain", decibelsText);
    device_->setGain(kRx, kChannel, *gain_db);
  }
  const auto stages = device_->listGains(kRx, kChannel);
  for (const auto& [stage, gain_db] : config_.gain->stages_db) {
    if (std::find(stages.begin(), stages.end(), stage) == stages.end()) {
      fail(fmt::format(
          "--gain: there is no stage '{}'; the device has {}", stage,
          stages.empty() ? "none with a name" : fmt::format("{}", fmt::join(stages, ", "))));
    }
    const auto range = device_->getGainRange(kRx, kChannel, stage);
    require({range}, gain_db, 0.0, ("--gain " + stage).c_str(), decibelsText);
    device_->setGain(kRx, kChannel, stage, gain_db);
  }
}

StreamFormat SoapyReceiver::chooseFormat() const {
  double full_scale = 0.0;
  const std::string native = device_->getNativeStreamFormat(kRx, kChannel, full_scale);
  if (!std::isfinite(full_scale) || full_scale <= 0.0) full_scale = 0.0;  // not known
  const auto formats = device_->getStreamFormats(kRx, kChannel);
  const bool offers_floats =
      std::find(formats.begin(), formats.end(), SOAPY_SDR_CF32) != formats.end();
  if (native == SOAPY_SDR_CF32) {
    return {SOAPY_SDR_CF32, nullptr, static_cast<float>(full_scale > 0.0 ? 1.0 / full_scale : 1.0)};
  }
  // A driver that converts to floats scales them to 1.0 itself.
  if (offers_floats || native.empty()) return {SOAPY_SDR_CF32, nullptr, 1.0F};

  const std::string name = lowerCase(native);
  const SampleFormat* const convert = findSampleFormat(name);
  if (convert == nullptr) {
    fail(fmt::format("the driver offers only samples of format {}, not one of {}", native,
                     sampleFormatNames()));
  }
  // The conversion takes all bits of an integer as full scale; a 12-bit converter does not use
  // them.
  const bool is_floating = name.starts_with("cf");
  const double bits = 8.0 * static_cast<double>(convert->component_bytes);
  const double converted_scale = is_floating ? 1.0 : std::exp2(bits - 1.0);
  const double scale = full_scale > 0.0 ? converted_scale / full_scale : 1.0;
  return {native, convert, static_cast<float>(scale)};
}

void SoapyReceiver::startStream() {
  format_ = chooseFormat();
  stream_ = {device_->setupStream(kRx, format_.name, {kChannel}), {device_.get()}};
  if (stream_ == nullptr) fail("cannot start the stream");
  mtu_samples_ = std::max<size_t>(device_->getStreamMTU(stream_.get()), 1);
  const int status = device_->activateStream(stream_.get());
  if (status != 0) fail(fmt::format("cannot start the stream: {}", SoapySDR::errToStr(status)));
}

bool SoapyReceiver::isTunable(double hz) const {
  const double device_hz = deviceHz(hz);
  if (!std::isfinite(device_hz)) return false;
  return tuning_ranges_.empty() || isWithin(tuning_ranges_, device_hz, kSlackHz);
}

/// Where the device says it is; `otherwise_hz` where it does not say or means just that.
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
  }
  // Synthesisers move in steps. One that is far from where it was sent has not obeyed.
  if (refusal.empty() && std::abs(centre_hz_ - hz) > 0.1 * rate_hz_) {
    refusal = fmt::format("the device stays at {}", formatFrequency(centre_hz_));
  }
  // A refusal may leave the device anywhere; its samples have to be labelled right all the same.
  if (!refusal.empty()) {
    centre_hz_ = attempt("reading the frequency", [&] { return readBackCentre(before_hz); });
  }
  needs_settling_ = needs_settling_ || refusal.empty() || centre_hz_ != before_hz;
  if (!refusal.empty()) fail(refusal);
  return kTuneAccepted;
}

/// One call of the driver's: the samples got, or one of SoapySDR's negative codes.
int SoapyReceiver::readStream(std::span<std::complex<float>> block,
                              std::chrono::microseconds timeout) {
  return attempt("the stream broke off", [&] {
    const size_t wanted = std::min(block.size(), mtu_samples_);
    void* into = block.data();
    if (format_.convert != nullptr) {
      raw_.resize(wanted * format_.convert->sampleBytes());
      into = raw_.data();
    }
    int flags = 0;
    long long time_ns = 0;
    const std::array<void*, 1> buffers = {into};
    const int got = device_->readStream(stream_.get(), buffers.data(), wanted, flags, time_ns,
                                        static_cast<long>(timeout.count()));
    if (got == SOAPY_SDR_OVERFLOW || (flags & SOAPY_SDR_END_ABRUPT) != 0) ++overflows_;
    if (got <= 0) return got;
    const auto components = 2 * static_cast<size_t>(got);
    auto* const out = reinterpret_cast<float*>(block.data());
    if (format_.convert != nullptr) format_.convert->convert(raw_.data(), components, out);
    if (format_.scale != 1.0F) {
      std::for_each_n(out, components, [this](float& component) { component *= format_.scale; });
    }
    return got;
  });
}

/// At least one sample; 0 when the user asks for the end.
size_t SoapyReceiver::waitForSamples(std::span<std::complex<float>> block) {
  constexpr std::chrono::milliseconds kPatience(100);
  const auto gives_up = Clock::now() + std::chrono::duration<double>(config_.stall_timeout_seconds);
  while (!config_.stop()) {
    const int got = readStream(block, kPatience);
    if (got > 0) return static_cast<size_t>(got);
    if (Clock::now() >= gives_up) {
      fail(fmt::format("no samples for {:g} s ({}); see that the receiver is plugged in",
                       config_.stall_timeout_seconds, SoapySDR::errToStr(got)));
    }
    // Some drivers report at once what others wait for.
    if (got != SOAPY_SDR_OVERFLOW) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return 0;
}

/// Takes what the driver has waiting: at most all its buffers, where it says how many, as a machine
/// that is too slow, or a driver that waits although told not to, never finds it empty; and for no
/// longer than the stream may stall, as a driver in trouble may report overflows and nothing else.
void SoapyReceiver::drainDriver() {
  const size_t buffers = device_->getNumDirectAccessBuffers(stream_.get());
  size_t left = buffers > 0 ? buffers * mtu_samples_ : static_cast<size_t>(rate_hz_);
  const auto gives_up = Clock::now() + std::chrono::duration<double>(config_.stall_timeout_seconds);
  std::vector<std::complex<float>> dropped(mtu_samples_);
  while (left > 0 && !config_.stop() && Clock::now() < gives_up) {
    const int got = readStream(dropped, std::chrono::microseconds(0));
    if (got == SOAPY_SDR_OVERFLOW) continue;  // the samples after the gap may be waiting as well
    if (got <= 0) return;
    left -= std::min(left, static_cast<size_t>(got));
  }
}

void SoapyReceiver::settle() {
  if (!needs_settling_) return;
  drainDriver();
  // The buffer that was being filled when the device moved holds samples from before.
  auto left = mtu_samples_ + static_cast<size_t>(config_.settle_seconds * rate_hz_);
  std::vector<std::complex<float>> dropped(mtu_samples_);
  while (left > 0) {
    const size_t got = waitForSamples(std::span(dropped).first(std::min(left, dropped.size())));
    if (got == 0) return;
    left -= got;
  }
  needs_settling_ = false;
}

size_t SoapyReceiver::read(std::span<std::complex<float>> block) {
  settle();
  return waitForSamples(block);
}

}  // namespace

std::unique_ptr<IqSource> openReceiver(const ReceiverConfig& config) {
  return std::make_unique<SoapyReceiver>(config);
}

std::string listReceivers() {
  quietDrivers();
  std::string lines;
  for (SoapySDR::Kwargs device : SoapySDR::Device::enumerate()) {
    const std::string label = device["label"];
    // What tells devices apart and no more: the rest may hold blanks and changes between runs.
    std::string name = "driver=" + device["driver"];
    if (const std::string& serial = device["serial"]; !serial.empty()) name += ",serial=" + serial;
    lines += fmt::format("{:<40}  {}\n", name, label);
  }
  if (!lines.empty()) return lines;
  return "no receivers found; see that one is plugged in and that SoapySDR has the module for it\n"
         "(Debian: packages soapysdr-module-...; SoapySDRUtil --info lists those loaded)\n";
}

}  // namespace pelagrim_host
