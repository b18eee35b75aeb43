// The interfaces that the tool's host offers: their tables, and what each entry does.
#pragma once

#include "HostObject.h"

#include <cstdint>
#include <span>

namespace Conformance {

struct HostInterface {
    const char* name;
    unsigned methods;
    bool isService;
    void (*fill)(HostObject& object);
};
std::span<const HostInterface> HostInterfaces();

// The one annotation of the one page behind the host's document.
void* TheAnnotation();
// References to records of the PDF library that are out.
std::int32_t CountPdfReferences();

}  // namespace Conformance
