#pragma once

#include <string>
#include <vector>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// The layout with the whole band across the plot, which the page shows only until somebody zooms.
class WholeBand {
 public:
  /// Keeps a reference to `report`. `width`: of the picture, in pixels.
  WholeBand(const ReportData& report, double width);

  const ReportData& report() const { return report_; }
  const PictureMeasures& measures() const { return report_.layout.measures; }
  double width() const { return width_; }
  double plotRight() const { return width_ - measures().right; }
  double xOf(double hz) const;

  /// From edge to edge of a channel, however narrow.
  struct Extent {
    double left;
    double right;
  };
  Extent extentOf(const SurveyedChannel& channel) const;

  /// Whether there are more channels than columns of pixels.
  bool isCrowded() const;

  enum class MarkWidth { kNarrow, kWide };

  /// For each column of pixels, the top of the highest mark of that width.
  std::vector<double> skyline(MarkWidth wanted) const;

 private:
  double plotWidth() const { return plotRight() - measures().left; }

  const ReportData& report_;
  double width_;
};

/// A frequency on the axis.
struct FrequencyTick {
  double x;
  std::string mhz;
};

/// As many as fit, at round frequencies.
std::vector<FrequencyTick> frequencyTicks(const WholeBand& band);

/// A mark to draw.
struct MarkBox {
  double left;
  double top;
  double width;
  double height;
  size_t channel;
  bool is_edged;  ///< with a white edge
};

/// Every channel by level and, if its times are known, by time. Wide ones come first, then tall
/// ones, then those seen often, so that smaller marks are drawn on top of larger ones and never
/// behind them. A white edge separates a mark from those under it; in a crowd, where the edges
/// would hide everything, only wide marks have one.
std::vector<MarkBox> markBoxes(const WholeBand& band);

/// Words over a mark, centred on x.
struct MarkLabel {
  double x;
  double y;
  std::string words;
};

/// Frequencies over the marks, changed channels first and then the most active, wherever there is
/// no other label and no other mark behind. Places for the symbols of changed channels are kept
/// free, but in a crowd only where the symbols would stand out.
std::vector<MarkLabel> markLabels(const WholeBand& band);

}  // namespace pelagrim_host
