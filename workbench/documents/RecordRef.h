// Owning handles to the PDF library's records, for the host's side: one reference each, added on
// copy and released at the end. Included by everything that holds a page or an annotation of a
// document. [any-thread]
#pragma once

#include "pdf-library/PDFunctionTable.h"

#include <cstddef>
#include <utility>

namespace Documents {

// The one function table of the process; it serves the records of every kind of document.
const PDFunctionTable& FunctionTable() noexcept;

template <class Record, void (*PDFunctionTable::*AddReference)(Record*),
          void (*PDFunctionTable::*ReleaseReference)(Record*)>
class RecordRef {
public:
    RecordRef() noexcept = default;
    RecordRef(std::nullptr_t) noexcept {}
    RecordRef(const RecordRef& other) noexcept : record_{other.record_}
    {
        (FunctionTable().*AddReference)(record_);
    }
    RecordRef(RecordRef&& other) noexcept : record_{std::exchange(other.record_, nullptr)} {}
    RecordRef& operator=(RecordRef other) noexcept
    {
        std::swap(record_, other.record_);
        return *this;
    }
    ~RecordRef() { (FunctionTable().*ReleaseReference)(record_); }

    // Takes over a reference that the caller owns.
    static RecordRef Adopt(Record* record) noexcept
    {
        RecordRef result;
        result.record_ = record;
        return result;
    }

    // Adds a reference to a record that the caller has borrowed; null gives an empty handle.
    static RecordRef Retain(Record* record) noexcept
    {
        (FunctionTable().*AddReference)(record);
        return Adopt(record);
    }

    // Borrowed; null when empty.
    Record* Get() const noexcept { return record_; }

    // Gives the reference away: the caller owns it from here on.
    [[nodiscard]] Record* Detach() noexcept { return std::exchange(record_, nullptr); }

    explicit operator bool() const noexcept { return record_ != nullptr; }
    friend bool operator==(const RecordRef& left, const RecordRef& right) noexcept
    {
        return left.record_ == right.record_;
    }

private:
    Record* record_ = nullptr;
};

using PageRef = RecordRef<_PDPageRec, &PDFunctionTable::PageAddRef, &PDFunctionTable::PageRelease>;
using AnnotationRef =
    RecordRef<_PDAnnotRec, &PDFunctionTable::AnnotAddRef, &PDFunctionTable::AnnotRelease>;

}  // namespace Documents
