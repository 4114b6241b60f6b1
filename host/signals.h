#pragma once

namespace pelagrim_host {

/// From here on the first SIGINT or SIGTERM asks for an orderly end (stopRequested) and the second
/// leaves the process at once, with status 128 + the signal's number. A closed pipe on standard
/// output is an error of the write rather than a signal. Blocking calls are interrupted, not
/// restarted. Once, before any other thread exists.
void installSignalHandlers();

/// Whether an orderly end has been asked for. From any thread.
bool stopRequested();

}  // namespace pelagrim_host
