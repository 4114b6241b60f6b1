#pragma once

namespace pelagrim_host {

/// "pelagrim-survey report": reads a survey directory and writes a page or a picture of it. `argv`
/// begins with the word "report". Throws UsageError and std::runtime_error.
void runReport(int argc, const char* const* argv);

}  // namespace pelagrim_host
