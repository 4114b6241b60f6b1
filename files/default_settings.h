#pragma once

#include <string_view>

namespace pelagrim {

/// The text of a settings file that has just been created: the defaults, explained.
extern const std::string_view kDefaultSettingsText;

}  // namespace pelagrim
