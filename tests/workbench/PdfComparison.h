// Compares two PDF files object by object, whatever the numbers of the objects.
#pragma once

#include <qpdf/QPDF.hh>

#include <cstddef>
#include <set>
#include <string>
#include <utility>

namespace SavedFilesTest {

// Entries of the pages' annotation arrays: page and position, from 0.
using Places = std::set<std::pair<std::size_t, int>>;

// The entries with the pop-ups that belong to them on the same page, and every further entry there
// of the same annotation.
Places WithTheirPopups(QPDF& file, const Places& places);

// Where `after` is not `before` without some annotations: the way from the trailer to the first
// difference, and both sides of it. Empty when every object that the trailer of `before` leads to
// has its equal in `after`, references included. Left aside are the annotations that are gone,
// wherever they are still referred to, and what a file is about itself (cross-references, /ID).
std::string DescribeDifference(QPDF& before, const Places& gone, QPDF& after);

}  // namespace SavedFilesTest
