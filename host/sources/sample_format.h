#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// How a raw stream writes its complex samples: I then Q, one component after the other.
///
/// Integers are scaled by a power of two so that full scale is 1.0, which a float holds exactly:
/// the same signal written in two integer formats gives the same floats. Unsigned ones are centred
/// between their two middle codes first, so cu8 is (v - 127.5) / 128. Floats pass unscaled.
struct SampleFormat {
  std::string_view name;   ///< as --format and the file extension spell it
  size_t component_bytes;  ///< of I or of Q
  /// Converts the components of `in` (count x component_bytes bytes, any alignment) to `out`.
  void (*convert)(const std::byte* in, size_t count, float* out);

  size_t sampleBytes() const { return 2 * component_bytes; }
};

/// The format of that name ("cs16"), or null.
const SampleFormat* findSampleFormat(std::string_view name);

/// The format of a file with that extension, in lower case and without its point: a format's name,
/// or what a recorder calls it ("complex16u"). Null when there is none.
const SampleFormat* formatOfExtension(std::string_view extension);

/// Turns the bytes of every component around, in place: from big-endian to the little-endian order
/// that the formats have.
void reverseComponents(std::span<std::byte> bytes, size_t component_bytes);

/// "cu8, cs8, ...": every format, for messages and help.
std::string sampleFormatNames(std::string_view separator = ", ");

}  // namespace pelagrim_host
