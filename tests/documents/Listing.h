// A document as the function table shows it, in a form that tests compare and print.
#pragma once

#include "documents/Document.h"

#include <string>
#include <vector>

namespace DocumentsTest {

// One line for each entry of each page's array: "subtype|contents|title|subject|created|modified|
// rectangle", with "-" in front when the entry is not listed; "nothing" where there is no
// annotation. Dates are "y-m-d h:m:s +z", empty for year 0. Texts are UTF-8, line breaks spelled
// out.
using Listing = std::vector<std::vector<std::string>>;

std::vector<std::string> ListPage(Documents::PageRef page);
Listing List(Documents::Document& document);
std::string Describe(const Documents::AnnotationRef& annotation);

// A text entry of the table, asked once.
using TextEntry = ResultCode (*PDFunctionTable::*)(_PDAnnotRec*, PDTextSink, void*);
std::u16string TextOf(TextEntry entry, const Documents::AnnotationRef& annotation);

// "added 2 Square", "removed 0 Text", "changed 1 Text", "inserted 3", "moved 1 4", one for each
// change; or "error: ..." alone.
std::vector<std::string> Events(const Documents::EditResult& result);

}  // namespace DocumentsTest
