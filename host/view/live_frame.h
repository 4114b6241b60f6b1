#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/view/frame.h"
#include "host/view/live_state.h"
#include "host/view/terminal_screen.h"

namespace pelagrim_host {

/// How many rows of the panel can possibly be shown in a window, and one to see that there are
/// more.
size_t channelRoom(WindowSize window);

/// The picture: a line for every row of the window, each exactly as wide as the window, marked up
/// with the sequences that set attributes (SGR of ECMA-48) and no others.
///
/// From the top: the source, its rate and centre; the dwell and the pass in progress; the samples;
/// the panel's summary and warnings; its table; what was said last; the keys. A small window loses
/// the keys, then what was said, then rows from the end of the table; a narrow one loses columns
/// from the table's end. A wide one has what was said beside the table, or the table in several
/// parts side by side.
std::vector<std::string> composeFrame(const LiveState& state, WindowSize window, FrameStyle style);

}  // namespace pelagrim_host
