// Finding devices and opening one.
#include "host/sources/soapy_device.h"

#include <SoapySDR/Logger.hpp>
#include <cstdio>
#include <cstdlib>

#include "host/process/text_output.h"
#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

/// The drivers' chatter would spoil the display, so only warnings are shown, unless SoapySDR's
/// environment variable asks for more. What they quote, such as the serial number of a stranger's
/// receiver, steers no terminal.
void quietDrivers() {
  if (std::getenv("SOAPY_SDR_LOG_LEVEL") == nullptr) SoapySDR::setLogLevel(SOAPY_SDR_WARNING);
  SoapySDR::registerLogHandler([](SoapySDR::LogLevel, const char* message) {
    TextOutput(stderr).write(fmt::format("receiver driver: {}\n", displayText(message)));
  });
}

}  // namespace

void UnmakeSoapyDevice::operator()(SoapySDR::Device* device) const noexcept {
  try {
    SoapySDR::Device::unmake(device);
  } catch (...) {  // NOLINT(bugprone-empty-catch): it is gone either way
  }
}

void fail(const ReceiverConfig& config, const std::string& what) {
  throw SourceError(fmt::format("{}: {}", config.device, what));
}

SoapyDevice openSoapyDevice(const ReceiverConfig& config) {
  quietDrivers();
  SoapyDevice device(attempt(config,
                             "cannot open the receiver (--list-devices shows what there is)",
                             [&] { return SoapySDR::Device::make(config.device); }));
  if (device == nullptr) {
    fail(config, "cannot open the receiver; --list-devices shows what there is");
  }
  attempt(config, "cannot open the receiver", [&] {
    if (device->getNumChannels(kRx) == 0) fail(config, "the device cannot receive");
  });
  return device;
}

std::string listReceivers() {
  quietDrivers();
  std::string lines;
  for (SoapySDR::Kwargs device : SoapySDR::Device::enumerate()) {
    const std::string label = device["label"];
    // Only what tells devices apart: the rest may contain blanks and changes between runs.
    std::string name = "driver=" + device["driver"];
    if (const std::string& serial = device["serial"]; !serial.empty()) name += ",serial=" + serial;
    lines += fmt::format("{:<40}  {}\n", displayText(name), displayText(label));
  }
  if (!lines.empty()) return lines;
  return "no receivers found; check that one is plugged in and SoapySDR has its module\n"
         "(Debian: packages soapysdr-module-...; SoapySDRUtil --info lists those loaded)\n";
}

}  // namespace pelagrim_host
