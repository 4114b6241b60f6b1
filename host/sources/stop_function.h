#pragma once

#include <functional>

namespace pelagrim_host {

/// Whether the user wants the end; never empty. What may take long asks it ten times a second or
/// more often, in the thread that uses the source, and then returns early with what there is.
using StopFunction = std::function<bool()>;

/// For whoever has no reason to stop early.
inline bool neverStop() {
  return false;
}

}  // namespace pelagrim_host
