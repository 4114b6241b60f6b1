#pragma once

namespace pelagrim {

/// Runs `work` and lets no exception out. Returns whether it ran to its end. Every entry point that
/// can fail goes through here, because only plain data may cross the boundary. Cancelling a thread
/// here would end the process, so hosts must not cancel one inside a call.
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
