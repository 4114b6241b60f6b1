#pragma once

namespace pelagrim {

/// Runs `work` and lets no exception out. Returns whether it ran to its end. Every entry point that
/// can fail goes through here: nothing but plain data crosses the boundary. A cancelled thread
/// would end the process here, so the boundary forbids hosts to cancel one inside a call.
template <typename Work>
bool attempt(Work&& work) noexcept {
  try {
    work();
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace pelagrim
