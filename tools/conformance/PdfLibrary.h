// The PDF library behind the tool's host: one page with one comment, and the counts of the
// references that are out. [any-thread]
#pragma once

#include <cstdint>

namespace Conformance {

// What the service hands out: valid for the life of the process.
const void* PdfFunctionTable();

// The one page and the one annotation. A page handed out carries a reference.
void* AcquirePage();
void* TheAnnotation();

// References that are out, of pages and annotations together.
std::int32_t CountPdfReferences();

}  // namespace Conformance
