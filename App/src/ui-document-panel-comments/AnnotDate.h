// The date of an annotation as the user reads it. [any-thread]
#pragma once

#include "pdf-library/PDTypes.h"

#include <string>

// Writes the date in local time, by a format of date_time's output facets; empty when there is no
// date or a field is out of range.
void WriteAnnotDate(const _PDDateRec& date, const std::wstring& format, std::wstring& text);
