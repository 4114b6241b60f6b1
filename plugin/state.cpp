#include "plugin/state.h"

namespace pelagrim {

State g_state;

}  // namespace pelagrim
