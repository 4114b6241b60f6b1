#pragma once

#include <cstddef>

/// Faults on demand in the C library functions that the plug-in uses. The test executable defines
/// and exports them itself, so the plug-in, the C++ library and the C library's own fopen all get
/// these. Calls fail only inside Armed.
namespace faults {

enum class Call { kAllocate, kOpenToRead, kOpenToWrite, kRead, kWrite, kClose };

/// Which calls fail: `count` of them, starting with number `first` (from 1; 0: none).
struct Plan {
  Call call = Call::kAllocate;
  long first = 0;
  long count = 1;
  int error = 0;  ///< errno of a failed file call; a failed write has written half
};

void set(const Plan& plan);

/// Calls of the planned kind seen since set.
long callsSeen();

/// Blocks that the process has allocated and not freed.
long liveBlocks();

/// The largest number of bytes that a write inside Armed has left in a buffer of the C library.
size_t bytesHeldBack();

/// The plan applies while one of these lives, on the thread that made it.
struct Armed {
  Armed();
  ~Armed();
  Armed(const Armed&) = delete;
  Armed& operator=(const Armed&) = delete;
};

/// Makes the call with the plan applied.
template <typename Work>
void during(const Plan& plan, Work&& work) {
  set(plan);
  {
    const Armed armed;
    work();
  }
  set({});
}

}  // namespace faults
