#pragma once

#include <string_view>

namespace pelagrim_host {

/// What is in page/, as it was when the program was built. The page's style begins with that of the
/// picture; the scripts are one behind the other.
extern const std::string_view kPageHtml;
extern const std::string_view kPageCss;
extern const std::string_view kPictureCss;
extern const std::string_view kPageJs;

/// What a content policy calls the style and the script by: "sha256-" and the sum in Base64.
extern const std::string_view kPageCssHash;
extern const std::string_view kPageJsHash;

}  // namespace pelagrim_host
