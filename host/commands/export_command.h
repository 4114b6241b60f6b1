#pragma once

namespace pelagrim_host {

/// "pelagrim-survey export": reads a survey directory and writes its channels for another program.
/// `argv` begins with the word "export". Throws UsageError and std::runtime_error.
void runExport(int argc, const char* const* argv);

}  // namespace pelagrim_host
