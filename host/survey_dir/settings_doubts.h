#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pelagrim_host {

/// What a person who wrote this survey.cfg probably did not mean, one line for the user each: lines
/// that set nothing, values of which the plug-in reads only a part, a band in hertz. At most three,
/// then how many there are besides.
std::vector<std::string> settingsDoubts(std::string_view text);

}  // namespace pelagrim_host
