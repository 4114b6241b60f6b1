#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace pelagrim_host {

/// A checksum of bytes that arrive in pieces.
class Digest {
 public:
  enum class Kind { kSha256, kSha512 };

  explicit Digest(Kind kind);

  void add(std::span<const std::byte> bytes);

  /// The sum in lower-case hexadecimal digits. Call it once, at the end.
  std::string hex();

 private:
  std::shared_ptr<void> context_;
};

/// The SHA-256 of a text.
std::string sha256Of(std::string_view text);

}  // namespace pelagrim_host
