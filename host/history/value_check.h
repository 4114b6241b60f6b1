#pragma once

#include <string_view>

#include "host/history/history_values.h"

namespace pelagrim_host {

// What a record may hold, for those who write it and those who read it. Empty if the value makes
// sense, else what is wrong with it.

std::string_view whatIsWrong(const DwellRecord& dwell);
std::string_view whatIsWrong(const HistoryAnchor& anchor);

}  // namespace pelagrim_host
