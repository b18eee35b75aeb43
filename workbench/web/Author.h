// Who sits at this machine and what time it is there, as annotations have it. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"

#include <ctime>
#include <string>

namespace Workbench {

// The user's name from the environment, else from the system's list of users; empty when neither
// has one.
std::u16string UserName();

// The local time, with the hours by which it is ahead of UTC. UTC where the zone is not ahead by
// whole hours: a date has no more than those.
_PDDateRec DateOf(std::time_t time);

}  // namespace Workbench
