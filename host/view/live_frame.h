#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/view/frame.h"
#include "host/view/live_state.h"
#include "host/view/terminal_screen.h"

namespace pelagrim_host {

/// The most rows of the panel that a window can show, plus one to see that there are more.
size_t channelRoom(WindowSize window);

/// The picture: a line for every row of the window, each exactly as wide as the window. The only
/// control sequences in it are those that set attributes (SGR of ECMA-48).
///
/// From the top: the source, its rate and centre; the current dwell and pass; the samples; the
/// panel's summary and warnings; its table; the last messages; the keys. A small window loses the
/// keys, then the messages, then rows from the end of the table; a narrow one loses columns from
/// the right. A wide one has the messages beside the table, or the table in several parts side by
/// side.
std::vector<std::string> composeFrame(const LiveState& state, WindowSize window, FrameStyle style);

}  // namespace pelagrim_host
