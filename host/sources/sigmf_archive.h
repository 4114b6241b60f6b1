#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "host/sources/byte_stream.h"

namespace pelagrim_host {

/// The metadata text of a SigMF archive, a plain tar file with one recording. Members are found by
/// the ends of their names. Nothing is ever written to disk, and an archive with a name that leads
/// out of it is refused as a whole. Throws SourceError.
std::string sigmfArchiveMeta(const std::filesystem::path& path);

/// The samples of a SigMF archive that sigmfArchiveMeta has accepted, read when they are needed.
std::unique_ptr<ByteStream> openSigmfArchiveData(const std::filesystem::path& path);

}  // namespace pelagrim_host
