#include "documents/MemoryDocument.h"

#include "documents/Records.h"

#include <stdexcept>
#include <unordered_map>

namespace Documents {

namespace {

// Makes one record for each annotation, on however many pages it stands.
class RecordMaker {
public:
    explicit RecordMaker(bool listAll) : listAll_{listAll} {}

    AnnotationRef RecordOf(const MemoryEntry& entry)
    {
        if (entry == nullptr) {
            return {};
        }
        const auto found = records_.find(entry.get());
        if (found != records_.end()) {
            return found->second;
        }
        AnnotationRef record = MakeAnnotationRecord(entry->properties, listAll_);
        records_.emplace(entry.get(), record);
        LinkPopup(*record.Get(), RecordOf(entry->popup));
        return record;
    }

private:
    const bool listAll_;
    std::unordered_map<const MemoryAnnotation*, AnnotationRef> records_;
};

}  // namespace

MemoryDocument::MemoryDocument(std::string name, const MemoryOptions& options)
    : Document{std::move(name), options.listAll}
{
    SetPermissions(options.readOnly, options.deletionPermitted);
}

std::shared_ptr<MemoryDocument> MemoryDocument::Make(std::string name,
                                                     const std::vector<MemoryPage>& pages,
                                                     const MemoryOptions& options)
{
    RecordMaker maker{options.listAll};
    std::vector<Page> made;
    made.reserve(pages.size());
    for (const MemoryPage& page : pages) {
        std::vector<AnnotationRef> annotations;
        annotations.reserve(page.annotations.size());
        for (const MemoryEntry& entry : page.annotations) {
            annotations.push_back(maker.RecordOf(entry));
        }
        made.push_back({MakePageRecord(std::move(annotations)), page.box});
    }
    const std::shared_ptr<MemoryDocument> document{new MemoryDocument{std::move(name), options}};
    document->SetPages(std::move(made));
    return document;
}

// Pages come with their records and boxes, so there is never one left to be read.
PageRef MemoryDocument::ReadPage(std::uint32_t /*page*/)
{
    return MakePageRecord({});
}

_PDRect MemoryDocument::ReadPageBox(std::uint32_t /*page*/)
{
    return MemoryPage{}.box;
}

void MemoryDocument::WriteFile(const std::filesystem::path& /*path*/)
{
    throw std::runtime_error("a document in memory cannot be written to a file");
}

std::string MemoryDocument::FileBytes()
{
    throw std::runtime_error("a document in memory has no file");
}

}  // namespace Documents
