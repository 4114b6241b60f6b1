#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "host/sources/stop_function.h"

namespace pelagrim_host {

/// Bytes that are read once from front to back: a file, a pipe, the member of an archive. One
/// thread uses a stream. Failures are thrown as SourceError, naming the file.
class ByteStream {
 public:
  virtual ~ByteStream() = default;
  ByteStream() = default;
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  /// Fills `bytes` as far as the stream goes and returns how many came: fewer only at the end.
  virtual size_t read(std::span<std::byte> bytes) = 0;

  /// Passes over `count` bytes and returns how many there were: fewer only at the end.
  virtual uint64_t skip(uint64_t count);

  /// The length of the whole stream in bytes, where it is known beforehand.
  virtual std::optional<uint64_t> size() const = 0;
};

/// Opens a file, a pipe by its name, or standard input for "-". When `stop` says so, waiting for a
/// pipe is over, as if the pipe had ended.
std::unique_ptr<ByteStream> openFileBytes(const std::filesystem::path& path, StopFunction stop);

}  // namespace pelagrim_host
