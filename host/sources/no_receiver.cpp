// Replaces the soapy_ files in a build without SoapySDR.
#include "host/sources/soapy_receiver.h"

namespace pelagrim_host {
namespace {

constexpr const char* kWithout =
    "live receivers need SoapySDR, without which this program was built (PELAGRIM_SOAPY=OFF); "
    "pipe samples in instead, with - and --format";

}  // namespace

std::unique_ptr<IqSource> openReceiver(const ReceiverConfig&) {
  throw SourceError(kWithout);
}

std::string listReceivers() {
  throw SourceError(kWithout);
}

}  // namespace pelagrim_host
