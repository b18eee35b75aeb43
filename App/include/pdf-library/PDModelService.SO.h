// Interface `PDModelService`: hands out the PDF library's function table. Listed by the service
// provider as "PDModelService". Implemented by the host. [any-thread]
#pragma once

#include "service-common/ServiceMethod.h"

struct PDFunctionTable;

struct PDModelService : ServiceObject {
    static constexpr const char* kName = "PDModelService";
    static constexpr const char* kHeader = "include/pdf-library/PDModelService.SO.h";

    // The table, valid and unchanged for the life of the process. Asked for until it was handed out
    // once.
    SO_METHOD(PDModelService, GetFunctionTable, 0, const PDFunctionTable** table);

    using Catalogue = SODetails::MethodCatalogue<GetFunctionTable>;
};
