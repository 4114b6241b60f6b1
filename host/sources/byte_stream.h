#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "host/sources/stop_function.h"

namespace pelagrim_host {

/// Bytes that are read once from front to back: a file, a pipe, a member of an archive. Used by one
/// thread. Failures are thrown as SourceError, naming the file.
class ByteStream {
 public:
  virtual ~ByteStream() = default;
  ByteStream() = default;
  ByteStream(const ByteStream&) = delete;
  ByteStream& operator=(const ByteStream&) = delete;

  /// Fills `bytes` and returns how many were read: fewer only at the end.
  virtual size_t read(std::span<std::byte> bytes) = 0;

  /// Skips `count` bytes and returns how many there were: fewer only at the end.
  virtual uint64_t skip(uint64_t count);

  /// The length of the whole stream in bytes, if it is known beforehand.
  virtual std::optional<uint64_t> size() const = 0;
};

/// Opens a file, a named pipe, or standard input for "-". When `stop` says so, waiting for a pipe
/// ends as if the pipe had ended; waiting for longer than `stall_seconds` is a failure.
std::unique_ptr<ByteStream> openFileBytes(const std::filesystem::path& path, StopFunction stop,
                                          std::optional<double> stall_seconds = {});

}  // namespace pelagrim_host
