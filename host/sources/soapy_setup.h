#pragma once

#include <SoapySDR/Types.hpp>

#include "host/sources/soapy_device.h"

namespace pelagrim_host {

// Setting up a receiver: one function for each subject, in the order that drivers want. Anything
// unset in the config is left to the driver. All throw SourceError if the device does not offer a
// value, naming its ranges, or if its driver refuses.

void chooseAntenna(SoapySDR::Device& device, const ReceiverConfig& config);

/// Makes the device correct its crystal as far as it can. Returns the factor for the rest: the true
/// frequency over the device's.
double correctCrystal(SoapySDR::Device& device, const ReceiverConfig& config);

/// Returns the rate that the device has afterwards.
double setSampleRate(SoapySDR::Device& device, const ReceiverConfig& config);

void setBandwidth(SoapySDR::Device& device, const ReceiverConfig& config);
void setGain(SoapySDR::Device& device, const ReceiverConfig& config);
void removeDcOffset(SoapySDR::Device& device, const ReceiverConfig& config);

/// The ranges that the device can be tuned to; empty if it does not say. Throws if it cannot be
/// tuned to `device_hz`.
SoapySDR::RangeList tuningRanges(SoapySDR::Device& device, const ReceiverConfig& config,
                                 double device_hz);

/// Whether one of the ranges holds `value`, give or take `slack`.
bool isWithin(const SoapySDR::RangeList& ranges, double value, double slack);

}  // namespace pelagrim_host
