#pragma once

#include <string>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// What the page's script reads: JSON without any "<", so that it can be put in a script element.
/// The script uses its names as they are, starting in page/data.js.
std::string pageData(const ReportData& report);

}  // namespace pelagrim_host
