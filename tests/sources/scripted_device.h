#pragma once

#include <SoapySDR/Device.hpp>
#include <SoapySDR/Formats.hpp>
#include <SoapySDR/Registry.hpp>
#include <algorithm>
#include <cmath>
#include <deque>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace pelagrim_host {

/// What the driver does and has done; reset for every test.
struct Script {
  std::string format = SOAPY_SDR_CS16;
  std::deque<int> codes;                   // returned by readStream before samples come again
  bool unplugged = false, throws = false;  // readStream times out forever; everything throws
  bool overflows = false;                  // readStream reports nothing else
  bool throws_an_int = false;              // every call that may
  size_t too_many = 0;                     // that readStream delivers and reports beyond `count`
  size_t mtu = 100;
  int flags = 0;         // that readStream sets
  double rate_hz = 0.0;  // that the device has, whatever was asked; 0: not said
  bool has_filter = false;
  double step_hz = 1.0;    // of the synthesiser
  bool takes_ppm = false;  // whole ones
  double sent_hz = 0.0;
  size_t waiting = 0, stale = 0;  // samples there at once; samples from the old centre
  size_t delivered = 0;           // since the last tune
  std::string label;              // also its serial number
  std::string calls;
};
inline Script script;

/// Buffers of 100 samples, if not told otherwise, of MHz tuned to + 512 j, of full scale 2048.
class ScriptedDevice : public SoapySDR::Device {
  using Kwargs = SoapySDR::Kwargs;
  using Ranges = SoapySDR::RangeList;
  size_t getNumChannels(int) const override { return 1; }
  std::vector<std::string> getStreamFormats(int, size_t) const override { return {script.format}; }
  std::string getNativeStreamFormat(int, size_t, double& full_scale) const override {
    return full_scale = 2048.0, script.format;
  }
  SoapySDR::Stream* setupStream(int, const std::string&, const std::vector<size_t>&,
                                const Kwargs&) override {
    return reinterpret_cast<SoapySDR::Stream*>(this);
  }
  int activateStream(SoapySDR::Stream*, int, long long, size_t) override {
    return script.unplugged ? SOAPY_SDR_STREAM_ERROR : 0;
  }
  int deactivateStream(SoapySDR::Stream*, int, long long) override {
    script.calls += "off ";
    throwIfToldTo();
    return script.throws ? throw std::runtime_error("usb gone") : 0;
  }
  void closeStream(SoapySDR::Stream*) override {
    script.calls += "closed";
    throwIfToldTo();
  }
  size_t getStreamMTU(SoapySDR::Stream*) const override { return script.mtu; }
  size_t getNumDirectAccessBuffers(SoapySDR::Stream*) override { return throwIfToldTo(), 0; }
  int readStream(SoapySDR::Stream*, void* const* buffers, size_t count, int& flags, long long&,
                 long timeout_us) override {
    if (script.throws) throw std::runtime_error("usb gone");
    throwIfToldTo();
    flags = script.flags;
    if (!script.codes.empty()) {
      const int code = script.codes.front();
      return script.codes.pop_front(), code;
    }
    if (script.overflows) return SOAPY_SDR_OVERFLOW;
    if (script.unplugged || (timeout_us == 0 && script.waiting == 0)) return SOAPY_SDR_TIMEOUT;
    count += script.too_many;
    for (size_t i = 0; i < 2 * count; i += 2, ++script.delivered) {
      const double mhz = (script.delivered < script.stale ? old_hz_ : hz_) / 1e6;
      const auto put = [=](auto* out) {
        out[i] = static_cast<std::remove_reference_t<decltype(*out)>>(mhz);
        out[i + 1] = 512;
      };
      if (script.format == SOAPY_SDR_CF32) put(static_cast<float*>(buffers[0]));
      if (script.format == SOAPY_SDR_CS16) put(static_cast<int16_t*>(buffers[0]));
    }
    script.waiting -= std::min(script.waiting, count);
    return static_cast<int>(count);
  }
  std::vector<std::string> listAntennas(int, size_t) const override { return {"RX", "HF"}; }
  void setAntenna(int, size_t, const std::string& name) override { script.calls += name + " "; }
  bool hasDCOffsetMode(int, size_t) const override { return true; }
  void setDCOffsetMode(int, size_t, bool on) override { script.calls += on ? "dc " : "no dc "; }
  std::vector<std::string> listGains(int, size_t) const override { return {"LNA", "IF"}; }
  bool hasGainMode(int, size_t) const override { return true; }
  void setGainMode(int, size_t, bool on) override { script.calls += on ? "auto " : "manual "; }
  void setGain(int, size_t, double db) override { script.calls += std::to_string(int(db)) + " "; }
  void setGain(int, size_t, const std::string& name, double db) override {
    script.calls += name + std::to_string(static_cast<int>(db)) + " ";
  }
  SoapySDR::Range getGainRange(int, size_t, const std::string&) const override { return {0, 30}; }
  bool hasFrequencyCorrection(int, size_t) const override { return script.takes_ppm; }
  void setFrequencyCorrection(int, size_t, double ppm) override { ppm_ = std::trunc(ppm); }
  double getFrequencyCorrection(int, size_t) const override { return ppm_; }
  void setFrequency(int, size_t, double hz, const Kwargs&) override {
    script.sent_hz = hz;
    if (script.throws) throw std::runtime_error("no lock");
    throwIfToldTo();
    old_hz_ = std::exchange(hz_, std::round(hz / script.step_hz) * script.step_hz);
    script.delivered = 0;
  }
  double getFrequency(int, size_t) const override { return hz_; }
  Ranges getFrequencyRange(int, size_t) const override { return {{24e6, 400e6}, {500e6, 1700e6}}; }
  Ranges getSampleRateRange(int, size_t) const override { return {{225e3, 300e3}, {1e6, 1e6}}; }
  double getSampleRate(int, size_t) const override { return script.rate_hz; }
  Ranges getBandwidthRange(int, size_t) const override {
    return script.has_filter ? Ranges{{200e3, 8e6}} : Ranges{};
  }
  void setBandwidth(int, size_t, double hz) override {
    script.calls += std::to_string(static_cast<int>(hz)) + " ";
  }
  static void throwIfToldTo() {
    if (script.throws_an_int) throw 42;
  }
  double hz_ = 100e6, old_hz_ = 0.0, ppm_ = 0.0;
};

inline const SoapySDR::Registry kDriver(
    "scripted",
    [](const SoapySDR::Kwargs& device) {
      SoapySDR::Kwargs found = device;
      if (!script.label.empty()) found["label"] = found["serial"] = script.label;
      return SoapySDR::KwargsList{found};
    },
    [](const SoapySDR::Kwargs&) -> SoapySDR::Device* {
      if (script.throws_an_int) throw 42;
      return new ScriptedDevice;
    },
    SOAPY_SDR_ABI_VERSION);

}  // namespace pelagrim_host
