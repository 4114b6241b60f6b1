#include "host/sources/soapy_setup.h"

#include <algorithm>
#include <cmath>

#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr double kMaxRateError = 10.0;  // as a ratio; the nearest rate that a device has is nearer

using RangeText = std::string (*)(double);

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

void require(const ReceiverConfig& config, const SoapySDR::RangeList& ranges, double value,
             double slack, const char* option, RangeText text) {
  if (ranges.empty() || isWithin(ranges, value, slack)) return;
  fail(config, fmt::format("{}: the device cannot do {}; it offers {}", option, text(value),
                           rangesText(ranges, text)));
}

}  // namespace

bool isWithin(const SoapySDR::RangeList& ranges, double value, double slack) {
  return std::any_of(ranges.begin(), ranges.end(), [=](const SoapySDR::Range& range) {
    return value >= range.minimum() - slack && value <= range.maximum() + slack;
  });
}

void chooseAntenna(SoapySDR::Device& device, const ReceiverConfig& config) {
  attempt(config, "--antenna", [&] {
    if (config.antenna.empty()) return;
    const auto antennas = device.listAntennas(kRx, kChannel);
    if (std::find(antennas.begin(), antennas.end(), config.antenna) == antennas.end()) {
      fail(config, fmt::format("--antenna: there is no '{}'; the device has {}", config.antenna,
                               antennas.empty() ? "none to choose"
                                                : fmt::format("{}", fmt::join(antennas, ", "))));
    }
    device.setAntenna(kRx, kChannel, config.antenna);
  });
}

double correctCrystal(SoapySDR::Device& device, const ReceiverConfig& config) {
  return attempt(config, "--ppm", [&] {
    double left_ppm = config.ppm;
    if (device.hasFrequencyCorrection(kRx, kChannel)) {
      device.setFrequencyCorrection(kRx, kChannel, config.ppm);
      left_ppm -= device.getFrequencyCorrection(kRx, kChannel);
      // Some drivers take only whole numbers, so a fraction is left over; more than that if the
      // driver does not say what it took.
      if (!(std::abs(left_ppm) < 1.0)) left_ppm = 0.0;
    }
    return 1.0 + 1e-6 * left_ppm;
  });
}

double setSampleRate(SoapySDR::Device& device, const ReceiverConfig& config) {
  return attempt(config, "--sample-rate", [&] {
    require(config, device.getSampleRateRange(kRx, kChannel), config.sample_rate_hz, kSlackHz,
            "--sample-rate", formatSampleRate);
    device.setSampleRate(kRx, kChannel, config.sample_rate_hz);
    const double actual_hz = device.getSampleRate(kRx, kChannel);
    if (!std::isfinite(actual_hz) || actual_hz <= 0.0) return config.sample_rate_hz;  // not said
    if (actual_hz > kMaxRateError * config.sample_rate_hz ||
        config.sample_rate_hz > kMaxRateError * actual_hz) {
      fail(config, fmt::format("--sample-rate: the driver says that it set {:g} S/s where {:g} S/s "
                               "were asked for",
                               actual_hz, config.sample_rate_hz));
    }
    return actual_hz;
  });
}

void setBandwidth(SoapySDR::Device& device, const ReceiverConfig& config) {
  attempt(config, "--bandwidth", [&] {
    if (!config.bandwidth_hz) return;
    const auto ranges = device.getBandwidthRange(kRx, kChannel);
    if (ranges.empty())
      fail(config, "--bandwidth: the device's filter cannot be set; leave the option out");
    require(config, ranges, *config.bandwidth_hz, kSlackHz, "--bandwidth", formatFrequency);
    device.setBandwidth(kRx, kChannel, *config.bandwidth_hz);
  });
}

void setGain(SoapySDR::Device& device, const ReceiverConfig& config) {
  attempt(config, "--gain", [&] {
    if (!config.gain) return;
    const bool has_mode = device.hasGainMode(kRx, kChannel);
    const auto overall = device.getGainRange(kRx, kChannel);
    if (config.gain->automatic && !has_mode) {
      fail(config, fmt::format("--gain: the device has no automatic gain; give {}",
                               rangesText({overall}, decibelsText)));
    }
    if (has_mode) device.setGainMode(kRx, kChannel, config.gain->automatic);
    if (const auto gain_db = config.gain->overall_db) {
      require(config, {overall}, *gain_db, 0.0, "--gain", decibelsText);
      device.setGain(kRx, kChannel, *gain_db);
    }
    const auto stages = device.listGains(kRx, kChannel);
    for (const auto& [stage, gain_db] : config.gain->stages_db) {
      if (std::find(stages.begin(), stages.end(), stage) == stages.end()) {
        fail(config, fmt::format("--gain: there is no stage '{}'; the device has {}", stage,
                                 stages.empty() ? "none with a name"
                                                : fmt::format("{}", fmt::join(stages, ", "))));
      }
      const auto range = device.getGainRange(kRx, kChannel, stage);
      require(config, {range}, gain_db, 0.0, ("--gain " + stage).c_str(), decibelsText);
      device.setGain(kRx, kChannel, stage, gain_db);
    }
  });
}

void removeDcOffset(SoapySDR::Device& device, const ReceiverConfig& config) {
  attempt(config, "DC offset correction", [&] {
    if (device.hasDCOffsetMode(kRx, kChannel)) device.setDCOffsetMode(kRx, kChannel, true);
  });
}

SoapySDR::RangeList tuningRanges(SoapySDR::Device& device, const ReceiverConfig& config,
                                 double device_hz) {
  return attempt(config, "--frequency", [&] {
    auto ranges = device.getFrequencyRange(kRx, kChannel);
    require(config, ranges, device_hz, kSlackHz, "--frequency", formatFrequency);
    return ranges;
  });
}

}  // namespace pelagrim_host
