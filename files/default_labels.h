#pragma once

#include <string_view>

namespace pelagrim {

/// The text that a new labels file gets: a band plan of allocations to start from.
extern const std::string_view kDefaultLabelsText;

}  // namespace pelagrim
