#pragma once

#include <vector>

namespace pelagrim_host {

/// The fixed measures of the picture, in pixels from its top left corner. From top to bottom: the
/// band plan, levels over frequency, the frequency axis, times over frequency.
struct PictureMeasures {
  double left = 76.0;  ///< where the frequency axis begins, right of the scales
  double right = 14.0;
  double strip_top = 2.0;
  double strip_bottom = 24.0;
  double level_top = 46.0;  ///< leaves room for the label of the highest mark
  double level_bottom = 250.0;
  double time_top = 290.0;
  double time_bottom = 390.0;
  double height = 408.0;

  double min_mark = 4.0;    ///< a mark is at least this wide and high, including its edge
  double wide_mark = 24.0;  ///< a wider one may have labels and other marks on top
  /// Among marks between the same two of these, tall ones are drawn first, so that short ones show.
  std::vector<double> width_steps = {wide_mark, 12.0, 6.0, min_mark};

  double character_width = 6.3;  ///< of text in the picture, about
  double label_height = 12.0;
  double label_gap = 4.0;       ///< between a mark and the label above it
  double scale_gap = 6.0;       ///< between the text of a scale and the plot
  double scale_drop = 4.0;      ///< from a line of the scale down to the baseline of its text
  double scale_title_x = 30.0;  ///< of the upright text beside the scale
  double strip_gap = 5.0;       ///< between the edge of a stretch and its name
  double strip_drop = 15.0;     ///< from the top of the strip down to the baseline of its text
  double tick_distance = 85.0;  ///< between frequencies on the axis, about
  double tick_length = 5.0;
  double tick_drop = 18.0;  ///< from the axis down to the baseline of its text
  double unit_gap = 28.0;   ///< between the unit of the axis and the plot
  double shade_width = 10.0;
  double shade_height = 12.0;
};

}  // namespace pelagrim_host
