#pragma once

#include <fmt/format.h>

#include <SoapySDR/Device.hpp>
#include <exception>
#include <memory>
#include <string>

#include "host/sources/soapy_receiver.h"

namespace pelagrim_host {

// The direction and channel that are used on every device.
constexpr int kRx = SOAPY_SDR_RX;
constexpr size_t kChannel = 0;

constexpr const char* kNoReason = "the driver failed without saying why";

constexpr double kSlackHz = 0.5;  // because limits and read-backs are rounded

struct UnmakeSoapyDevice {
  void operator()(SoapySDR::Device* device) const noexcept;
};
using SoapyDevice = std::unique_ptr<SoapySDR::Device, UnmakeSoapyDevice>;

/// Opens config.device, which must be able to receive. Throws SourceError.
SoapyDevice openSoapyDevice(const ReceiverConfig& config);

/// Throws SourceError, with the device's name.
[[noreturn]] void fail(const ReceiverConfig& config, const std::string& what);

/// Runs a driver call; whatever it throws becomes a SourceError that says what was attempted.
template <typename Call>
auto attempt(const ReceiverConfig& config, const char* what, Call call) {
  try {
    return call();
  } catch (const SourceError&) {
    throw;
  } catch (const std::exception& failure) {
    fail(config, fmt::format("{}: {}", what, failure.what()));
  } catch (...) {  // a driver may throw anything
    fail(config, fmt::format("{}: {}", what, kNoReason));
  }
}

}  // namespace pelagrim_host
