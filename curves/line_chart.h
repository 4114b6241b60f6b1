#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pelagrim_curves {

struct Axis {
  std::string title;
  double low;
  double high;
  bool logarithmic = false;
};

struct Series {
  std::string name;
  std::vector<std::pair<double, double>> points;  ///< in order of x; clipped to the axes
  bool dashed = false;
  std::optional<size_t> colour{};  ///< number of the colour; if not given, the place of the series
};

/// Measured curves with their axes and their legend.
struct LineChart {
  std::string title;
  Axis x;
  Axis y;
  std::vector<Series> series;

  /// Writes `name`.svg and, with the same figures, `name`.csv. Throws std::runtime_error with the
  /// name of a file that cannot be written.
  void write(const std::filesystem::path& dir, const std::string& name) const;
};

/// Writes a text file whole; throws as LineChart::write does.
void writeFile(const std::filesystem::path& path, const std::string& text);

}  // namespace pelagrim_curves
