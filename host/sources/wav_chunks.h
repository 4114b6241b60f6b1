#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// Where a chunk's content begins, and how long its header says it is.
struct WavChunk {
  uint64_t first_byte;
  uint64_t bytes;
};

/// The chunks of a RIFF or RF64 file. libsndfile does not say where they are, and it must not be
/// asked for their contents, because it can crash on those of a damaged file. Any other file has
/// none, and the list ends at the first thing that is not a chunk.
class WavChunks {
 public:
  /// `file`: a descriptor to read from, which is not closed.
  explicit WavChunks(int file);

  std::optional<WavChunk> find(std::string_view id) const;

  /// The content of the chunk, at most 4096 bytes; empty if there is no such chunk.
  std::string content(std::string_view id) const;

  /// How many bytes of samples the header promises; nothing if a streaming writer did not know.
  std::optional<uint64_t> promisedBytes() const;

  /// How many bytes follow the samples, which end at `end`, and are not chunks such as a title; 0
  /// if they are few.
  uint64_t strayBytes(uint64_t end) const;

  uint64_t fileBytes() const { return file_bytes_; }

 private:
  uint32_t numberAt(uint64_t byte) const;
  std::string tagAt(uint64_t byte) const;
  std::string bytesAt(uint64_t byte, uint64_t count) const;

  int file_;
  uint64_t file_bytes_ = 0;
};

}  // namespace pelagrim_host
