#include "host/history/blob_code.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace pelagrim_host {
namespace {

// The packed forms are little-endian, as is every processor that the program is built for.
static_assert(std::endian::native == std::endian::little);

constexpr int16_t kNotANumber = std::numeric_limits<int16_t>::min();

std::string deflated(std::string_view plain) {
  uLongf size = compressBound(plain.size());
  std::string packed(size, '\0');
  const int result =
      compress2(reinterpret_cast<Bytef*>(packed.data()), &size,
                reinterpret_cast<const Bytef*>(plain.data()), plain.size(), Z_DEFAULT_COMPRESSION);
  if (result != Z_OK) throw std::bad_alloc();
  packed.resize(size);
  return packed;
}

/// Exactly `size` bytes, from all of the packed ones.
std::string inflated(std::string_view packed, size_t size) {
  std::string plain(size, '\0');
  Bytef nothing;  // zlib needs an address even for no bytes
  uLongf written = size;
  uLong read = packed.size();
  const int result = uncompress2(size == 0 ? &nothing : reinterpret_cast<Bytef*>(plain.data()),
                                 &written, reinterpret_cast<const Bytef*>(packed.data()), &read);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  if (result == Z_BUF_ERROR) throw BlobError("the packed bytes are too few or too many");
  if (result != Z_OK) throw BlobError("the packed bytes are damaged");
  if (written != size) throw BlobError("the packed bytes are too few");
  if (read != packed.size()) throw BlobError("the packed bytes go on after their end");
  return plain;
}

/// Byte 0 of every element, then byte 1 of every element, ...
template <typename Element>
std::string shuffled(const std::vector<Element>& elements) {
  std::string bytes(elements.size() * sizeof(Element), '\0');
  const auto* const from = reinterpret_cast<const char*>(elements.data());
  for (size_t i = 0; i < bytes.size(); ++i) {
    bytes[i % sizeof(Element) * elements.size() + i / sizeof(Element)] = from[i];
  }
  return bytes;
}

template <typename Element>
std::vector<Element> unshuffled(std::string_view bytes) {
  std::vector<Element> elements(bytes.size() / sizeof(Element));
  auto* const to = reinterpret_cast<char*>(elements.data());
  for (size_t i = 0; i < bytes.size(); ++i) {
    to[i] = bytes[i % sizeof(Element) * elements.size() + i / sizeof(Element)];
  }
  return elements;
}

int16_t centibels(float level_db) {
  if (std::isnan(level_db)) return kNotANumber;
  return static_cast<int16_t>(
      std::lround(10.0 * static_cast<double>(std::clamp(level_db, -3276.7F, 3276.7F))));
}

/// Visits every member of a channel that is stored, in the order of the bytes.
template <typename OneChannel, typename Visit>
void visitMembers(OneChannel& channel, const Visit& visit) {
  visit(channel.centre_hz);
  visit(channel.width_hz);
  visit(channel.peak_db);
  visit(channel.floor_db);
  visit(channel.first_unix_ms);
  visit(channel.last_unix_ms);
  visit(channel.hits);
  visit(channel.looks);
  visit(channel.min_width_hz);
  visit(channel.max_width_hz);
}

}  // namespace

std::string packExactLevels(std::span<const float> levels_db) {
  return deflated(shuffled(std::vector<float>(levels_db.begin(), levels_db.end())));
}

std::vector<float> unpackExactLevels(std::string_view bytes, size_t count) {
  return unshuffled<float>(inflated(bytes, count * sizeof(float)));
}

std::string packCentibels(std::span<const float> levels_db) {
  std::vector<uint16_t> differences;
  differences.reserve(levels_db.size());
  uint16_t last = 0;
  for (const float level_db : levels_db) {
    const auto level = static_cast<uint16_t>(centibels(level_db));
    differences.push_back(static_cast<uint16_t>(level - last));
    last = level;
  }
  return deflated(shuffled(differences));
}

std::vector<float> unpackCentibels(std::string_view bytes, size_t count) {
  std::vector<float> levels_db;
  levels_db.reserve(count);
  uint16_t level = 0;
  for (const uint16_t step : unshuffled<uint16_t>(inflated(bytes, count * sizeof(uint16_t)))) {
    level = static_cast<uint16_t>(level + step);
    const auto centibels = static_cast<int16_t>(level);
    levels_db.push_back(centibels == kNotANumber ? std::numeric_limits<float>::quiet_NaN()
                                                 : static_cast<float>(centibels) / 10.0F);
  }
  return levels_db;
}

std::string packEdges(std::span<const uint32_t> edges_ms) {
  std::string bytes;
  uint32_t last = 0;
  for (const uint32_t edge : edges_ms) {
    uint32_t rest = edge - last;
    last = edge;
    for (; rest >= 0x80; rest >>= 7) bytes.push_back(static_cast<char>(rest | 0x80));
    bytes.push_back(static_cast<char>(rest));
  }
  return bytes;
}

std::vector<uint32_t> unpackEdges(std::string_view bytes) {
  std::vector<uint32_t> edges_ms;
  uint64_t edge = 0;
  for (size_t i = 0; i < bytes.size();) {
    uint64_t step = 0;
    for (int shift = 0;; shift += 7) {
      if (i == bytes.size()) throw BlobError("the last edge is cut off");
      if (shift > 28) throw BlobError("an edge is too long");
      const auto byte = static_cast<unsigned char>(bytes[i++]);
      step |= uint64_t{byte & 0x7FU} << shift;
      if (byte < 0x80) break;
    }
    edge += step;
    if (edge > std::numeric_limits<uint32_t>::max()) throw BlobError("an edge is too late");
    edges_ms.push_back(static_cast<uint32_t>(edge));
  }
  return edges_ms;
}

std::string packText(std::string_view text) {
  return deflated(text);
}

std::string unpackText(std::string_view bytes, size_t size) {
  return inflated(bytes, size);
}

std::string packChannels(const std::map<long, pelagrim::Channel>& channels) {
  std::string bytes;
  const auto append = [&](const auto& member) {
    bytes.append(reinterpret_cast<const char*>(&member), sizeof member);
  };
  for (const auto& [slot, channel] : channels) {
    append(int64_t{slot});
    visitMembers(channel, append);
  }
  return deflated(bytes);
}

std::map<long, pelagrim::Channel> unpackChannels(std::string_view bytes, size_t count) {
  const std::string plain = inflated(bytes, count * kChannelBytes);
  std::map<long, pelagrim::Channel> channels;
  const char* next = plain.data();
  const auto take = [&](auto& member) {
    std::memcpy(&member, next, sizeof member);
    next += sizeof member;
  };
  for (size_t i = 0; i < count; ++i) {
    int64_t slot = 0;
    take(slot);
    pelagrim::Channel channel;
    visitMembers(channel, take);
    if (!channels.emplace(slot, channel).second) throw BlobError("two channels share a slot");
  }
  return channels;
}

}  // namespace pelagrim_host
