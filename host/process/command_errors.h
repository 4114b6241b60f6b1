#pragma once

#include <stdexcept>

namespace pelagrim_host {

/// A command line that cannot be carried out. The message names the option and says what to do.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// A command that cannot be carried out now but may work later.
struct TryAgainLater : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace pelagrim_host
