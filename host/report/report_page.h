#pragma once

#include <string>

#include "host/report/report_data.h"

namespace pelagrim_host {

/// The report as one HTML page that needs nothing else. The data are in it as JSON without any "<",
/// and the page's script sets every text as text, so no name can become markup.
std::string reportPage(const ReportData& report);

}  // namespace pelagrim_host
