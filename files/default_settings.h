#pragma once

#include <string_view>

namespace pelagrim {

/// The text that a new settings file gets: the defaults, explained.
extern const std::string_view kDefaultSettingsText;

}  // namespace pelagrim
