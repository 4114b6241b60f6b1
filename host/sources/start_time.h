#pragma once

#include <cstdint>
#include <string>

namespace pelagrim_host {

/// When a source's first sample was received, as far as is known.
struct StartTime {
  int64_t unix_ms;
  std::string origin;     ///< "the recording", "the age of its file"
  bool is_guess = false;  ///< from the age of the file
};

}  // namespace pelagrim_host
