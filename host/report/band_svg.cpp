#include "host/report/band_svg.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/report/mark_colours.h"
#include "host/report/page_assets.h"
#include "host/report/report_words.h"
#include "host/report/whole_band.h"
#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr double kWidth = 1200.0;
constexpr double kHeadHeight = 34.0;  // the title, above the picture
constexpr double kFootHeight = 26.0;  // the legend, below it
constexpr double kHeadDrop = 22.0;    // from the top down to the baseline of the title

// In addition to the picture's style on the page.
constexpr std::string_view kFileStyle =
    "text{font-family:system-ui,'DejaVu Sans',sans-serif}"
    ".band .title{font-size:17px;font-weight:600}";

std::tm localTime(int64_t unix_ms) {
  const auto seconds = static_cast<std::time_t>(unix_ms / 1000);
  std::tm local = {};
  localtime_r(&seconds, &local);
  return local;
}

bool beginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// At most `room` characters of `text`, ending in an ellipsis if it was longer.
std::string shortened(const std::string& text, size_t room) {
  const auto count = std::count_if(text.begin(), text.end(), beginsCharacter);
  if (static_cast<size_t>(count) <= room) return text;
  size_t kept = 0;
  size_t end = 0;
  for (; end < text.size(); ++end) {
    if (beginsCharacter(text[end]) && ++kept == room) break;
  }
  return text.substr(0, end) + "\u2026";
}

class Drawing {
 public:
  explicit Drawing(const ReportData& report)
      : report_(report), at_(report.layout.measures), band_(report, kWidth) {}

  std::string finish() {
    add(R"(<svg xmlns="http://www.w3.org/2000/svg" class="band" width="{0}" height="{1}" )"
        R"(viewBox="0 -{2} {0} {1}" role="img"><style>{3}{4}</style>)"
        R"(<rect y="-{2}" width="{0}" height="{1}" fill="#fff"/>)",
        kWidth, at_.height + kHeadHeight + kFootHeight, kHeadHeight, kPictureCss, kFileStyle);
    drawTitle();
    drawScales();
    drawStrip();
    drawMarks();
    drawAxis();
    for (const MarkLabel& label : markLabels(band_)) text(label.x, label.y, "label", label.words);
    drawLegend();
    add("</svg>\n");
    return std::move(out_);
  }

 private:
  template <typename... Values>
  void add(fmt::format_string<Values...> format, Values&&... values) {
    fmt::format_to(std::back_inserter(out_), format, std::forward<Values>(values)...);
  }
  void text(double x, double y, std::string_view style, std::string_view words) {
    add(R"(<text x="{:.1f}" y="{:.1f}" class="{}">{}</text>)", x, y, style, markupText(words));
  }
  void line(std::string_view style, double x1, double y1, double x2, double y2) {
    add(R"(<path class="{}" d="M{:.1f} {:.1f}L{:.1f} {:.1f}"/>)", style, x1, y1, x2, y2);
  }

  void drawTitle() {
    const std::string title = titleOf(report_);
    add("<title>{}</title>", title);
    text(12.0, kHeadDrop - kHeadHeight, "title", title);
    text(band_.plotRight(), kHeadDrop - kHeadHeight, "soft end", timeSpan());
  }

  std::string timeSpan() const {
    const auto& [first_ms, last_ms] =
        std::pair(report_.layout.first_unix_ms, report_.layout.last_unix_ms);
    // If the times span a clock change, each has its zone; otherwise the zone is shown once.
    const std::string first_zone = fmt::format("{:%Z}", localTime(first_ms));
    const std::string last_zone = fmt::format("{:%Z}", localTime(last_ms));
    std::string first = timeText(first_ms);
    std::string last = timeText(last_ms);
    if (first_zone != last_zone) {
      first += " " + first_zone;
      last += " " + last_zone;
    }
    return fmt::format(
        fmt::runtime(timeSpanWords(report_)), fmt::arg("first", first), fmt::arg("last", last),
        fmt::arg("zone", first_zone == last_zone ? std::string_view(last_zone) : kLocalTimeWords));
  }

  std::string_view guessMark() const { return report_.times_are_guesses ? kGuessMark : ""; }

  std::string timeText(int64_t unix_ms) const {
    const std::string seconds =
        fmt::format("{}{:%Y-%m-%d %H:%M:%S}", guessMark(), localTime(unix_ms));
    return report_.layout.shows_milliseconds ? fmt::format("{}.{:03}", seconds, unix_ms % 1000)
                                             : seconds;
  }

