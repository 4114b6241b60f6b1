#pragma once

#include <stdexcept>
#include <string>

namespace pelagrim_host {

/// A command line that cannot be carried out. The line names the option and says what to do.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// For arguments that name something: what is wrong with the value, empty when nothing is. An unset
/// variable of a script must not turn into the default.
inline std::string notEmpty(const std::string& value) {
  return value.empty() ? "an empty text was given; name one or leave it out" : "";
}

}  // namespace pelagrim_host
