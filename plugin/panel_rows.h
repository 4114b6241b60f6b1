#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "survey/band_label.h"
#include "survey/channel.h"
#include "wendle_plugin.h"

namespace pelagrim {

// Rows of the panel's table, complete: every byte that a row does not use is zero, and text that
// does not fit its cell is cut.

/// What the summary row counts.
struct SurveySummary {
  bool sweep;
  size_t slices;
  uint32_t dwells;
  size_t labels;
};

WendlePanelRow summaryRow(const SurveySummary& summary);

/// Why the survey cannot sweep.
WendlePanelRow warningRow(const std::string& reason);

/// A channel, with the name that the band plan has for its centre. Numbers carry a decimal point
/// whatever the host's locale. May throw std::bad_alloc.
WendlePanelRow channelRow(const Channel& channel, const std::vector<BandLabel>& labels);

}  // namespace pelagrim
