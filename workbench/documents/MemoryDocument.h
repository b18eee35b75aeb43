// A document made by code: for tests, benchmarks and systems without a PDF reader. It can hold what
// files hold in bad days too: entries that are no annotation, the same annotation twice, dates out
// of range, unpaired surrogates. Faults are injected with FaultInjection.h.
#pragma once

#include "documents/Document.h"

namespace Documents {

struct MemoryAnnotation {
    AnnotationProperties properties;
    std::shared_ptr<const MemoryAnnotation>
        popup{};  // the pop-up that belongs to it, removed with it
};

// An entry of a page's annotation array. Null is an entry that is no annotation; the same pointer
// twice, on one page or on several, is the same annotation.
using MemoryEntry = std::shared_ptr<const MemoryAnnotation>;

inline MemoryEntry MakeEntry(AnnotationProperties properties, MemoryEntry popup = nullptr)
{
    return std::make_shared<const MemoryAnnotation>(
        MemoryAnnotation{std::move(properties), std::move(popup)});
}

struct MemoryPage {
    std::vector<MemoryEntry> annotations{};
    _PDRect box{0, 0, 612, 792};
};

struct MemoryOptions {
    bool listAll = false;  // list every annotation, whatever its subtype and flags
    bool readOnly = false;
    bool deletionPermitted = true;
};

class MemoryDocument final : public Document {
public:
    // Never fails. The pages are copied; later changes of `pages` are not seen.
    static std::shared_ptr<MemoryDocument>
    Make(std::string name, const std::vector<MemoryPage>& pages, const MemoryOptions& options = {});

private:
    MemoryDocument(std::string name, const MemoryOptions& options);

    PageRef ReadPage(std::uint32_t page) override;
    _PDRect ReadPageBox(std::uint32_t page) override;
    // Fails: a document in memory is for looking at, not for keeping.
    void WriteFile(const std::filesystem::path& path) override;
    // Blank pages with their annotations.
    std::string FileBytes(Encryption encryption, const std::function<bool()>& goesOn) override;
};

}  // namespace Documents
