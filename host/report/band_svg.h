#pragma once

#include <string>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// Only the picture, of the whole band, as an SVG file. Times are in this machine's zone.
std::string bandSvg(const ReportData& report);

}  // namespace pelagrim_host
