#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/sources/sample_format.h"

namespace pelagrim_host {

/// The longest metadata that are read; a recording's are usually a few kilobytes.
constexpr size_t kMaxSigmfMetaBytes = size_t{16} << 20;

/// A capture segment: what applies from one sample on.
struct SigmfCapture {
  uint64_t sample_start = 0;  ///< absolute, in order
  uint64_t header_bytes = 0;  ///< to skip in the data before it
  std::optional<double> frequency_hz;
  std::optional<int64_t> start_unix_ms;
};

/// What a SigMF recording's metadata say about its samples.
struct SigmfMeta {
  std::string datatype;  ///< as written
  const SampleFormat* format = nullptr;
  bool big_endian = false;
  std::optional<double> sample_rate_hz;
  std::string sha512;           ///< of the data, in lower case; empty: not given
  std::string dataset;          ///< the data file's name, if it is not the usual one
  uint64_t offset = 0;          ///< index of the data's first sample
  uint64_t trailing_bytes = 0;  ///< to ignore at the data's end
  std::vector<SigmfCapture> captures;
};

/// A run of samples in the data, without a break and at one centre.
struct SigmfSegment {
  uint64_t first_byte = 0;
  uint64_t samples = 0;
  std::optional<double> centre_hz;       ///< unset only before the first one given
  std::optional<int64_t> start_unix_ms;  ///< of its first sample
};

/// The metadata are malformed, or the recording cannot be surveyed. The text is the reason, without
/// the file's name.
struct SigmfError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads the text of a .sigmf-meta file (SigMF 1.x). Text nested too deeply or with too many values
/// is refused before it costs memory. Real samples, several channels and metadata without data are
/// refused with a reason, too. Throws SigmfError.
SigmfMeta parseSigmfMeta(std::string_view text);

/// Where the segments lie in data of `data_bytes` bytes. A capture without a frequency keeps that
/// of the one before; samples before the first capture belong to none. Throws SigmfError if the
/// captures reach past the data.
std::vector<SigmfSegment> sigmfSegments(const SigmfMeta& meta, uint64_t data_bytes);

}  // namespace pelagrim_host
