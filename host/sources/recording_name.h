#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/sources/sample_format.h"

namespace pelagrim_host {

/// What the name of a recording says; unset, or null, if it says nothing.
struct RecordingName {
  std::optional<double> rate_hz;
  std::optional<double> centre_hz;
  std::optional<int64_t> start_unix_ms;
  const SampleFormat* format = nullptr;  ///< of raw samples
};

/// Reads the names that recorders write, word by word; words are separated by "_" or a blank.
///   g001_433.92M_250k.cu8                          centre, rate, format
///   rtlsdr_868.950M_1M6_samples2.cu8               1M6 is a rate of 1.6 MS/s
///   gqrx_20230401_101112_145500000_2400000_fc.raw  start, centre, rate; fc is cf32
///   HDSDR_20180906_204111Z_433920kHz_RF.wav        start, centre
///   baseband_405300000Hz_IQ.wav                    centre
///   HFDL_test_12k_cf13270_df13270.wav              rate, centre in kHz
/// Of several frequencies in Hz, kHz, M or G the first is the centre and the second the rate; "k"
/// alone and "sps" mark a rate. A single one in M that could be either (x_4MHz.iq) is taken for a
/// centre in a WAV file, whose header has the rate, and for the rate if the user says that the
/// centre is elsewhere. Times are assumed to be UTC.
///
/// `file_name` is without directories; any bytes are allowed. `told_centre_hz`: from the user.
/// Never fails.
RecordingName parseRecordingName(std::string_view file_name,
                                 std::optional<double> told_centre_hz = {});

}  // namespace pelagrim_host
