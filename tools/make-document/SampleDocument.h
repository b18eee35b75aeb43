// The sample document: what the panel shows, on a few pages that a person can look at.
#pragma once

#include <string>

class QPDF;

namespace MakeDocument {

// Fills an empty file: a page of text that several readers discuss, each subtype with a visible
// shape, comments in several scripts, short and long ones, with and without titles, subjects and
// dates, and the annotations that a list leaves out (links, pop-ups, a form field, hidden ones).
void FillSampleDocument(QPDF& file);

// The sample document as a file. Throws std::exception.
std::string SampleDocumentBytes();

}  // namespace MakeDocument
