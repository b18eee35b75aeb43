// Compares two PDF files, whatever the order and the form of their objects.
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

// Where `after` is not `before` without some annotations, when both are written anew: a piece of
// each from there on. Empty when they are the same. Takes the annotations out of `before`.
std::string DescribeDifference(QPDF& before, const Places& gone, QPDF& after);

}  // namespace SavedFilesTest
