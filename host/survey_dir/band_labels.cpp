#include "host/survey_dir/band_labels.h"

#include <algorithm>
#include <cstddef>

#include "files/labels_text.h"
#include "files/text_file.h"

namespace pelagrim_host {

std::vector<pelagrim::BandLabel> parseLabels(std::string_view text) {
  std::vector<pelagrim::BandLabel> labels;
  while (!text.empty()) {
    // The plug-in takes each piece of a long line for a separate line.
    const size_t line = std::min(text.find('\n'), text.size() - 1) + 1;
    const size_t piece = std::min(line, pelagrim::LineReader::kMaxPiece);
    const auto label = pelagrim::parseLabelLine(text.substr(0, piece));
    if (label && label->low_hz <= label->high_hz) labels.push_back(*label);
    text.remove_prefix(piece);
  }
  return labels;
}

}  // namespace pelagrim_host
