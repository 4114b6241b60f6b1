#include "curves/line_chart.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace pelagrim_curves {

namespace {

constexpr double kWidth = 800.0;
constexpr double kHeight = 400.0;
constexpr double kLeft = 70.0;
constexpr double kRight = 570.0;
constexpr double kTop = 45.0;
constexpr double kBottom = 345.0;

// Colours that the colour-blind can tell apart, too (Okabe and Ito), without yellow, which is lost
// on paper.
constexpr std::array kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                 "#e69f00", "#56b4e9", "#000000", "#7f7f7f"};

double along(const Axis& axis, double value) {
  if (!axis.logarithmic) return (value - axis.low) / (axis.high - axis.low);
  return std::log(value / axis.low) / std::log(axis.high / axis.low);
}

double xOf(const Axis& axis, double value) {
  return kLeft + (kRight - kLeft) * along(axis, value);
}

double yOf(const Axis& axis, double value) {
  return kBottom - (kBottom - kTop) * along(axis, value);
}

std::vector<double> ticksOf(const Axis& axis) {
  std::vector<double> ticks;
  if (axis.logarithmic) {
    for (int power = -6; power <= 6; ++power) ticks.push_back(std::pow(10.0, power));
  } else {
    constexpr double kMaxSteps = 10.0;
    const double min_step = (axis.high - axis.low) / kMaxSteps;
    const double decade = std::pow(10.0, std::floor(std::log10(min_step)));
    double step = 10.0 * decade;
    for (const double part : {5.0, 2.0, 1.0}) {
      if (part * decade >= min_step * 0.999) step = part * decade;
    }
    const auto steps = static_cast<int>(std::round((axis.high - axis.low) / step)) + 1;
    const double first = std::ceil(axis.low / step - 1e-9);
    for (int i = 0; i <= steps; ++i) ticks.push_back((first + i) * step);
  }
  std::erase_if(ticks, [&](double tick) {
    return tick < axis.low - 1e-9 * std::abs(axis.high) || tick > axis.high * 1.000001;
  });
  return ticks;
}

/// Text in SVG, escaped and anchored.
std::string text(double x, double y, const char* anchor, const std::string& words,
                 const std::string& more = "") {
  std::string safe;
  for (const char c : words) {
    if (c == '<') {
      safe += "&lt;";
    } else if (c == '&') {
      safe += "&amp;";
    } else {
      safe += c;
    }
  }
  return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\"{}>{}</text>\n", x, y,
                     anchor, more, safe);
}

std::string line(double x1, double y1, double x2, double y2, const std::string& style) {
  return fmt::format("<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" {}/>\n", x1, y1,
                     x2, y2, style);
}

/// A marker that tells the series apart without colour.
std::string mark(double x, double y, size_t shape, const char* colour) {
  constexpr double r = 3.5;
  switch (shape % 4) {
    case 0:
      return fmt::format("<circle cx=\"{:.1f}\" cy=\"{:.1f}\" r=\"{}\" fill=\"{}\"/>\n", x, y, r,
                         colour);
    case 1:
      return fmt::format(
          "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{}\" height=\"{}\" fill=\"{}\"/>\n", x - r,
          y - r, 2 * r, 2 * r, colour);
    case 2:
      return fmt::format("<path d=\"M{:.1f} {:.1f}l{} {}h{}z\" fill=\"{}\"/>\n", x, y - r, r, 2 * r,
                         -2 * r, colour);
    default:
      return fmt::format("<path d=\"M{:.1f} {:.1f}l{} {}l{} {}l{} {}z\" fill=\"{}\"/>\n", x,
                         y - r - 1, r + 1, r + 1, -r - 1, r + 1, -r - 1, -r - 1, colour);
  }
}

std::string grid(const LineChart& chart) {
  std::string svg;
  for (const double tick : ticksOf(chart.x)) {
    const double x = xOf(chart.x, tick);
    svg += line(x, kTop, x, kBottom, "stroke=\"#ddd\"");
    svg += text(x, kBottom + 18, "middle", fmt::format("{:g}", tick));
  }
  for (const double tick : ticksOf(chart.y)) {
    const double y = yOf(chart.y, tick);
    svg += line(kLeft, y, kRight, y, "stroke=\"#ddd\"");
    svg += text(kLeft - 8, y + 4, "end", fmt::format("{:g}", std::abs(tick) < 1e-9 ? 0.0 : tick));
  }
  svg += fmt::format(
      "<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" fill=\"none\" stroke=\"#555\"/>\n", kLeft,
      kTop, kRight - kLeft, kBottom - kTop);
  svg += text(0.5 * (kLeft + kRight), kBottom + 40, "middle", chart.x.title);
  const double middle = 0.5 * (kTop + kBottom);
  svg += text(18, middle, "middle", chart.y.title,
              fmt::format(" transform=\"rotate(-90 18 {})\"", middle));
  return svg;
}

std::string curve(const LineChart& chart, size_t index) {
  const Series& series = chart.series[index];
  const size_t number = series.colour.value_or(index);
  const char* const colour = kColours[number % kColours.size()];
  const char* const dashes = series.dashed ? " stroke-dasharray=\"6 4\"" : "";
  std::string path;
  std::string marks;
  for (const auto& [x, y] : series.points) {
    // A count of zero has no place on a logarithmic axis, so the curve ends there.
    const bool shown = x >= chart.x.low && x <= chart.x.high && !(chart.y.logarithmic && y <= 0.0);
    if (!shown) continue;
    const double at_x = xOf(chart.x, x);
    const double at_y = yOf(chart.y, std::clamp(y, chart.y.low, chart.y.high));
    path += fmt::format("{}{:.1f} {:.1f}", path.empty() ? 'M' : 'L', at_x, at_y);
    marks += mark(at_x, at_y, number, colour);
  }
  const auto stroke =
      fmt::format("fill=\"none\" stroke=\"{}\" stroke-width=\"1.8\"{}", colour, dashes);
  const double row = kTop + 12.0 + 20.0 * static_cast<double>(index);
  return fmt::format("<path d=\"{}\" {}/>\n", path, stroke) + marks +
         line(kRight + 14, row, kRight + 42, row, stroke) + mark(kRight + 28, row, number, colour) +
         text(kRight + 50, row + 4, "start", series.name);
}

}  // namespace

void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void LineChart::write(const std::filesystem::path& dir, const std::string& name) const {
  std::string svg = fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" "
      "height=\"{1}\" font-family=\"sans-serif\" font-size=\"12\" role=\"img\">\n"
      "<title>{2}</title>\n<rect width=\"{0}\" height=\"{1}\" fill=\"white\"/>\n",
      kWidth, kHeight, title);
  svg += text(kLeft, 25, "start", title, " font-size=\"15\" font-weight=\"bold\"");
  svg += grid(*this);
  std::string csv = fmt::format("series,{},{}\n", x.title, y.title);
  for (size_t i = 0; i < series.size(); ++i) {
    svg += curve(*this, i);
    for (const auto& [at, value] : series[i].points) {
      csv += fmt::format("{},{:.6g},{:.4g}\n", series[i].name, at, value);
    }
  }
  writeFile(dir / (name + ".svg"), svg + "</svg>\n");
  writeFile(dir / (name + ".csv"), csv);
}

}  // namespace pelagrim_curves
