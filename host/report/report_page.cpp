#include "host/report/report_page.h"

#include <string_view>

#include "host/report/page_assets.h"
#include "host/report/page_data.h"
#include "host/report/report_words.h"
#include "host/text/display_text.h"

namespace pelagrim_host {

std::string reportPage(const ReportData& report) {
  std::string page;
  std::string_view rest = kPageHtml;
  const auto fill = [&](std::string_view place, std::string_view text) {
    const size_t at = rest.find(place);
    page += rest.substr(0, at);
    page += text;
    rest.remove_prefix(at + place.size());
  };
  const std::string title = markupText(titleOf(report));
  fill("{{page.css hash}}", kPageCssHash);
  fill("{{page.js hash}}", kPageJsHash);
  fill("{{title}}", title);
  fill("{{page.css}}", kPageCss);
  fill("{{title}}", title);
  fill("{{title}}", title);
  fill("{{data}}", pageData(report));
  fill("{{page.js}}", kPageJs);
  page += rest;
  return page;
}

}  // namespace pelagrim_host
