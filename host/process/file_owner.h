#pragma once

#include <sys/types.h>

namespace pelagrim_host {

/// Whether what this user owns was put there by somebody who may decide what this process reads and
/// writes: the process's own user, root, and under sudo the user who called it.
bool isOwnUser(uid_t owner);

}  // namespace pelagrim_host
