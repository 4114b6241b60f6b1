#pragma once

#include <string_view>

namespace pelagrim_host {

/// What is in page/, as it was when the program was built; the scripts are one behind the other.
extern const std::string_view kPageHtml;
extern const std::string_view kPageCss;
extern const std::string_view kPictureCss;
extern const std::string_view kPageJs;

}  // namespace pelagrim_host
