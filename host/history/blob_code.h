#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "survey/channel.h"

namespace pelagrim_host {

// How levels, edges and lists are packed into bytes. Every unpack checks all that it is given and
// throws BlobError, whose message says what is wrong with the bytes.

struct BlobError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Levels without loss: the first bytes of all floats, then the second ones, ..., deflated. Noise
/// differs most in its last bytes, so the first ones become short.
std::string packExactLevels(std::span<const float> levels_db);
std::vector<float> unpackExactLevels(std::string_view bytes, size_t count);

/// Levels in steps of 0.1 dB: differences from bin to bin as 16-bit integers, low bytes and then
/// high bytes, deflated. What is not a number stays that; others are limited to +-3276.7 dB.
std::string packCentibels(std::span<const float> levels_db);
std::vector<float> unpackCentibels(std::string_view bytes, size_t count);

/// Milliseconds that never decrease, as differences of seven bits a byte.
std::string packEdges(std::span<const uint32_t> edges_ms);
std::vector<uint32_t> unpackEdges(std::string_view bytes);

/// A text, deflated.
std::string packText(std::string_view text);
std::string unpackText(std::string_view bytes, size_t size);

/// Channels by slot, with all their digits; `kChannelBytes` each before they are deflated.
inline constexpr size_t kChannelBytes = 80;
std::string packChannels(const std::map<long, pelagrim::Channel>& channels);
std::map<long, pelagrim::Channel> unpackChannels(std::string_view bytes, size_t count);

}  // namespace pelagrim_host
