#include "services/AnnotationPlace.h"

namespace Workbench {

std::optional<std::uint32_t> PositionOnPage(Documents::Document& document, std::uint32_t page,
                                            const _PDAnnotRec* annotation)
{
    const Documents::PageRef snapshot = document.AcquirePage(page);
    if (!snapshot || annotation == nullptr) {
        return std::nullopt;
    }
    const PDFunctionTable& table = Documents::FunctionTable();
    std::uint32_t count = 0;
    table.PageGetAnnotCount(snapshot.Get(), &count);
    for (std::uint32_t position = 0; position < count; ++position) {
        _PDAnnotRec* found = nullptr;
        table.PageGetAnnot(snapshot.Get(), position, &found);
        if (Documents::AnnotationRef::Adopt(found).Get() == annotation) {
            return position;
        }
    }
    return std::nullopt;
}

std::optional<std::string> PlaceName(Documents::Document& document, std::uint32_t page,
                                     const _PDAnnotRec* annotation)
{
    const auto position = PositionOnPage(document, page, annotation);
    if (!position) {
        return std::nullopt;
    }
    return std::to_string(page) + "_" + std::to_string(*position);
}

}  // namespace Workbench
