#include "host/sources/soapy_stream.h"

#include <SoapySDR/Errors.hpp>
#include <SoapySDR/Formats.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <thread>

#include "host/text/letter_case.h"

namespace pelagrim_host {
namespace {

constexpr size_t kMaxMtuSamples = size_t{1} << 24;

}  // namespace

void SoapyStream::CloseStream::operator()(SoapySDR::Stream* stream) const noexcept {
  try {
    device->closeStream(stream);
  } catch (...) {  // NOLINT(bugprone-empty-catch): an unplugged device may object
  }
}

SoapyStream::SoapyStream(SoapySDR::Device& device, const ReceiverConfig& config)
    : device_(device), config_(config), format_(chooseFormat()), stream_(nullptr, {&device}) {
  stream_.reset(device.setupStream(kRx, format_.name, {kChannel}));
  if (stream_ == nullptr) fail(config, "cannot start the stream");
  mtu_samples_ = std::max<size_t>(device.getStreamMTU(stream_.get()), 1);
  if (mtu_samples_ > kMaxMtuSamples) {
    fail(config, fmt::format("the driver says that it delivers {} samples at once, which cannot be",
                             mtu_samples_));
  }
  const int status = device.activateStream(stream_.get());
  if (status != 0) {
    fail(config, fmt::format("cannot start the stream: {}", SoapySDR::errToStr(status)));
  }
}

SoapyStream::~SoapyStream() {
  try {
    device_.deactivateStream(stream_.get());
  } catch (...) {  // NOLINT(bugprone-empty-catch): an unplugged device may object
  }
}

SoapyStream::Format SoapyStream::chooseFormat() const {
  double full_scale = 0.0;
  const std::string native = device_.getNativeStreamFormat(kRx, kChannel, full_scale);
  if (!std::isfinite(full_scale) || full_scale <= 0.0) full_scale = 0.0;  // not known
  const auto formats = device_.getStreamFormats(kRx, kChannel);
  const bool offers_floats =
      std::find(formats.begin(), formats.end(), SOAPY_SDR_CF32) != formats.end();
  if (native == SOAPY_SDR_CF32) {
    const double scale = full_scale > 0.0 ? 1.0 / full_scale : 1.0;
    return {SOAPY_SDR_CF32, {.scale = static_cast<float>(scale)}};
  }
  // A driver that converts to floats scales them to 1.0 itself.
  if (offers_floats || native.empty()) return {SOAPY_SDR_CF32, {}};

  const std::string name = lowerCase(native);
  const SampleFormat* const convert = findSampleFormat(name);
  if (convert == nullptr) {
    fail(config_, fmt::format("the driver offers only samples of format {}, not one of {}", native,
                              sampleFormatNames()));
  }
  // The conversion takes all bits of an integer as full scale, but a 12-bit converter does not use
  // them all.
  const bool is_floating = name.starts_with("cf");
  const double bits = 8.0 * static_cast<double>(convert->component_bytes);
  const double converted_scale = is_floating ? 1.0 : std::exp2(bits - 1.0);
  const double scale = full_scale > 0.0 ? converted_scale / full_scale : 1.0;
  return {native, {convert, static_cast<float>(scale)}};
}

/// One driver call: the number of samples, or one of SoapySDR's negative codes.
int SoapyStream::readOnce(std::span<std::byte> bytes, std::chrono::microseconds timeout) {
  return attempt(config_, "the stream broke off", [&] {
    const size_t sample_bytes = format_.layout.sampleBytes();
    const size_t wanted = std::min(bytes.size() / sample_bytes, mtu_samples_);
    // Room for one transfer more, for a driver that delivers more than it is asked for.
    transfer_.resize(std::max(transfer_.size(), (wanted + mtu_samples_) * sample_bytes));
    int flags = 0;
    long long time_ns = 0;
    const std::array<void*, 1> buffers = {transfer_.data()};
    const int got = device_.readStream(stream_.get(), buffers.data(), wanted, flags, time_ns,
                                       static_cast<long>(timeout.count()));
    if (got == SOAPY_SDR_OVERFLOW || (flags & SOAPY_SDR_END_ABRUPT) != 0) ++overflows_;
    if (got <= 0) return got;
    if (static_cast<size_t>(got) > wanted) {
      fail(config_, fmt::format("the driver delivered {} samples where {} were asked for; an error "
                                "of the driver's",
                                got, wanted));
    }
    std::memcpy(bytes.data(), transfer_.data(), static_cast<size_t>(got) * sample_bytes);
    return got;
  });
}

SoapyStream::Clock::time_point SoapyStream::stallsAt() const {
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(
                            std::chrono::duration<double>(config_.stall_timeout_seconds));
}

size_t SoapyStream::read(std::span<std::byte> bytes) {
  constexpr std::chrono::milliseconds kPatience(100);
  const auto gives_up = stallsAt();
  while (!config_.stop()) {
    const int got = readOnce(bytes, kPatience);
    if (got > 0) return static_cast<size_t>(got);
    if (Clock::now() >= gives_up) {
      fail(config_, fmt::format("no samples for {:g} s ({}); check that the receiver is plugged in",
                                config_.stall_timeout_seconds, SoapySDR::errToStr(got)));
    }
    // Some drivers report a timeout at once, where others wait.
    if (got != SOAPY_SDR_OVERFLOW) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return 0;
}

void SoapyStream::drain(size_t max_samples) {
  const size_t buffers = attempt(config_, "the stream broke off", [this] {
    return device_.getNumDirectAccessBuffers(stream_.get());
  });
  const bool says_how_many = buffers > 0 && buffers <= kMaxMtuSamples;
  size_t left = says_how_many ? buffers * mtu_samples_ : max_samples;
  const auto gives_up = stallsAt();
  std::vector<std::byte> dropped(mtu_samples_ * format_.layout.sampleBytes());
  while (left > 0 && !config_.stop() && Clock::now() < gives_up) {
    const int got = readOnce(dropped, std::chrono::microseconds(0));
    if (got == SOAPY_SDR_OVERFLOW) continue;  // the samples after the gap may be waiting as well
    if (got <= 0) return;
    left -= std::min(left, static_cast<size_t>(got));
  }
}

}  // namespace pelagrim_host
