// What the names of recordings say.
#include "host/sources/recording_name.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace pelagrim_host {
namespace {

TEST(RecordingName, ReadsWhatRecordersWrite) {
  struct Case {
    const char* name;
    double rate_hz, centre_hz;  ///< 0: not said
    int64_t start_unix_ms;
    const char* format;
  };
  const std::vector<Case> cases = {
      {"g001_433.92M_250k.cu8", 250e3, 433.92e6, 0, "cu8"},
      {"gqrx_20230401_101112_145500000_2400000_fc.raw", 2.4e6, 145.5e6, 1680343872000, "cf32"},
      {"HDSDR_20180906_204111Z_433920kHz_RF.wav", 0, 433.92e6, 1536266471000, ""},
      {"SDR_405300000Hz_IQ.wav", 0, 405.3e6, 0, ""},
      {"rtlsdr_868.950M_1M6_samples2.cu8", 1.6e6, 868.95e6, 0, "cu8"},
      {"rtlsdr_868.625M_2M4_issue48.CU8", 2.4e6, 868.625e6, 0, "cu8"},
      {"HFDL_test_12k_cf13270_df13270.wav", 12e3, 13.27e6, 0, ""},
      {"433.92MHz_2MHz.cs16", 2e6, 433.92e6, 0, "cs16"},
      {"14-Nov-2015 170401 3.725MHz 000.wav", 0, 3.725e6, 0, ""},
      {"GPS_L1_recording_10ms_4MHz_cf32.iq", 0, 0, 0, "cf32"},  // a rate or a centre
      {"elektromaten.complex16s", 0, 0, 0, "cs8"},
      {"x.complex32s", 0, 0, 0, "cs16"},
      {"x.complex16u", 0, 0, 0, "cu8"},
      {"x.cfile", 0, 0, 0, "cf32"},
      {"sat_10.489GHz_250ksps.complex32u", 250e3, 10.489e9, 0, "cu16"},
      {"x_1.2G_96K_7k.c16", 96e3, 1.2e9, 0, "cs16"},  // the first rate is taken
      {"x_144500000Hz_2.4Msps.c8", 2.4e6, 144.5e6, 0, "cs8"},
      {"x_48000sps_0M_7M.fc32", 48e3, 7e6, 0, "cf32"},
      {"x_62M_433M.cs32", 0, 62e6, 0, "cs32"},  // no receiver samples at 433 MS/s
      {"cf0_x_5m.raw", 0, 0, 0, ""},
      {"gqrx_fc_x.y", 0, 0, 0, "cf32"},
      {"x_433M_250k0.cu8", 250e3, 433e6, 0, "cu8"},
      {"x_cf9999999999.raw", 0, 0, 0, ""},  // no receiver is there
      {"modes1.bin", 0, 0, 0, ""},
      {"x_20231399_101112_1.2.3M_99999999999G.raw", 0, 0, 0, ""},
      {"", 0, 0, 0, ""}};
  for (const Case& c : cases) {
    const RecordingName name = parseRecordingName(c.name);
    EXPECT_NEAR(name.rate_hz.value_or(0), c.rate_hz, 1e-3) << c.name;
    EXPECT_NEAR(name.centre_hz.value_or(0), c.centre_hz, 1e-3) << c.name;
    EXPECT_EQ(name.start_unix_ms.value_or(0), c.start_unix_ms) << c.name;
    EXPECT_EQ(name.format == nullptr ? "" : name.format->name, c.format) << c.name;
  }
  for (const auto& [told_centre_hz, rate_hz] : {std::pair(1575.42e6, 4e6), {4.1e6, 0.0}}) {
    EXPECT_EQ(parseRecordingName("x_4MHz_cf32.iq", told_centre_hz).rate_hz.value_or(0), rate_hz);
  }
}

}  // namespace
}  // namespace pelagrim_host
