#pragma once

#include <cstdint>

#include "wendle_plugin.h"

namespace pelagrim {

/// Stores the host's services table; null means none. Takes no lock: the host calls it while no
/// other call runs.
void hc_attach(const WendleHostApi* host) noexcept;

/// The host's clock in Unix milliseconds; 0 if there is none. Calls the host at most once.
int64_t hostNowMs();

/// Whether the host can be asked to tune.
bool hostTunes();

/// Asks the host to move the receiver's centre; needs hostTunes(). 0 if it accepts, else why not.
int hostTune(double centre_hz);

}  // namespace pelagrim
