// User name and local time for new annotations. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"

#include <ctime>
#include <string>

namespace Workbench {

// The user's name from the environment, else from the system's user database; empty when neither
// has one.
std::u16string UserName();

// Local time with the zone's offset from UTC in hours. UTC where the offset is not a whole number
// of hours, because a date record holds hours only.
_PDDateRec DateOf(std::time_t time);

}  // namespace Workbench
