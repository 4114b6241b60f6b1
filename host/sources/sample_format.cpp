#include "host/sources/sample_format.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

namespace pelagrim_host {
namespace {

static_assert(std::endian::native == std::endian::little, "the formats are little-endian");

/// One component by memcpy, because the bytes of a file have no alignment; loops of it vectorise.
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

template <typename Component, typename Wider>
void convertUnsigned(const std::byte* in, size_t count, float* out) {
  constexpr Wider kCodes = Wider{1} << (8 * sizeof(Component));
  constexpr float kScale = 1.0F / static_cast<float>(kCodes);
  for (size_t i = 0; i < count; ++i) {
    // Through signed numbers, which processors convert to float faster than unsigned ones.
    const Wider centred_twice = 2 * static_cast<Wider>(load<Component>(in, i)) - (kCodes - 1);
    out[i] = static_cast<float>(centred_twice) * kScale;
  }
}

template <typename Component>
void convertFloating(const std::byte* in, size_t count, float* out) {
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<float>(load<Component>(in, i));
}

constexpr std::array kFormats = {
    SampleFormat{"cu8", 1, convertUnsigned<uint8_t, int32_t>},
    SampleFormat{"cs8", 1, convertSigned<int8_t>},
    SampleFormat{"cu16", 2, convertUnsigned<uint16_t, int32_t>},
    SampleFormat{"cs16", 2, convertSigned<int16_t>},
    SampleFormat{"cu32", 4, convertUnsigned<uint32_t, int64_t>},
    SampleFormat{"cs32", 4, convertSigned<int32_t>},
    SampleFormat{"cf32", 4, convertFloating<float>},
    SampleFormat{"cf64", 8, convertFloating<double>},
};

/// Other names for them, from the file extensions of recorders.
constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kAliases = {{
    {"complex", "cf32"},
    {"cfile", "cf32"},
    {"complex16s", "cs8"},
    {"complex16u", "cu8"},
    {"complex32s", "cs16"},
    {"complex32u", "cu16"},
    {"c8", "cs8"},
    {"c16", "cs16"},
    {"fc32", "cf32"},
}};

}  // namespace

size_t SampleLayout::sampleBytes() const {
  return format != nullptr ? format->sampleBytes() : sizeof(std::complex<float>);
}

bool SampleLayout::isReady() const {
  return (format == nullptr || format->convert == convertFloating<float>)&&scale == 1.0F;
}

void SampleLayout::toFloats(const std::byte* in, size_t samples, std::complex<float>* out) const {
  auto* const components = reinterpret_cast<float*>(out);  // an array of parts, as it is defined
  if (format != nullptr) {
    format->convert(in, 2 * samples, components);
  } else {
    convertFloating<float>(in, 2 * samples, components);
  }
  if (scale == 1.0F) return;
  std::for_each_n(components, 2 * samples, [this](float& component) { component *= scale; });
}

const SampleFormat* findSampleFormat(std::string_view name) {
  for (const SampleFormat& format : kFormats) {
    if (format.name == name) return &format;
  }
  return nullptr;
}

const SampleFormat* formatOfExtension(std::string_view extension) {
  for (const auto& [alias, name] : kAliases) {
    if (alias == extension) return findSampleFormat(name);
  }
  return findSampleFormat(extension);
}

void reverseComponents(std::span<std::byte> bytes, size_t component_bytes) {
  for (; bytes.size() >= component_bytes; bytes = bytes.subspan(component_bytes)) {
    std::reverse(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(component_bytes));
  }
}

std::string sampleFormatNames(std::string_view separator) {
  std::string names;
  for (const SampleFormat& format : kFormats) {
    if (!names.empty()) names += separator;
    names += format.name;
  }
  return names;
}

}  // namespace pelagrim_host
