#include "host/process/file_owner.h"

#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

namespace pelagrim_host {
namespace {

/// Who called sudo; nothing if nobody did.
std::optional<uid_t> sudoCaller() {
  const char* const text = std::getenv("SUDO_UID");
  if (geteuid() != 0 || text == nullptr) return std::nullopt;
  const std::string_view digits(text);
  uid_t user = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), user);
  if (error != std::errc() || stop != digits.data() + digits.size()) return std::nullopt;
  return user;
}

}  // namespace

bool isOwnUser(uid_t owner) {
  return owner == geteuid() || owner == 0 || sudoCaller() == owner;
}

}  // namespace pelagrim_host
