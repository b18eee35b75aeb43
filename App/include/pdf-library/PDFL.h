// Wrappers of the PDF library's records. Each holds one reference to a page or an annotation and
// gives it back; an empty one stands for none. [any-thread]
#pragma once

#include "pdf-library/PDFunctionTable.h"

#include <cstdint>
#include <string>
#include <utility>

namespace PDFL {

// The library's function table, fetched from the host's "PDModelService" on first use and kept for
// the life of the module. Throws ServiceObjectException when it cannot be had.
const PDFunctionTable& Library();

// Number of queries of this thread that the library failed to answer; what they asked for counts as
// absent. Its growth tells that something was left out. A property that is not there is no failure.
std::uint64_t FailedQueryCount() noexcept;
void CountFailedQuery() noexcept;

// The rectangle with its corners in order.
_PDRect Normalised(const _PDRect& rectangle);

namespace Details {

struct AnnotationRecord {
    using Record = _PDAnnotRec;
    static void AddRef(Record* record) { Library().AnnotAddRef(record); }
    static void Release(Record* record) { Library().AnnotRelease(record); }
};
struct PageRecord {
    using Record = _PDPageRec;
    static void AddRef(Record* record) { Library().PageAddRef(record); }
    static void Release(Record* record) { Library().PageRelease(record); }
};

template <class Traits>
class Handle {
public:
    using Record = typename Traits::Record;

    Handle() noexcept = default;
    Handle(const Handle& other) : record_(other.record_)
    {
        if (record_ != nullptr) {
            Traits::AddRef(record_);
        }
    }
    Handle(Handle&& other) noexcept : record_(std::exchange(other.record_, nullptr)) {}
    Handle& operator=(Handle other) noexcept
    {
        std::swap(record_, other.record_);
        return *this;
    }
    ~Handle() { Reset(); }

    Record* Get() const noexcept { return record_; }
    explicit operator bool() const noexcept { return record_ != nullptr; }

    void Reset() noexcept
    {
        if (record_ != nullptr) {
            Traits::Release(std::exchange(record_, nullptr));
        }
    }

    // Empties the handle and gives the address that a call stores an owned record at. Fails as
    // Library does: no record is taken that could not be given back.
    Record** Receive()
    {
        Library();
        Reset();
        return &record_;
    }

protected:
    Record* record_ = nullptr;
};

}  // namespace Details

// A page as it stood when it was acquired.
class Page : public Details::Handle<Details::PageRecord> {
public:
    // 0 when the library cannot tell.
    std::uint32_t AnnotationCount() const;
};

class Annotation : public Details::Handle<Details::AnnotationRecord> {
public:
    Annotation() = default;

    // Adds a reference to a record that the caller has borrowed; empty for null.
    static Annotation Retain(_PDAnnotRec* record);
    // The annotation at a position of the page; empty when there is none.
    static Annotation At(const Page& page, std::uint32_t position);

    // False also when the library cannot tell.
    bool IsEqual(const Annotation& other) const;
    bool IsListed() const;
    // kAtomNone when it has none.
    Atom Subtype() const;

    // Texts; empty when absent or not to be had.
    std::wstring Contents() const;
    std::wstring Title() const;
    std::wstring Subject() const;
    // The same into a text that has room already.
    void ReadContents(std::wstring& text) const;
    void ReadTitle(std::wstring& text) const;
    void ReadSubject(std::wstring& text) const;

    // Year 0 when absent or not to be had.
    _PDDateRec CreationDate() const;
    _PDDateRec ModificationDate() const;

    // The library's code is returned as it is.
    ResultCode Rectangle(_PDRect& rectangle) const;
};

}  // namespace PDFL
