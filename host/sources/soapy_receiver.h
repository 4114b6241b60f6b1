#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/sources/gain_setting.h"
#include "host/sources/iq_source.h"
#include "host/sources/stop_function.h"

namespace pelagrim_host {

/// A receiver and how to set it up. Anything unset is left to the driver.
struct ReceiverConfig {
  std::string device;  ///< which one, as SoapySDR writes it: "driver=rtlsdr,serial=77"
  double sample_rate_hz = 0.0;
  double centre_hz = 0.0;
  std::optional<GainSetting> gain{};
  std::string antenna{};
  double ppm = 0.0;  ///< how far the device's crystal runs fast, in millionths
  std::optional<double> bandwidth_hz{};
  double settle_seconds = 0.05;        ///< how long to drop samples after a tune
  double stall_timeout_seconds = 5.0;  ///< without samples, after which the device counts as gone
  StopFunction stop = neverStop;
};

/// Opens a live receiver through SoapySDR and starts its stream.
///
/// Samples are read as floats if the driver offers them, else in its native format, and scaled so
/// that the device's full scale is 1.0. After a tune, and at the start, settle() drops what the
/// driver has waiting, the one buffer that was being filled, and `settle_seconds` more; a read that
/// comes first does the same. The centre is the one that the device reports. read returns 0 only if
/// `stop` says so.
///
/// Throws SourceError, also from read, settle and tune: a rate, frequency, gain or bandwidth that
/// the device does not offer (with its ranges), a driver that fails, a tune that the device
/// refuses, a device without samples for longer than the stall timeout.
std::unique_ptr<IqSource> openReceiver(const ReceiverConfig& config);

/// The receivers that SoapySDR finds, one per line as for --device; or what to do if there are
/// none.
std::string listReceivers();

}  // namespace pelagrim_host
