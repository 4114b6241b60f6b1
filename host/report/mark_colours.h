#pragma once

#include <string>
#include <vector>

namespace pelagrim_host {

/// The colours of marks, by how often a channel was seen, from never to always: even steps in
/// lightness, light to dark, so that they read in grey, on paper and for the colour-blind; taken
/// from an arc of hues in OKLCH (Ottosson, 2020). The other colours are in page/picture.css.
const std::vector<std::string>& activityShades();

}  // namespace pelagrim_host
