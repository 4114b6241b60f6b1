#pragma once

namespace pelagrim_host {

/// After this the first SIGINT or SIGTERM asks for an orderly end (stopRequested), and the second
/// ends the process at once, with status 128 + the signal's number. Every other signal that ends a
/// process without a core asks for an orderly end, such as SIGUSR1 or SIGXCPU, and SIGHUP for a
/// rescan. Writing to a closed pipe or beyond the limit of a file's size fails instead of raising
/// a signal. What was ignored when the process was started stays ignored. The signals that end the
/// run interrupt blocking calls. Call it once, before any other thread starts.
void installSignalHandlers();

/// Whether an orderly end has been asked for. Any thread may call it.
bool stopRequested();

/// Asks for an orderly end, or for a rescan, as the signals do. Any thread may call them.
void requestStop();
void requestRescan();

/// Whether a rescan has been asked for since the last call. A SIGHUP because the terminal was
/// closed asks for an orderly end instead, as nobody is left to stop the survey.
bool takeRescanRequest();

/// From now on signals that are sent to the process go to its other threads, so that they interrupt
/// what those wait for. Crashes of the calling thread are still its own.
void leaveSignalsToOtherThreads();

/// `tidy` runs before a second signal ends the process. It runs in the signal handler, so it may
/// call only async-signal-safe functions, and it must not wait for anybody. Null: nothing runs.
void setTidyBeforeExit(void (*tidy)());

}  // namespace pelagrim_host
