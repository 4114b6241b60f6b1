#pragma once

#include <string_view>

namespace pelagrim_host {

/// The files page.html, page.css and page.js as they were when the program was built.
extern const std::string_view kPageHtml;
extern const std::string_view kPageCss;
extern const std::string_view kPageJs;

}  // namespace pelagrim_host
