#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wendle_plugin.h"

namespace pelagrim_host {

/// One row of a plug-in's panel, as text that is safe to show: control characters are replaced.
struct PanelRow {
  int32_t kind = kRowPlain;  ///< WendleRowKind
  std::vector<std::string> cells;
};

/// A complete picture of a plug-in's panel.
struct Panel {
  std::string title;
  std::vector<std::string> columns;
  std::vector<PanelRow> rows;
};

/// How far the survey is, from the panel's summary row. That row is written for people: the third
/// cell holds the slices of the band, the fifth the dwells done, and the second says "fixed" if the
/// receiver stays where it is.
struct DwellCount {
  uint32_t dwells_done = 0;
  uint32_t slices = 0;
  bool sweeping = true;

  /// How many dwells make one pass, at least 1.
  uint32_t dwellsPerPass() const { return sweeping && slices > 0 ? slices : 1; }
};

/// A plug-in's panel, open for reading. Used on the interface thread.
class PanelReader {
 public:
  /// `api` null: a plug-in without a panel, whose pictures are empty.
  explicit PanelReader(const WendlePanelApi* api);
  ~PanelReader();
  PanelReader(const PanelReader&) = delete;
  PanelReader& operator=(const PanelReader&) = delete;

  /// The first `max_rows` rows: the summary, warnings, then the busiest channels.
  Panel read(size_t max_rows = SIZE_MAX);

  /// Nothing if the panel has no summary row that counts dwells.
  std::optional<DwellCount> countDwells();

 private:
  size_t poll(size_t max_rows);

  const WendlePanelApi* api_;
  void* handle_ = nullptr;
  std::vector<std::string> columns_;
  std::vector<WendlePanelRow> rows_;
};

}  // namespace pelagrim_host
