#pragma once

#include <SoapySDR/Device.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/sources/sample_format.h"
#include "host/sources/soapy_device.h"

namespace pelagrim_host {

/// The stream of a device, active as long as this object. Used by one thread; failures are thrown
/// as SourceError.
class SoapyStream {
 public:
  /// Starts it. Both must outlive the stream.
  SoapyStream(SoapySDR::Device& device, const ReceiverConfig& config);
  ~SoapyStream();
  SoapyStream(const SoapyStream&) = delete;
  SoapyStream& operator=(const SoapyStream&) = delete;

  /// The largest number of samples that the driver delivers at once.
  size_t bufferSamples() const { return mtu_samples_; }

  /// How often the driver has dropped samples.
  uint64_t overflows() const { return overflows_; }

  /// How the device's samples lie in memory.
  const SampleLayout& layout() const { return format_.layout; }

  /// At least one sample; 0 if config.stop says so.
  size_t read(std::span<std::byte> bytes);

  /// Drops what the driver has waiting: at most all its buffers, or `max_samples` if it does not
  /// say how many. Without a limit, a machine that is too slow would never find it empty, nor with
  /// a driver that waits although told not to. Gives up after the stall timeout, because a driver
  /// in trouble may report nothing but overflows.
  void drain(size_t max_samples);

 private:
  using Clock = std::chrono::steady_clock;
  struct CloseStream {
    SoapySDR::Device* device;
    void operator()(SoapySDR::Stream* stream) const noexcept;
  };
  struct Format {
    std::string name;  ///< as SoapySDR spells it
    SampleLayout layout;
  };

  Format chooseFormat() const;
  int readOnce(std::span<std::byte> bytes, std::chrono::microseconds timeout);
  Clock::time_point stallsAt() const;

  SoapySDR::Device& device_;
  const ReceiverConfig& config_;
  Format format_;
  std::unique_ptr<SoapySDR::Stream, CloseStream> stream_;
  std::vector<std::byte> transfer_;  ///< with room for more than was asked for
  size_t mtu_samples_ = 0;
  uint64_t overflows_ = 0;
};

}  // namespace pelagrim_host
