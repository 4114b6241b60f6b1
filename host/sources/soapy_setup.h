#pragma once

#include <SoapySDR/Types.hpp>

#include "host/sources/soapy_device.h"

namespace pelagrim_host {

// How a receiver is set up, one subject to a function, in the order in which drivers want it. What
// the config leaves unset stays as the driver has it. All throw SourceError: what the device does
// not offer, with its ranges, and what its driver refuses.

void chooseAntenna(SoapySDR::Device& device, const ReceiverConfig& config);

/// Has the device correct its crystal as far as it can. Returns the factor for the rest: the true
/// frequency over the device's.
double correctCrystal(SoapySDR::Device& device, const ReceiverConfig& config);

/// Returns the rate that the device then has.
double setSampleRate(SoapySDR::Device& device, const ReceiverConfig& config);

void setBandwidth(SoapySDR::Device& device, const ReceiverConfig& config);
void setGain(SoapySDR::Device& device, const ReceiverConfig& config);
void removeDcOffset(SoapySDR::Device& device, const ReceiverConfig& config);

/// Where the device can be tuned to; empty where it does not say. Throws when it cannot be tuned to
/// `device_hz`.
SoapySDR::RangeList tuningRanges(SoapySDR::Device& device, const ReceiverConfig& config,
                                 double device_hz);

/// Whether one of the ranges holds `value`, give or take `slack`.
bool isWithin(const SoapySDR::RangeList& ranges, double value, double slack);

}  // namespace pelagrim_host
