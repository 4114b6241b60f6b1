// A SigMF archive: refused, or one recording whose samples are no longer than the file.

#include "host/sources/sigmf_archive.h"

#include <vector>

#include "host/sources/iq_source.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pelagrim_host;
  static const ScratchDir dir;
  dir.write("x.sigmf", data, size);
  try {
    FUZZ_EXPECT(sigmfArchiveMeta(dir.pathOf("x.sigmf")).size() <= size);
    const auto samples = openSigmfArchiveData(dir.pathOf("x.sigmf"));
    FUZZ_EXPECT(*samples->size() <= size);
    std::vector<std::byte> bytes(size + 1);
    FUZZ_EXPECT(samples->read(bytes) <= *samples->size());
  } catch (const SourceError&) {  // the reason, for the user
  }
  return 0;
}
