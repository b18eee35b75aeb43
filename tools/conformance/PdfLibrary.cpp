#include "PdfLibrary.h"

#include "Contract.h"
#include "PlatformLibraries.h"

#include <atomic>
#include <iterator>

namespace Conformance {

namespace {

std::atomic<std::int32_t> g_references = 0;
char g_page;
char g_annotation;

using TextSink = void (*)(void* context, const char16_t* text, std::uint32_t length);

void AddRef(void* record)
{
    g_references += record == nullptr ? 0 : 1;
}

void Release(void* record)
{
    g_references -= record == nullptr ? 0 : 1;
}

std::uint32_t GetAnnotCount(void*, std::uint32_t* count)
{
    *count = 1;
    return kResultOk;
}

std::uint32_t GetAnnot(void*, std::uint32_t position, void** annotation)
{
    *annotation = position == 0 ? &g_annotation : nullptr;
    AddRef(*annotation);
    return position == 0 ? kResultOk : kResultOutOfRange;
}

std::uint32_t IsEqual(void* left, void* right, bool* equal)
{
    *equal = left == right;
    return kResultOk;
}

std::uint32_t IsListed(void*, bool* listed)
{
    *listed = true;
    return kResultOk;
}

std::uint32_t GetSubtype(void*, std::uint32_t* subtype)
{
    *subtype = AtomOf("Highlight");
    return kResultOk;
}

std::uint32_t GetText(void*, TextSink sink, void* context)
{
    constexpr char16_t kText[] = u"a comment";
    sink(context, kText, std::size(kText) - 1);
    return kResultOk;
}

struct Date {
    std::uint16_t year, month, day, hour, minute, second;
    std::int16_t utcOffsetHours;
};

std::uint32_t GetDate(void*, Date* date)
{
    *date = {2024, 2, 29, 12, 30, 0, 1};
    return kResultOk;
}

struct Rectangle {
    double left, bottom, right, top;
};

std::uint32_t GetRectangle(void*, Rectangle* rectangle)
{
    *rectangle = {10, 20, 110, 40};
    return kResultOk;
}

struct FunctionTable {
    std::uint32_t size = sizeof(FunctionTable);
    std::uint32_t version = 1;
    void (*pageAddRef)(void*) = AddRef;
    void (*pageRelease)(void*) = Release;
    void (*annotAddRef)(void*) = AddRef;
    void (*annotRelease)(void*) = Release;
    std::uint32_t (*pageGetAnnotCount)(void*, std::uint32_t*) = GetAnnotCount;
    std::uint32_t (*pageGetAnnot)(void*, std::uint32_t, void**) = GetAnnot;
    std::uint32_t (*annotIsEqual)(void*, void*, bool*) = IsEqual;
    std::uint32_t (*annotIsListed)(void*, bool*) = IsListed;
    std::uint32_t (*annotGetSubtype)(void*, std::uint32_t*) = GetSubtype;
    std::uint32_t (*annotGetContents)(void*, TextSink, void*) = GetText;
    std::uint32_t (*annotGetTitle)(void*, TextSink, void*) = GetText;
    std::uint32_t (*annotGetSubject)(void*, TextSink, void*) = GetText;
    std::uint32_t (*annotGetCreationDate)(void*, Date*) = GetDate;
    std::uint32_t (*annotGetModificationDate)(void*, Date*) = GetDate;
    std::uint32_t (*annotGetRect)(void*, Rectangle*) = GetRectangle;
};
static_assert(sizeof(FunctionTable) == 128);

constexpr FunctionTable kTable;

}  // namespace

const void* PdfFunctionTable()
{
    return &kTable;
}

void* AcquirePage()
{
    AddRef(&g_page);
    return &g_page;
}

void* TheAnnotation()
{
    return &g_annotation;
}

std::int32_t CountPdfReferences()
{
    return g_references;
}

}  // namespace Conformance
