// Makes entries of the PDF function table fail on purpose, and counts the records that are alive.
// For tests: faults hold for every document of the process. [any-thread]
#pragma once

#include "documents/RecordRef.h"

#include <cstdint>

namespace Documents {

enum class TableEntry : std::uint8_t {
    kAcquirePage,  // Document::AcquirePage: hands out no page
    kPageGetAnnotCount,
    kPageGetAnnot,
    kAnnotIsEqual,  // matches `annotation` on the left side
    kAnnotIsListed,
    kAnnotGetSubtype,
    kAnnotGetContents,
    kAnnotGetTitle,
    kAnnotGetSubject,
    kAnnotGetCreationDate,
    kAnnotGetModificationDate,
    kAnnotGetRect,
    kAny,  // in a Fault: every entry
};
inline constexpr std::size_t kTableEntryCount = 12;

struct Fault {
    TableEntry entry;
    ResultCode code = kResultUnexpected;
    std::uint32_t skip = 0;      // matching calls that still succeed: n - 1 to fail the n-th
    std::uint32_t times = 1;     // matching calls that then fail; kEveryTime for all
    AnnotationRef annotation{};  // when set, only calls for this annotation match

    static constexpr std::uint32_t kEveryTime = 0xFFFFFFFFu;
};

// A fault is in force while its handle lives.
class FaultInjection {
public:
    explicit FaultInjection(Fault fault);
    ~FaultInjection();
    FaultInjection(const FaultInjection&) = delete;
    FaultInjection& operator=(const FaultInjection&) = delete;

    // Calls that have failed by this fault so far.
    std::uint32_t Failures() const noexcept;

private:
    std::uint64_t id_;
};

// Records alive in the process. Equal before and after: nothing leaked.
struct LiveRecords {
    std::int64_t pages;
    std::int64_t annotations;

    friend bool operator==(const LiveRecords&, const LiveRecords&) = default;
};
LiveRecords CountLiveRecords() noexcept;

}  // namespace Documents
