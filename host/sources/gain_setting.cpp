#include "host/sources/gain_setting.h"

#include "host/text/quantity_text.h"

namespace pelagrim_host {
std::optional<GainSetting> parseGain(std::string_view text) {
  GainSetting gain;
  gain.automatic = text == "auto";
  gain.overall_db = parsePlainNumber(text);
  if (gain.automatic || gain.overall_db) return gain;
  for (bool more = true; more;) {
    const size_t comma = text.find(',');
    const std::string_view item = text.substr(0, comma);
    const size_t equals = item.find('=');
    if (equals == 0 || equals == std::string_view::npos) return std::nullopt;
    const auto value_db = parsePlainNumber(item.substr(equals + 1));
    if (!value_db) return std::nullopt;
    gain.stages_db.emplace_back(item.substr(0, equals), *value_db);
    more = comma != std::string_view::npos;
    if (more) text.remove_prefix(comma + 1);
  }
  return gain;
}

}  // namespace pelagrim_host
