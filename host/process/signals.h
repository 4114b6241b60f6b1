#pragma once

namespace pelagrim_host {

/// From here on the first SIGINT or SIGTERM asks for an orderly end (stopRequested) and the second
/// leaves the process at once, with status 128 + the signal's number. SIGHUP asks to rescan, unless
/// it was ignored. A closed pipe on standard output is an error of the write rather than a signal.
/// The signals that end interrupt blocking calls. Once, before any other thread exists.
void installSignalHandlers();

/// Whether an orderly end has been asked for. From any thread.
bool stopRequested();

/// Asks for an orderly end, or to survey afresh, as the signals do. From any thread.
void requestStop();
void requestRescan();

/// Whether a rescan has been asked for since the last call. A SIGHUP that came because the
/// terminal has gone asks for an orderly end instead: nobody is left to stop the survey.
bool takeRescanRequest();

/// `tidy` runs before the process leaves at once: in a signal handler, so it may call no more than
/// that may. Null: nothing.
void setTidyBeforeExit(void (*tidy)());

}  // namespace pelagrim_host
