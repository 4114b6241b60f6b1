#pragma once

#include <string>

namespace pelagrim_host {

/// A tune request of the plug-in and what it was told.
struct TuneRequest {
  double hz = 0.0;
  int answer = 0;           ///< a WendleTuneResult
  std::string why_refused;  ///< the source's own words where it failed, else empty
};

}  // namespace pelagrim_host
