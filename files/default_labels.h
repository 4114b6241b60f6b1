#pragma once

#include <string_view>

namespace pelagrim {

/// The text of a labels file that has just been created: a band plan of allocations to start from.
extern const std::string_view kDefaultLabelsText;

}  // namespace pelagrim
