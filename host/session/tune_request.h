#pragma once

#include <string>

namespace pelagrim_host {

/// A tune request from the plug-in and the answer to it.
struct TuneRequest {
  double hz = 0.0;
  int answer = 0;           ///< a WendleTuneResult
  std::string why_refused;  ///< in the source's own words, if it failed; else empty
};

}  // namespace pelagrim_host