  void drawScales() {
    const double text_x = at_.left - at_.scale_gap;
    for (const auto& [y, over_floor_db] : report_.layout.level_lines) {
      line("grid", at_.left, y, band_.plotRight(), y);
      text(text_x, y + at_.scale_drop, "soft end", fmt::format("{:.0f}", over_floor_db));
    }
    add(R"svg(<text class="soft middle" transform="translate({} {:.1f}) rotate(-90)">{}</text>)svg",
        at_.scale_title_x, 0.5 * (at_.level_top + at_.level_bottom), kLevelScaleWords);
    for (const auto& [y, unix_ms] : report_.layout.time_lines) {
      const std::tm local = localTime(unix_ms);
      const std::string date = fmt::format("{:%Y-%m-%d}", local);
      const std::string clock = fmt::format("{}{:%H:%M:%S}", guessMark(), local);
      const bool is_short = report_.layout.shows_milliseconds;
      line("grid", at_.left, y, band_.plotRight(), y);
      text(text_x, y - 1.0, "soft end", is_short ? clock : date);
      text(text_x, y - 1.0 + at_.label_height, "soft end",
           is_short ? fmt::format(".{:03} s", unix_ms % 1000) : clock);
    }
  }

  void drawStrip() {
    const double text_y = at_.strip_top + at_.strip_drop;
    const std::vector<PlanStretch>& strip = report_.layout.strip;
    if (!strip.empty()) text(at_.left - at_.scale_gap, text_y, "soft end", kBandPlanWords);
    bool is_other = false;
    for (const PlanStretch& stretch : strip) {
      const double left = std::max(band_.xOf(stretch.low_hz), at_.left);
      const double right = std::min(band_.xOf(stretch.high_hz), band_.plotRight());
      const double width = std::max(right - left, at_.min_mark);
      const std::string name = displayText(report_.band_plan[stretch.range].name);
      add(R"(<rect class="plan{}" x="{:.1f}" y="{}" width="{:.1f}" height="{}">)"
          R"(<title>{}</title></rect>)",
          is_other ? " other" : "", left, at_.strip_top, width, at_.strip_bottom - at_.strip_top,
          markupText(name));
      is_other = !is_other;
      const double room = (width - 2.0 * at_.strip_gap) / at_.character_width;
      if (room < 3.0) continue;
      text(left + at_.strip_gap, text_y, "name", shortened(name, static_cast<size_t>(room)));
    }
  }

  void drawMarks() {
    for (const MarkBox& box : markBoxes(band_)) {
      const std::string_view changed = wordsOf(report_.channels[box.channel].change).mark_style;
      const std::string& shade = activityShades()[report_.layout.marks[box.channel].shade];
      add(R"(<rect class="mark{}{}{}" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="{:.1f}" )"
          R"(fill="{}" stroke="{}"/>)",
          box.is_edged ? " edged" : "", changed.empty() ? "" : " ", changed, box.left, box.top,
          box.width, box.height, shade, shade);
    }
  }

  void drawAxis() {
    const double y = at_.level_bottom;
    line("axis", at_.left, y, band_.plotRight(), y);
    for (const auto& [x, mhz] : frequencyTicks(band_)) {
      line("axis", x, y, x, y + at_.tick_length);
      text(x, y + at_.tick_drop, "middle", mhz);
    }
    text(at_.left - at_.unit_gap, y + at_.tick_drop, "soft end", kFrequencyUnitWords);
  }

  void drawLegend() {
    constexpr double kWordsWidth = 175.0;
    const double y = at_.height + 4.0;
    const double text_y = y + at_.shade_height - 2.0;
    double x = at_.left;
    text(x, text_y, "soft", kLeastActiveWords);
    x += kWordsWidth;
    for (const std::string& shade : activityShades()) {
      add(R"(<rect x="{}" y="{}" width="{}" height="{}" fill="{}"/>)", x, y, at_.shade_width,
          at_.shade_height, shade);
      x += at_.shade_width;
    }
    text(x + at_.scale_gap, text_y, "soft", kMostActiveWords);
    text(x + 100.0, text_y, "soft", changeLegend(report_));
  }

  const ReportData& report_;
  const PictureMeasures& at_;
  WholeBand band_;
  std::string out_;
};

}  // namespace

std::string bandSvg(const ReportData& report) {
  return Drawing(report).finish();
}

}  // namespace pelagrim_host
