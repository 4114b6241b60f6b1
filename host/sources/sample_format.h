#pragma once

#include <complex>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// How the complex samples of a raw stream are written: I then Q, one component after the other.
///
/// Integers are scaled by a power of two so that full scale is 1.0, which a float holds exactly:
/// the same signal written in two integer formats gives the same floats. Unsigned ones are centred
/// between their two middle codes first, so cu8 is (v - 127.5) / 128. Floats are not scaled.
struct SampleFormat {
  std::string_view name;   ///< as --format and the file extension spell it
  size_t component_bytes;  ///< of I or of Q
  /// Converts the components of `in` (count x component_bytes bytes, any alignment) to `out`.
  void (*convert)(const std::byte* in, size_t count, float* out);

  size_t sampleBytes() const { return 2 * component_bytes; }
};

/// How the samples of a source lie in memory, and how they become complex floats.
struct SampleLayout {
  const SampleFormat* format = nullptr;  ///< null: complex floats
  float scale = 1.0F;                    ///< brings full scale to 1.0 after the conversion

  size_t sampleBytes() const;

  /// Whether the samples can be used as they lie there.
  bool isReady() const;

  /// Converts `samples` samples (any alignment).
  void toFloats(const std::byte* in, size_t samples, std::complex<float>* out) const;
};

/// The format with that name ("cs16"), or null.
const SampleFormat* findSampleFormat(std::string_view name);

/// The format of a file with that extension, in lower case and without its dot: a format's name, or
/// a recorder's name for it ("complex16u"). Null if there is none.
const SampleFormat* formatOfExtension(std::string_view extension);

/// Reverses the bytes of every component in place, from big-endian to the little-endian order of
/// the formats.
void reverseComponents(std::span<std::byte> bytes, size_t component_bytes);

/// "cu8, cs8, ...": every format, for messages and help.
std::string sampleFormatNames(std::string_view separator = ", ");

}  // namespace pelagrim_host
