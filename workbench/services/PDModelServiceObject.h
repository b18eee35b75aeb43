// The host's "PDModelService", which returns the function table of the workbench's documents.
#pragma once

#include "pdf-library/PDModelService.SO.h"
#include "services/HostObject.h"

namespace Workbench {

class PDModelServiceObject : public HostObject<PDModelServiceObject, PDModelService> {
public:
    PDModelServiceObject();

private:
    ResultCode GetFunctionTable(const PDFunctionTable** table) const;
};

}  // namespace Workbench
