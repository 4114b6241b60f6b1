#pragma once

#include <string>

#include "host/sources/byte_stream.h"

namespace pelagrim_host {

/// The SHA-512 of the rest of a stream, in lower-case hexadecimal digits. If `stop` says so, it
/// ends early with the sum of what was read.
std::string sha512Of(ByteStream& stream, const StopFunction& stop);

}  // namespace pelagrim_host
