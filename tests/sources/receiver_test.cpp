// Live receivers against a scripted SoapySDR driver.
#include <gtest/gtest.h>

#include <SoapySDR/Logger.hpp>
#include <cmath>
#include <functional>

#include "host/sources/soapy_receiver.h"
#include "tests/sources/scripted_device.h"

namespace pelagrim_host {
namespace {

struct LiveReceiver : testing::Test {
  void SetUp() override { script = {}; }
  ReceiverConfig config{"driver=scripted", 1e6, 200e6, {}, {}, 0.0, {}, 0.001, 0.2};
  std::vector<std::complex<float>> block = std::vector<std::complex<float>>(64);
};

template <typename Call>
std::string failureOf(Call call) try {
  call();
  return "none";
} catch (const SourceError& failure) {
  return failure.what();
}

TEST_F(LiveReceiver, DropsWhatWasInFlightThenDeliversTheNewCentreAtFullScaleOne) {
  for (const char* format : {SOAPY_SDR_CS16, SOAPY_SDR_CF32}) {
    script.format = format;
    const auto receiver = openReceiver(config);
    EXPECT_EQ(receiver->read(block), 64U);
    script.waiting = 300;  // then the buffer that was being filled, then 900 that arrive late
    script.stale = 300 + 100 + 900;
    EXPECT_EQ(receiver->tune(600e6), kTuneAccepted);
    receiver->settle();
    EXPECT_EQ(script.delivered, 300U + 100U + 1000U);
    EXPECT_EQ(receiver->read(block), 64U);
    EXPECT_EQ(block[0], std::complex<float>(600.0F / 2048.0F, 0.25F));
    EXPECT_EQ(receiver->centreHz(), 600e6);
  }
}

TEST_F(LiveReceiver, RefusesATuneAndReportsTheCentreThatItReallyHas) {
  const auto receiver = openReceiver(config);
  for (const double hz : {23e6, 450e6, 2e9, std::nan("")}) {
    EXPECT_EQ(receiver->tune(hz), kTuneOutOfRange) << hz;
  }
  script.throws = true;
  EXPECT_EQ(failureOf([&] { receiver->tune(300e6); }), "driver=scripted: no lock");
  EXPECT_EQ(receiver->centreHz(), 200e6);
  script.throws = false;
  script.step_hz = 15e3;
  EXPECT_EQ(receiver->tune(300.004e6), kTuneAccepted);
  EXPECT_EQ(receiver->centreHz(), 300e6);
  script.step_hz = 77e6;
  EXPECT_EQ(failureOf([&] { receiver->tune(100e6); }),
            "driver=scripted: the device stays at 77.000 MHz");
  EXPECT_EQ(receiver->centreHz(), 77e6);
  config.ppm = 2.5;
  for (const bool takes_whole_ppm : {false, true}) {
    script = {};
    script.takes_ppm = takes_whole_ppm;
    EXPECT_EQ(openReceiver(config)->centreHz(), 200e6);
    EXPECT_NEAR(script.sent_hz, takes_whole_ppm ? 199'999'900.0 : 199'999'500.0, 0.01);
  }
}

TEST_F(LiveReceiver, SurvivesOverflowsAndErrorsButNotALostDevice) {
  auto receiver = openReceiver(config);
  script.codes = {SOAPY_SDR_OVERFLOW, SOAPY_SDR_TIMEOUT, SOAPY_SDR_CORRUPTION, SOAPY_SDR_OVERFLOW};
  EXPECT_EQ(receiver->read(block), 64U);
  EXPECT_EQ(receiver->overflows(), 2U);
  script.flags = SOAPY_SDR_END_ABRUPT;
  EXPECT_EQ(receiver->read(block), 64U);
  EXPECT_EQ(receiver->overflows(), 3U);
  script.flags = 0;
  script.overflows = true;
  EXPECT_EQ(receiver->tune(300e6), kTuneAccepted);
  EXPECT_NE(failureOf([&] { receiver->settle(); }).find("(OVERFLOW)"), std::string::npos);
  script.overflows = false;
  script.unplugged = true;
  EXPECT_EQ(
      failureOf([&] { receiver->read(block); }),
      "driver=scripted: no samples for 0.2 s (TIMEOUT); check that the receiver is plugged in");
  script.throws = true;
  EXPECT_NE(failureOf([&] { receiver->read(block); }).find("usb gone"), std::string::npos);
  receiver.reset();
  EXPECT_EQ(script.calls, "dc off closed");
  script = {};
  script.unplugged = true;
  EXPECT_NE(failureOf([&] { openReceiver(config); }).find("cannot start the stream"),
            std::string::npos);
  EXPECT_EQ(script.calls, "dc closed");
  script = {};
  config.stop = [] { return true; };
  EXPECT_EQ(openReceiver(config)->read(block), 0U);
}

TEST_F(LiveReceiver, EndsInOneLineWhateverTheDriverThrowsOrReports) {
  const std::string no_reason = "the driver failed without saying why";
  script.throws_an_int = true;
  EXPECT_NE(failureOf([&] { openReceiver(config); }).find(no_reason), std::string::npos);
  script.throws_an_int = false;
  auto receiver = openReceiver(config);
  EXPECT_EQ(receiver->read(block), 64U);
  script.throws_an_int = true;
  for (const auto& call : std::vector<std::function<void()>>{[&] { receiver->tune(300e6); },
                                                             [&] { receiver->read(block); },
                                                             [&] { receiver->settle(); }}) {
    EXPECT_TRUE(failureOf(call).ends_with(no_reason));
    script.throws_an_int = false;
    receiver->tune(200e6);  // so that there is something to settle
    script.throws_an_int = true;
  }
  receiver.reset();
  EXPECT_TRUE(script.calls.ends_with("off closed"));

  for (const char* format : {SOAPY_SDR_CS16, SOAPY_SDR_CF32}) {
    script = {};
    script.format = format;
    receiver = openReceiver(config);
    EXPECT_EQ(receiver->read(block), 64U);
    script.too_many = script.mtu;
    EXPECT_EQ(failureOf([&] { receiver->read(block); }),
              "driver=scripted: the driver delivered 164 samples where 64 were asked for; an error "
              "of the driver's");
  }
  for (const double rate_hz : {1e300, 1e-300, 11e6, 0.09e6}) {
    script = {};
    script.rate_hz = rate_hz;
    EXPECT_NE(failureOf([&] { openReceiver(config); }).find("the driver says that it set"),
              std::string::npos);
  }
  script = {};
  script.mtu = SIZE_MAX;
  EXPECT_NE(failureOf([&] { openReceiver(config); }).find("which cannot be"), std::string::npos);
}

TEST_F(LiveReceiver, SteersNoTerminalWithWhatItQuotes) {
  script.label = "radio \x1b[2J\n";
  const std::string list = listReceivers();
  EXPECT_NE(list.find("driver=scripted,serial=radio ␛[2J␊ "), std::string::npos) << list;
  EXPECT_NE(list.find("  radio ␛[2J␊\n"), std::string::npos) << list;
  openReceiver(config);  // from here on the drivers' lines pass through the program
  testing::internal::CaptureStderr();
  SoapySDR::log(SOAPY_SDR_WARNING, "lost \x1b[2J\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "receiver driver: lost ␛[2J␊\n");
}

TEST_F(LiveReceiver, SetsWhatIsAskedForAndNamesTheDevicesRangesOtherwise) {
  config.antenna = "HF";
  for (const auto& [gain, calls] : {std::pair("auto", "HF auto dc off closed"),
                                    {"32.8", "HF manual 32 dc off closed"},
                                    {"LNA=20,IF=8", "HF manual LNA20 IF8 dc off closed"}}) {
    script = {};
    config.gain = parseGain(gain);
    openReceiver(config);
    EXPECT_EQ(script.calls, calls);
  }
  script = {};
  script.has_filter = true;
  script.rate_hz = 999'999.0;
  config.gain.reset();
  config.bandwidth_hz = 500e3;
  EXPECT_EQ(openReceiver(config)->sampleRateHz(), 999'999.0);
  EXPECT_EQ(script.calls, "HF 500000 dc off closed");
  config.bandwidth_hz = 9e6;
  EXPECT_NE(failureOf([&] { openReceiver(config); }).find("0.200 MHz to 8.000 MHz"),
            std::string::npos);
  script.has_filter = false;
  config.bandwidth_hz.reset();
  for (const char* text : {"", "loud", "3k", "LNA", "=3", "LNA=3,", "LNA=x"}) {
    EXPECT_FALSE(parseGain(text)) << text;
  }
  const std::vector<std::pair<void (*)(ReceiverConfig&), const char*>> faults = {
      {[](auto& c) { c.sample_rate_hz = 5e6; }, "225 kS/s to 300 kS/s, 1 MS/s"},
      {[](auto& c) { c.centre_hz = 450e6; }, "24.000 MHz to 400.000 MHz, 500.000 MHz to"},
      {[](auto& c) { c.gain = parseGain("70"); }, "cannot do 70 dB; it offers 0 dB to 60 dB"},
      {[](auto& c) { c.gain = parseGain("LNA=31"); }, "--gain LNA: the device cannot do 31 dB"},
      {[](auto& c) { c.gain = parseGain("VGA=1"); }, "no stage 'VGA'; the device has LNA, IF"},
      {[](auto& c) { c.antenna = "TX"; }, "no 'TX'; the device has RX, HF"},
      {[](auto& c) { c.bandwidth_hz = 1e6; }, "filter cannot be set"},
      {[](auto& c) { c.device = "driver=nothing"; }, "--list-devices"},
      {[](auto&) { script.format = "CS12"; }, "only samples of format CS12"}};
  for (const auto& [spoil, words] : faults) {
    ReceiverConfig spoilt = config;
    spoil(spoilt);
    EXPECT_NE(failureOf([&] { openReceiver(spoilt); }).find(words), std::string::npos) << words;
  }
}

}  // namespace
}  // namespace pelagrim_host
