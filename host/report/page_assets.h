#pragma once

#include <string_view>

namespace pelagrim_host {

/// The files of page/, as they were when the program was built. The page's style begins with that
/// of the picture; the scripts are joined into one.
extern const std::string_view kPageHtml;
extern const std::string_view kPageCss;
extern const std::string_view kPictureCss;
extern const std::string_view kPageJs;

/// The names of the style and the script in a content security policy: "sha256-" and the sum in
/// Base64.
extern const std::string_view kPageCssHash;
extern const std::string_view kPageJsHash;

}  // namespace pelagrim_host
