#include "host/sources/wav_chunks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace pelagrim_host {
namespace {

constexpr uint64_t kFirstChunk = 12;
constexpr uint64_t kHeadBytes = 8;  // a chunk's name and length
constexpr int kMaxChunks = 10'000;  // a file of nothing but chunks would take too long

/// Chunks have even lengths.
uint64_t endOf(const WavChunk& chunk) {
  return chunk.first_byte + chunk.bytes + chunk.bytes % 2;
}

}  // namespace

WavChunks::WavChunks(int file) : file_(file) {
  struct stat status = {};
  if (fstat(file, &status) == 0) file_bytes_ = static_cast<uint64_t>(status.st_size);
}

std::optional<WavChunk> WavChunks::find(std::string_view id) const {
  const std::string kind = tagAt(0);
  if (kind != "RIFF" && kind != "RF64") return std::nullopt;
  uint64_t at = kFirstChunk;
  for (int i = 0; i < kMaxChunks; ++i) {
    const std::string tag = tagAt(at);
    const WavChunk chunk = {at + kHeadBytes, numberAt(at + 4)};
    if (tag == id) return chunk;
    if (tag.empty()) break;
    at = endOf(chunk);
  }
  return std::nullopt;
}

std::string WavChunks::content(std::string_view id) const {
  constexpr uint64_t kMaxBytes = 4096;
  const auto chunk = find(id);
  return chunk ? bytesAt(chunk->first_byte, std::min(chunk->bytes, kMaxBytes)) : "";
}

std::optional<uint64_t> WavChunks::promisedBytes() const {
  // What streaming writers put there: the largest 32-bit number, signed or not, less a header.
  constexpr uint64_t kUnknownFrom = 0x7FFF0000;
  const auto data = find("data");
  if (!data) return std::nullopt;
  if (data->bytes < kUnknownFrom) return data->bytes;
  const std::string sizes = content("ds64");
  if (sizes.size() < 16) return std::nullopt;
  uint64_t bytes = 0;
  std::memcpy(&bytes, sizes.data() + 8, 8);  // little-endian, as this machine is
  return bytes;
}

uint64_t WavChunks::strayBytes(uint64_t end) const {
  constexpr uint64_t kFewBytes = 4096;
  uint64_t at = end + end % 2;
  for (int i = 0; i < kMaxChunks && at + kFewBytes < file_bytes_; ++i) {
    const uint64_t next = endOf({at + kHeadBytes, numberAt(at + 4)});
    if (tagAt(at).empty() || next > file_bytes_ + 1) return file_bytes_ - end;
    at = next;
  }
  return 0;
}

/// A 32-bit number; 0 past the end.
uint32_t WavChunks::numberAt(uint64_t byte) const {
  uint32_t number = 0;  // little-endian, as this machine is
  const std::string bytes = bytesAt(byte, 4);
  if (bytes.size() == 4) std::memcpy(&number, bytes.data(), 4);
  return number;
}

/// The four letters that name a chunk; empty if they are not letters.
std::string WavChunks::tagAt(uint64_t byte) const {
  const auto is_printable = [](char c) { return c >= ' ' && c <= '~'; };
  std::string tag = bytesAt(byte, 4);
  const bool is_tag = tag.size() == 4 && std::all_of(tag.begin(), tag.end(), is_printable);
  return is_tag ? tag : "";
}

/// Fewer at the end of the file.
std::string WavChunks::bytesAt(uint64_t byte, uint64_t count) const {
  std::string bytes(count, '\0');
  const ssize_t got = pread(file_, bytes.data(), count, static_cast<off_t>(byte));
  bytes.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
  return bytes;
}

}  // namespace pelagrim_host
