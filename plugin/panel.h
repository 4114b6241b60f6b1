#pragma once

#include "wendle_plugin.h"

namespace pelagrim {

// The entry points of the panel, as WendlePanelApi describes them. pn_poll_rows takes the lock of
// State; the others touch no state.

void* pn_create() noexcept;
int pn_columns(void* handle, char (*titles)[WENDLE_CELL_BYTES]) noexcept;
unsigned int pn_poll_rows(void* handle, WendlePanelRow* rows, unsigned int max) noexcept;
void pn_destroy(void* handle) noexcept;

}  // namespace pelagrim
