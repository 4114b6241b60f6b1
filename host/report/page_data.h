#pragma once

#include <string>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// What the page's script reads: JSON without any "<", so that it can stand in a script element.
/// Everything in it has a name, which the script uses as it is; page/data.js begins there.
std::string pageData(const ReportData& report);

}  // namespace pelagrim_host
