#include "host/sample_format.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace pelagrim_host {
namespace {

static_assert(std::endian::native == std::endian::little, "the formats are little-endian");

/// One component by memcpy, as the bytes of a file have no alignment; loops of it vectorise.
template <typename Component>
Component load(const std::byte* in, size_t index) {
  Component component;
  std::memcpy(&component, in + index * sizeof(Component), sizeof(Component));
  return component;
}

template <typename Component>
void convertSigned(const std::byte* in, size_t count, float* out) {
  constexpr float kScale = 1.0F / static_cast<float>(uint64_t{1} << (8 * sizeof(Component) - 1));
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<float>(load<Component>(in, i)) * kScale;
}

void convertUnsigned8(const std::byte* in, size_t count, float* out) {
  for (size_t i = 0; i < count; ++i) {
    // By way of int, which processors convert to float faster than they do unsigned.
    const int centred_twice = 2 * static_cast<int>(load<uint8_t>(in, i)) - 255;
    out[i] = static_cast<float>(centred_twice) * (1.0F / 256.0F);
  }
}

template <typename Component>
void convertFloating(const std::byte* in, size_t count, float* out) {
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<float>(load<Component>(in, i));
}

constexpr std::array kFormats = {
    SampleFormat{"cu8", 1, convertUnsigned8},
    SampleFormat{"cs8", 1, convertSigned<int8_t>},
    SampleFormat{"cs16", 2, convertSigned<int16_t>},
    SampleFormat{"cf32", 4, convertFloating<float>},
    SampleFormat{"cf64", 8, convertFloating<double>},
};

}  // namespace

std::span<const SampleFormat> sampleFormats() {
  return kFormats;
}

const SampleFormat* findSampleFormat(std::string_view name) {
  for (const SampleFormat& format : kFormats) {
    if (format.name == name) return &format;
  }
  return nullptr;
}

std::string sampleFormatNames() {
  std::string names;
  for (const SampleFormat& format : kFormats) {
    if (!names.empty()) names += ", ";
    names += format.name;
  }
  return names;
}

}  // namespace pelagrim_host
