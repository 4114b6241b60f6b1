#pragma once

#include <functional>

namespace pelagrim_host {

/// Whether the user wants to stop; never empty. Anything that may take long asks it at least ten
/// times a second, on the thread that uses the source, and returns early with what it has.
using StopFunction = std::function<bool()>;

/// For callers without a reason to stop early.
inline bool neverStop() {
  return false;
}

}  // namespace pelagrim_host
