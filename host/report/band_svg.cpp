#include "host/report/band_svg.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iterator>
#include <numeric>
#include <string_view>
#include <tuple>

#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

constexpr double kWidth = 1200.0;
constexpr double kHeadHeight = 34.0;  // the title, above the picture
constexpr double kFootHeight = 26.0;  // the legend, below it

constexpr const char* kStyle =
    "text{font:11.5px system-ui,'DejaVu Sans',sans-serif;fill:#1b1f24}"
    ".soft{fill:#59636e}.grid{stroke:#d1d9e0}.axis{stroke:#59636e}"
    ".plan{fill:#e7edf3;stroke:#8c959f;stroke-width:.75}.other{fill:#f6f1e4}"
    ".mark{stroke-width:.8}"
    ".new{stroke:#1b1f24;stroke-width:1.75}"
    ".gone{fill-opacity:0;stroke:#1b1f24;stroke-width:1.25;stroke-dasharray:3 2}"
    ".label{text-anchor:middle;paint-order:stroke;stroke:#fff;stroke-width:3px}"
    ".title{font-size:17px;font-weight:600}.end{text-anchor:end}.middle{text-anchor:middle}";

std::tm localTime(int64_t unix_ms) {
  const auto seconds = static_cast<std::time_t>(unix_ms / 1000);
  std::tm local = {};
  localtime_r(&seconds, &local);
  return local;
}

/// What stands before the frequency of a channel that has changed.
std::string_view symbolOf(Change change) {
  switch (change) {
    case Change::kNone:
      break;
    case Change::kNew:
      return "+";
    case Change::kGone:
      return "\u00d7";
    case Change::kMoreOften:
      return "\u25b2";
    case Change::kLessOften:
      return "\u25bc";
  }
  return "";
}

bool beginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

