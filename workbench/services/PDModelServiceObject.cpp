#include "services/PDModelServiceObject.h"

#include "documents/RecordRef.h"

namespace Workbench {

PDModelServiceObject::PDModelServiceObject()
{
    Offer<PDModelService::GetFunctionTable, &PDModelServiceObject::GetFunctionTable>();
}

ResultCode PDModelServiceObject::GetFunctionTable(const PDFunctionTable** table) const
{
    if (table == nullptr) {
        return kResultNullArgument;
    }
    *table = &Documents::FunctionTable();
    return kResultOk;
}

}  // namespace Workbench
