#include "host/export/export_formats.h"

namespace pelagrim_host {

const std::vector<ExportFormat>& exportFormats() {
  static const std::vector<ExportFormat> kFormats = {
      {"gqrx", "bookmarks.csv of gqrx", gqrxBookmarks},
      {"sdrpp", "bookmarks for the frequency manager of SDR++ to import", sdrppBookmarks},
      {"chirp", "memories for CHIRP, CSV", chirpMemories},
      {"list", "frequencies in Hz, one to a line", frequencyList},
      {"jsonl", "one JSON object to a line", jsonLines},
      {"csv", "a table with readable times", readableCsv}};
  return kFormats;
}

}  // namespace pelagrim_host