size_t characterCount(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

/// At most `room` characters of `text`, the last of them an ellipsis where it was longer.
std::string shortened(const std::string& text, size_t room) {
  if (characterCount(text) <= room) return text;
  size_t kept = 0;
  size_t end = 0;
  for (; end < text.size(); ++end) {
    if (beginsCharacter(text[end]) && ++kept == room) break;
  }
  return text.substr(0, end) + "\u2026";
}

class Drawing {
 public:
  explicit Drawing(const ReportData& report) : report_(report), at_(report.layout.measures) {}

  std::string finish() {
    add(R"(<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{1}" viewBox="0 -{2} {0} {1}" )"
        R"(role="img"><style>{3}</style><rect y="-{2}" width="{0}" height="{1}" fill="#fff"/>)",
        kWidth, at_.height + kHeadHeight + kFootHeight, kHeadHeight, kStyle);
    drawTitle();
    drawScales();
    drawStrip();
    drawMarks();
    drawAxis();
    drawLabels();
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

  double plotWidth() const { return kWidth - at_.left - at_.right; }
  bool isCrowded() const { return static_cast<double>(report_.channels.size()) > plotWidth(); }
  double xOf(double hz) const {
    const auto& [low_hz, high_hz] = report_.layout.span;
    return at_.left + (hz - low_hz) / (high_hz - low_hz) * plotWidth();
  }

  void drawTitle() {
    const auto is_gone = [](const ReportedChannel& one) { return one.change == Change::kGone; };
    const auto& channels = report_.channels;
    const auto count = channels.size() - static_cast<size_t>(std::count_if(
                                             channels.begin(), channels.end(), is_gone));
    const FrequencyRange& band = report_.layout.band;
    const bool has_band = band.high_hz > 0.0;
    const std::string range =
        has_band ? fmt::format("{:.3f}\u2013{:.3f} MHz, ", band.low_hz / 1e6, band.high_hz / 1e6)
                 : "";
    const std::string title = fmt::format("{}{} channel{}", range, count, count == 1 ? "" : "s");
    add("<title>{}</title>", title);
    text(12.0, 22.0 - kHeadHeight, "title", title);
    const auto& layout = report_.layout;
    if (layout.first_unix_ms == 0) return;
    // Between summer and winter the zone is part of each time, otherwise it is said once.
    const auto zoneText = [](int64_t unix_ms) { return fmt::format(" {:%Z}", localTime(unix_ms)); };
    std::string span = timeText(layout.last_unix_ms) + zoneText(layout.last_unix_ms);
    if (layout.first_unix_ms != layout.last_unix_ms) {
      const std::string zone = zoneText(layout.first_unix_ms);
      const bool is_one_zone = zone == zoneText(layout.last_unix_ms);
      span = timeText(layout.first_unix_ms) + (is_one_zone ? "" : zone) + " to " + span;
    }
    text(kWidth - at_.right, 22.0 - kHeadHeight, "soft end", span);
  }

  /// Whether the survey took so little time that the seconds would all be one.
  bool isShort() const {
    return report_.layout.last_unix_ms - report_.layout.first_unix_ms < 10'000;
  }
  std::string timeText(int64_t unix_ms) const {
    const std::string seconds = fmt::format("{:%Y-%m-%d %H:%M:%S}", localTime(unix_ms));
    return isShort() ? fmt::format("{}.{:03}", seconds, unix_ms % 1000) : seconds;
  }

  void drawScales() {
    const double right = kWidth - at_.right;
    const double top_db = report_.layout.top_db;
    const double step_db = report_.layout.level_step_db;
    for (int step = 0; step * step_db <= top_db; ++step) {
      const double db = step * step_db;
      const double y = at_.level_bottom - db / top_db * (at_.level_bottom - at_.level_top);
      line("grid", at_.left, y, right, y);
      text(at_.left - 6.0, y + 4.0, "soft end", fmt::format("{:.0f}", db));
    }
    add(R"svg(<text class="soft middle" transform="translate(30 {:.1f}) rotate(-90)">)svg"
        "relative dB over floor</text>",
        0.5 * (at_.level_top + at_.level_bottom));
    const auto& [first_unix_ms, last_unix_ms] =
        std::pair(report_.layout.first_unix_ms, report_.layout.last_unix_ms);
    if (first_unix_ms == 0) return;
    const int most_halves = first_unix_ms == last_unix_ms ? 0 : 2;
    for (int halves = 0; halves <= most_halves; ++halves) {
      const double y = at_.time_top + 0.5 * halves * (at_.time_bottom - at_.time_top);
      const int64_t unix_ms = halves == 2
                                  ? last_unix_ms
                                  : first_unix_ms + halves * ((last_unix_ms - first_unix_ms) / 2);
      const std::tm local = localTime(unix_ms);
      const std::string date = fmt::format("{:%Y-%m-%d}", local);
      const std::string clock = fmt::format("{:%H:%M:%S}", local);
      line("grid", at_.left, y, right, y);
      text(at_.left - 6.0, y - 1.0, "soft end", isShort() ? clock : date);
      text(at_.left - 6.0, y - 1.0 + at_.label_height, "soft end",
           isShort() ? fmt::format(".{:03} s", unix_ms % 1000) : clock);
    }
  }

  void drawStrip() {
    bool is_other = false;
    for (const PlanStretch& stretch : report_.layout.strip) {
      const double left = std::max(xOf(stretch.low_hz), at_.left);
      const double right = std::min(xOf(stretch.high_hz), kWidth - at_.right);
      const double width = std::max(right - left, at_.least_mark);
      const std::string name = displayText(report_.band_plan[stretch.range].name);
      add(R"(<rect class="plan{}" x="{:.1f}" y="{}" width="{:.1f}" height="{}"><title>{}</title></rect>)",
          is_other ? " other" : "", left, at_.strip_top, width, at_.strip_bottom - at_.strip_top,
          markupText(name));
      is_other = !is_other;
      const double room = (width - 10.0) / at_.character_width;
      if (room < 3.0) continue;
      text(left + 5.0, at_.strip_top + 15.0, "", shortened(name, static_cast<size_t>(room)));
    }
  }

  struct Box {
    double left;
    double top;
    double width;
    double height;
    size_t channel;
  };

  std::vector<Box> channelBoxes() const {
    std::vector<Box> boxes;
    for (size_t index = 0; index < report_.channels.size(); ++index) {
      const SurveyedChannel& channel = report_.channels[index].channel;
      const ChannelMark& mark = report_.layout.marks[index];
      const double half_hz = 0.5 * std::max(channel.width_hz, 0.0);
      const double low = xOf(channel.centre_hz - half_hz);
      const double high = xOf(channel.centre_hz + half_hz);
      const double width = std::max(high - low, at_.least_mark);
      const double left = 0.5 * (low + high - width);
      boxes.push_back({left, mark.top, width, at_.level_bottom - mark.top, index});
      if (mark.time_end > 0.0) {
        boxes.push_back({left, mark.time_begin, width, mark.time_end - mark.time_begin, index});
      }
    }
    return boxes;
  }

  void drawMarks() {
    std::vector<Box> boxes = channelBoxes();
    // The wide first, of equal width the tall, and of equal height what was seen often, so that what
    // lies upon them is drawn upon them and never behind.
    const auto rank = [this](const Box& box) {
      const auto narrower = [&box](double least) { return box.width <= least; };
      return std::tuple(std::count_if(at_.width_steps.begin(), at_.width_steps.end(), narrower),
                        -box.height, -report_.channels[box.channel].channel.activity());
    };
    std::stable_sort(boxes.begin(), boxes.end(), [&rank](const Box& left, const Box& right) {
      return rank(left) < rank(right);
    });
    // A white edge parts marks from what they lie upon; a crowd, where it would be all one saw, has
    // it on wide marks alone.
    const bool is_crowded = isCrowded();
    const std::vector<double> wide_marks = skyline(Width::kWide);
    for (const Box& box : boxes) {
      const auto& [channel, change, old_hits, old_looks] = report_.channels[box.channel];
      const std::string& shade = activityShades()[report_.layout.marks[box.channel].shade];
      const auto column = static_cast<size_t>(xOf(channel.centre_hz));
      const bool is_edged = !is_crowded || wide_marks[column] < at_.level_bottom;
      add(R"(<rect class="mark{}" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="{:.1f}" fill="{}" stroke="{}"/>)",
          change == Change::kNew    ? " new"
          : change == Change::kGone ? " gone"
                                    : "",
          box.left, box.top, box.width, box.height, shade, is_edged ? "#fff" : shade);
    }
  }

  void drawAxis() {
    const auto& [low_hz, high_hz] = report_.layout.span;
    const double rough_hz = (high_hz - low_hz) / (plotWidth() / at_.tick_distance);
    const double power_hz = std::pow(10.0, std::floor(std::log10(rough_hz)));
    double step_hz = 10.0 * power_hz;
    for (const double factor : {5.0, 2.0, 1.0}) {
      if (factor * power_hz >= rough_hz) step_hz = factor * power_hz;
    }
    const int digits = std::clamp(6 - static_cast<int>(std::floor(std::log10(step_hz))), 0, 6);
    line("axis", at_.left, at_.level_bottom, kWidth - at_.right, at_.level_bottom);
    const double first = std::ceil(low_hz / step_hz);
    for (int tick = 0; (first + tick) * step_hz <= high_hz; ++tick) {
      const double hz = (first + tick) * step_hz;
      line("axis", xOf(hz), at_.level_bottom, xOf(hz), at_.level_bottom + 5.0);
      text(xOf(hz), at_.level_bottom + 18.0, "middle", fmt::format("{:.{}f}", hz / 1e6, digits));
    }
    text(at_.left - 28.0, at_.level_bottom + 18.0, "soft end", "MHz");
  }

  struct Label {
    size_t channel;
    double x;
    double y;
    double half_width;
  };

  bool meetsAnother(const Label& label, const std::vector<Label>& placed) const {
    return std::any_of(placed.begin(), placed.end(), [&](const Label& other) {
      return other.channel != label.channel &&
             std::abs(other.x - label.x) < other.half_width + label.half_width &&
             std::abs(other.y - label.y) < at_.label_height;
    });
  }

  /// Frequencies over the marks, what has changed and then the most active first: where no other
  /// label stands and no other mark rises behind. Places for the symbols of what has changed are
  /// kept free, in a crowd only where they would stand out.
  void drawLabels() {
    std::vector<Label> placed;
    const std::vector<double> behind = skyline(Width::kNarrow);
    std::vector<size_t> order(report_.channels.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto rank = [this](size_t index) {
      const auto& [channel, change, old_hits, old_looks] = report_.channels[index];
      return std::tuple(change == Change::kNone, -channel.activity(), -overFloorDb(channel));
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t left, size_t right) { return rank(left) < rank(right); });
    const auto isHidden = [&behind](const Label& label) {
      const auto first = behind.begin() + static_cast<ptrdiff_t>(label.x - label.half_width);
      return *std::min_element(first, first + static_cast<ptrdiff_t>(2.0 * label.half_width)) <
             label.y;
    };
    const auto labelOf = [this](size_t index, size_t characters) {
      const double half = 0.5 * static_cast<double>(characters) * at_.character_width + 2.0;
      const double x = xOf(report_.channels[index].channel.centre_hz);
      return Label{index, std::clamp(x, at_.left + half, kWidth - half),
                   report_.layout.marks[index].top - 4.0, half};
    };
    for (const size_t index : order) {
      if (report_.channels[index].change == Change::kNone) continue;
      const Label label = labelOf(index, 1);
      if (isCrowded() && isHidden(label)) continue;
      if (!meetsAnother(label, placed)) placed.push_back(label);
    }
    const std::vector<Label> reserved = placed;
    for (const size_t index : order) {
      const auto& [channel, change, old_hits, old_looks] = report_.channels[index];
      const std::string symbol(symbolOf(change));
      const std::string frequency = fmt::format("{:.4f}", channel.centre_hz / 1e6);
      // A symbol is as wide as two digits.
      const Label label = labelOf(index, frequency.size() + (symbol.empty() ? 0 : 2));
      if (!isHidden(label) && !meetsAnother(label, placed)) {
        placed.push_back(label);
        text(label.x, label.y, "label", symbol + frequency);
        continue;
      }
      const auto own = std::find_if(reserved.begin(), reserved.end(),
                                    [&](const Label& other) { return other.channel == index; });
      if (own != reserved.end()) text(own->x, own->y, "label", symbol);
    }
  }

  enum class Width { kNarrow, kWide };

  /// For each column of pixels where the highest mark of that width ends.
  std::vector<double> skyline(Width wanted) const {
    std::vector<double> tops(static_cast<size_t>(kWidth) + 1, at_.level_bottom);
    for (size_t index = 0; index < report_.channels.size(); ++index) {
      const SurveyedChannel& channel = report_.channels[index].channel;
      const double half_hz = 0.5 * std::max(channel.width_hz, 0.0);
      const double low = xOf(channel.centre_hz - half_hz);
      const double high = xOf(channel.centre_hz + half_hz);
      if ((high - low > at_.wide_mark) != (wanted == Width::kWide)) continue;
      const auto first = static_cast<size_t>(std::max(low - 1.0, 0.0));
      const auto last = static_cast<size_t>(std::min(high + 1.0, kWidth));
      for (size_t x = first; x <= last; ++x) {
        tops[x] = std::min(tops[x], report_.layout.marks[index].top);
      }
    }
    return tops;
  }

  void drawLegend() {
    const double y = at_.height + 4.0;
    double x = at_.left;
    text(x, y + 10.0, "soft", "seen in 0 %");
    x += 70.0;
    for (const std::string& shade : activityShades()) {
      add(R"(<rect x="{}" y="{}" width="10" height="12" fill="{}"/>)", x, y, shade);
      x += 10.0;
    }
    text(x + 6.0, y + 10.0, "soft", "100 % of looks");
    if (!report_.is_compared) return;
    text(x + 120.0, y + 10.0, "soft",
         "+ thick outline: new, \u00d7 dashed: gone, \u25b2 \u25bc seen more or less often");
  }

  const ReportData& report_;
  const PictureMeasures& at_;
  std::string out_;
};

}  // namespace

std::string bandSvg(const ReportData& report) {
  return Drawing(report).finish();
}

}  // namespace pelagrim_host
