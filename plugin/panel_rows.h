#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "survey/band_label.h"
#include "survey/channel.h"
#include "wendle_plugin.h"

namespace pelagrim {

// Complete rows of the panel's table: bytes that a row does not use are zero, and text that does
// not fit its cell is cut.

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

/// A channel, with the band plan's name for its centre. Numbers have a decimal point whatever the
/// host's locale. May throw std::bad_alloc.
WendlePanelRow channelRow(const Channel& channel, const std::vector<BandLabel>& labels);

}  // namespace pelagrim
