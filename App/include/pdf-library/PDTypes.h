// Plain types of the PDF library behind the host's documents: opaque records, operation codes and
// value structs. Included by module and host; no dependencies.
#pragma once

#include <cstddef>
#include <cstdint>

// Records of the library. Held by reference count (see PDFunctionTable); never looked into.
struct _PDAnnotRec;
struct _PDPageRec;

// A page index that stands for no page.
inline constexpr std::uint32_t kPDNoPage = 0xFFFFFFFFu;

// What happened to an annotation.
enum class PDAnnotOperation : std::uint32_t {
    kAdded = 0,              // the page's array has one annotation more
    kRemoved = 1,            // the page's array has one annotation less
    kAppearanceChanged = 2,  // look, rectangle or flags of one annotation
    kAboutToChange = 3,      // announced only; nothing differs yet
    kPropertiesChanged = 4,  // contents, title, subject or dates of one annotation
};

// What happened to pages.
enum class PDPageOperation : std::uint32_t {
    kInserted = 0,  // the range has the indices of the new pages, as they are now
    kDeleted = 1,   // the range has the indices of the pages, as they were
    kMoved = 2,     // the range has two indices: where the page was, and where it is
    kRotated = 3,
    kCropped = 4,
};

// The pages that an operation concerns: `count` 0-based indices. `pages` belongs to the host that
// fires the event and is valid only during the call.
struct _PDPageRange {
    std::uint32_t count;         // number of indices
    std::uint32_t reserved;      // 0
    const std::uint32_t* pages;  // may be null when the count is 0
};
static_assert(sizeof(_PDPageRange) == 16);
static_assert(offsetof(_PDPageRange, pages) == 8);

// Rectangle in the page's default user space (ISO 32000-1, 8.3.2.3), in points of 1/72 inch. The
// corners may stand in any order; see PDFL::Normalised.
struct _PDRect {
    double left;    // x of one corner
    double bottom;  // y of that corner
    double right;   // x of the opposite corner
    double top;     // y of that corner
};
static_assert(sizeof(_PDRect) == 32);

// Date of a PDF object (ISO 32000-1, 7.9.4) as written in the file: local date and time, and the
// whole hours by which that local time is ahead of UTC (a part of an hour is dropped, towards 0).
// A year of 0 means that there is no date. Fields are not range-checked.
struct _PDDateRec {
    std::uint16_t year;           // 0: no date
    std::uint16_t month;          // 1 to 12
    std::uint16_t day;            // 1 to 31
    std::uint16_t hour;           // 0 to 23
    std::uint16_t minute;         // 0 to 59
    std::uint16_t second;         // 0 to 59
    std::int16_t utcOffsetHours;  // signed
};
static_assert(sizeof(_PDDateRec) == 14);
