#include "host/report/mark_colours.h"

namespace pelagrim_host {

const std::vector<std::string>& activityShades() {
  static const std::vector<std::string> shades = {"#deba42", "#b0b53d", "#7dad49", "#40a35c",
                                                  "#039170", "#007c76", "#076974", "#04566f",
                                                  "#02426d", "#0f2677", "#230863"};
  return shades;
}

}  // namespace pelagrim_host
