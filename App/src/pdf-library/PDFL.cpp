#include "pdf-library/PDFL.h"

#include "pdf-library/PDModelService.SO.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/WideText.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>

namespace PDFL {
namespace {

std::atomic<const PDFunctionTable*> g_library = nullptr;

thread_local std::uint64_t t_failedQueries = 0;

bool Succeeded(ResultCode code)
{
    if (code != kResultOk && !IsAbsence(code)) {
        ++t_failedQueries;
    }
    return code == kResultOk;
}

const PDFunctionTable& FetchLibrary()
{
    const auto service = SP::QueryServiceObject<PDModelService>();
    const PDFunctionTable* table = nullptr;
    CallMethod<PDModelService::GetFunctionTable>(service.Get(), &table);
    if (table == nullptr || table->size < kPDFunctionTableMinimum) {
        throw ServiceObjectException({kResultNotInitialized, L"Not initialized", "PDFL::Library",
                                      "include/pdf-library/PDFL", __LINE__});
    }
    g_library.store(table, std::memory_order_release);
    return *table;
}

struct TextTarget {
    std::wstring& text;
    bool failed = false;  // there was no memory for it
};

// Throws nothing through the library.
void AppendText(void* context, const char16_t* text, std::uint32_t length) noexcept
{
    auto& target = *static_cast<TextTarget*>(context);
    try {
        AppendFromUtf16(target.text, std::u16string_view(text, length));
    } catch (const std::exception&) {
        target.failed = true;
    }
}

using TextQuery = ResultCode (*)(_PDAnnotRec*, PDTextSink, void*);

void ReadText(_PDAnnotRec* annotation, TextQuery query, std::wstring& text)
{
    text.clear();
    TextTarget target{text};
    const bool isWhole = Succeeded(query(annotation, &AppendText, &target));
    if (!isWhole || target.failed) {
        text.clear();
    }
    if (target.failed) {
        throw std::bad_alloc();
    }
}

using DateQuery = ResultCode (*)(_PDAnnotRec*, _PDDateRec*);

_PDDateRec DateOf(_PDAnnotRec* annotation, DateQuery query)
{
    _PDDateRec date{};
    if (!Succeeded(query(annotation, &date))) {
        date = {};
    }
    return date;
}

}  // namespace

std::uint64_t FailedQueryCount() noexcept
{
    return t_failedQueries;
}

void CountFailedQuery() noexcept
{
    ++t_failedQueries;
}

const PDFunctionTable& Library()
{
    const PDFunctionTable* table = g_library.load(std::memory_order_acquire);
    return table != nullptr ? *table : FetchLibrary();
}

_PDRect Normalised(const _PDRect& rectangle)
{
    return {std::min(rectangle.left, rectangle.right), std::min(rectangle.bottom, rectangle.top),
            std::max(rectangle.left, rectangle.right), std::max(rectangle.bottom, rectangle.top)};
}

std::uint32_t Page::AnnotationCount() const
{
    std::uint32_t count = 0;
    if (record_ == nullptr || !Succeeded(Library().PageGetAnnotCount(record_, &count))) {
        return 0;
    }
    return count;
}

Annotation Annotation::Retain(_PDAnnotRec* record)
{
    Annotation annotation;
    if (record != nullptr) {
        Library().AnnotAddRef(record);
        annotation.record_ = record;
    }
    return annotation;
}

Annotation Annotation::At(const Page& page, std::uint32_t position)
{
    Annotation annotation;
    if (page && !Succeeded(Library().PageGetAnnot(page.Get(), position, annotation.Receive()))) {
        annotation.Reset();
    }
    return annotation;
}

bool Annotation::IsEqual(const Annotation& other) const
{
    bool equal = false;
    return record_ != nullptr && other.record_ != nullptr &&
           Succeeded(Library().AnnotIsEqual(record_, other.record_, &equal)) && equal;
}

bool Annotation::IsListed() const
{
    bool listed = false;
    return record_ != nullptr && Succeeded(Library().AnnotIsListed(record_, &listed)) && listed;
}

Atom Annotation::Subtype() const
{
    Atom subtype = kAtomNone;
    if (record_ == nullptr || !Succeeded(Library().AnnotGetSubtype(record_, &subtype))) {
        return kAtomNone;
    }
    return subtype;
}

std::wstring Annotation::Contents() const
{
    std::wstring text;
    ReadContents(text);
    return text;
}

void Annotation::ReadContents(std::wstring& text) const
{
    if (record_ == nullptr) {
        text.clear();
    } else {
        ReadText(record_, Library().AnnotGetContents, text);
    }
}

std::wstring Annotation::Title() const
{
    std::wstring text;
    ReadTitle(text);
    return text;
}

void Annotation::ReadTitle(std::wstring& text) const
{
    if (record_ == nullptr) {
        text.clear();
    } else {
        ReadText(record_, Library().AnnotGetTitle, text);
    }
}

std::wstring Annotation::Subject() const
{
    std::wstring text;
    ReadSubject(text);
    return text;
}

void Annotation::ReadSubject(std::wstring& text) const
{
    if (record_ == nullptr) {
        text.clear();
    } else {
        ReadText(record_, Library().AnnotGetSubject, text);
    }
}

_PDDateRec Annotation::CreationDate() const
{
    return record_ == nullptr ? _PDDateRec{} : DateOf(record_, Library().AnnotGetCreationDate);
}

_PDDateRec Annotation::ModificationDate() const
{
    return record_ == nullptr ? _PDDateRec{} : DateOf(record_, Library().AnnotGetModificationDate);
}

ResultCode Annotation::Rectangle(_PDRect& rectangle) const
{
    rectangle = {};
    return record_ == nullptr ? kResultNullArgument : Library().AnnotGetRect(record_, &rectangle);
}

}  // namespace PDFL
