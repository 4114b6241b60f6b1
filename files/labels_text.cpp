#include "files/labels_text.h"

#include <cstdio>
#include <string>

namespace pelagrim {

std::optional<BandLabel> parseLabelLine(std::string_view line) {
  const std::string text(line.substr(0, line.find('#')));
  double low_mhz = 0.0;
  double high_mhz = 0.0;
  int name_at = -1;  // stays -1 if the line ends before a name
  const int numbers = std::sscanf(text.c_str(), "%lf %lf %n", &low_mhz, &high_mhz, &name_at);
  if (numbers != 2 || low_mhz > high_mhz || name_at < 0) return std::nullopt;

  std::string name = text.c_str() + name_at;
  name.erase(name.find_last_not_of(" \t\r\n") + 1);
  if (name.empty()) return std::nullopt;
  return BandLabel{low_mhz * 1000000.0, high_mhz * 1000000.0, std::move(name)};
}

bool looksLikeLabel(std::string_view line) {
  const size_t first = line.find_first_not_of(" \t");
  return first != std::string_view::npos && line[first] >= '0' && line[first] <= '9';
}

}  // namespace pelagrim
