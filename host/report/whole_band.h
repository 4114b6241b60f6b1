#pragma once

#include <string>
#include <vector>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// The layout with the whole band from the left edge of the plot to the right one, which the page
/// shows only until somebody zooms.
class WholeBand {
 public:
  /// Keeps a reference to `report`; `width` is the picture's, in pixels.
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

  /// For each column of pixels where the highest mark of that width ends.
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

/// As many as have room, at round frequencies.
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

/// Every channel over level and, where its times are known, over time. The wide come first, of
/// equal width the tall, and of equal height what was seen often, so that what lies upon them is
/// drawn upon them and never behind. A white edge parts marks from what they lie upon; a crowd,
/// where it would be all one saw, has it on wide marks alone.
std::vector<MarkBox> markBoxes(const WholeBand& band);

/// Words over a mark, centred on x.
struct MarkLabel {
  double x;
  double y;
  std::string words;
};

/// Frequencies over the marks, what has changed and then the most active first: where no other
/// label stands and no other mark rises behind. Places for the symbols of what has changed are kept
/// free, in a crowd only where they would stand out.
std::vector<MarkLabel> markLabels(const WholeBand& band);

}  // namespace pelagrim_host
