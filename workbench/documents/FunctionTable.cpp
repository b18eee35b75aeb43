#include "documents/FaultPlan.h"
#include "documents/Records.h"

namespace Documents {

namespace {

// A count that has reached 0 belongs to the releasing thread alone, which sees all that other
// threads did before they released.
template <class Record>
void AddReference(Record* record)
{
    if (record != nullptr) {
        record->references.fetch_add(1, std::memory_order_relaxed);
    }
}

template <class Record>
void ReleaseReference(Record* record)
{
    if (record != nullptr && record->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::unique_ptr<Record>{record}.reset();
    }
}

ResultCode PageGetAnnotCount(_PDPageRec* page, std::uint32_t* count)
{
    if (count == nullptr) {
        return kResultNullArgument;
    }
    *count = 0;
    if (page == nullptr) {
        return kResultNullArgument;
    }
    if (const ResultCode fault = CheckFault(TableEntry::kPageGetAnnotCount); fault != kResultOk) {
        return fault;
    }
    *count = static_cast<std::uint32_t>(page->annotations.size());
    return kResultOk;
}

ResultCode PageGetAnnot(_PDPageRec* page, std::uint32_t position, _PDAnnotRec** annotation)
{
    if (annotation == nullptr) {
        return kResultNullArgument;
    }
    *annotation = nullptr;
    if (page == nullptr) {
        return kResultNullArgument;
    }
    if (position >= page->annotations.size()) {
        return kResultOutOfRange;
    }
    _PDAnnotRec* const record = page->annotations[position].Get();
    if (const ResultCode fault = CheckFault(TableEntry::kPageGetAnnot, record);
        fault != kResultOk) {
        return fault;
    }
    AddReference(record);
    *annotation = record;
    return kResultOk;
}

ResultCode AnnotIsEqual(_PDAnnotRec* left, _PDAnnotRec* right, bool* equal)
{
    if (equal == nullptr) {
        return kResultNullArgument;
    }
    *equal = false;
    if (left == nullptr || right == nullptr) {
        return kResultNullArgument;
    }
    if (const ResultCode fault = CheckFault(TableEntry::kAnnotIsEqual, left); fault != kResultOk) {
        return fault;
    }
    *equal = left == right;
    return kResultOk;
}

// The shape of every query for one property: `read(block, value)` answers with a result code.
template <TableEntry kEntry, class Value, class Read>
ResultCode Query(_PDAnnotRec* annotation, Value* value, Read read)
{
    if (value == nullptr) {
        return kResultNullArgument;
    }
    *value = Value{};
    if (annotation == nullptr) {
        return kResultNullArgument;
    }
    if (const ResultCode fault = CheckFault(kEntry, annotation); fault != kResultOk) {
        return fault;
    }
    return annotation->properties.Peek(
        [&](const PropertyBlock& block) { return read(block, *value); });
}

ResultCode AnnotIsListed(_PDAnnotRec* annotation, bool* listed)
{
    return Query<TableEntry::kAnnotIsListed>(annotation, listed,
                                             [](const PropertyBlock& block, bool& value) {
                                                 value = block.listed;
                                                 return kResultOk;
                                             });
}

ResultCode AnnotGetSubtype(_PDAnnotRec* annotation, Atom* subtype)
{
    return Query<TableEntry::kAnnotGetSubtype>(annotation, subtype,
                                               [](const PropertyBlock& block, Atom& value) {
                                                   value = block.subtype;
                                                   return kResultOk;
                                               });
}

template <TableEntry kEntry, _PDDateRec AnnotationProperties::*kDate>
ResultCode AnnotGetDate(_PDAnnotRec* annotation, _PDDateRec* date)
{
    return Query<kEntry>(annotation, date, [](const PropertyBlock& block, _PDDateRec& value) {
        value = block.properties.*kDate;
        return kResultOk;
    });
}

ResultCode AnnotGetRect(_PDAnnotRec* annotation, _PDRect* rect)
{
    return Query<TableEntry::kAnnotGetRect>(annotation, rect,
                                            [](const PropertyBlock& block, _PDRect& value) {
                                                if (!block.properties.rect) {
                                                    return kResultNotFound;
                                                }
                                                value = *block.properties.rect;
                                                return kResultOk;
                                            });
}

template <TableEntry kEntry, std::u16string AnnotationProperties::*kText>
ResultCode AnnotGetText(_PDAnnotRec* annotation, PDTextSink sink, void* context)
{
    if (annotation == nullptr || sink == nullptr) {
        return kResultNullArgument;
    }
    if (const ResultCode fault = CheckFault(kEntry, annotation); fault != kResultOk) {
        return fault;
    }
    const PropertyBlockRef block = annotation->properties.Load();
    const std::u16string& text = block->properties.*kText;
    sink(context, text.data(), static_cast<std::uint32_t>(text.size()));
    return kResultOk;
}

constexpr PDFunctionTable kTable{
    .size = sizeof(PDFunctionTable),
    .version = 1,
    .PageAddRef = AddReference<_PDPageRec>,
    .PageRelease = ReleaseReference<_PDPageRec>,
    .AnnotAddRef = AddReference<_PDAnnotRec>,
    .AnnotRelease = ReleaseReference<_PDAnnotRec>,
    .PageGetAnnotCount = PageGetAnnotCount,
    .PageGetAnnot = PageGetAnnot,
    .AnnotIsEqual = AnnotIsEqual,
    .AnnotIsListed = AnnotIsListed,
    .AnnotGetSubtype = AnnotGetSubtype,
    .AnnotGetContents =
        AnnotGetText<TableEntry::kAnnotGetContents, &AnnotationProperties::contents>,
    .AnnotGetTitle = AnnotGetText<TableEntry::kAnnotGetTitle, &AnnotationProperties::title>,
    .AnnotGetSubject = AnnotGetText<TableEntry::kAnnotGetSubject, &AnnotationProperties::subject>,
    .AnnotGetCreationDate =
        AnnotGetDate<TableEntry::kAnnotGetCreationDate, &AnnotationProperties::created>,
    .AnnotGetModificationDate =
        AnnotGetDate<TableEntry::kAnnotGetModificationDate, &AnnotationProperties::modified>,
    .AnnotGetRect = AnnotGetRect,
};

}  // namespace

const PDFunctionTable& FunctionTable() noexcept
{
    return kTable;
}

}  // namespace Documents
