#pragma once

#include <string>

namespace pelagrim_host {

/// For arguments that name something: what is wrong with the value; empty if nothing is. A variable
/// that a script forgot to set must not turn into the default.
inline std::string notEmpty(const std::string& value) {
  return value.empty() ? "an empty text was given; name one or leave it out" : "";
}

}  // namespace pelagrim_host
