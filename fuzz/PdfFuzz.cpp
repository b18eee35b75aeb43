// Any bytes as a PDF file: opened, listed, edited and written, in bounded time; what was written
// opens again and lists the same.

#include "FuzzTarget.h"
#include "documents/QpdfDocument.h"
#include "documents/Records.h"

#include <vector>

namespace {

using namespace Documents;

constexpr std::uint32_t kMostPages = 20;
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

struct Entry {
    std::string subtype;
    std::u16string contents;
    std::u16string title;

    friend bool operator==(const Entry&, const Entry&) = default;
};
using Listing = std::vector<std::vector<Entry>>;

Listing List(Document& document)
{
    Listing listing;
    for (std::uint32_t page = 0; page < std::min(document.PageCount(), kMostPages); ++page) {
        listing.emplace_back();
        document.PageBox(page);
        const PageRef record = document.AcquirePage(page);
        for (const AnnotationRef& annotation : record.Get()->annotations) {
            if (annotation) {
                Document::DeletionRefusal(annotation.Get());
                const PropertyBlockRef block = annotation.Get()->properties.Load();
                listing.back().push_back({block->properties.subtype, block->properties.contents,
                                          block->properties.title});
            }
        }
    }
    return listing;
}

// Every kind of edit; some are taken back.
void ChangeDocument(Document& document)
{
    document.ChangeContents(0, 0, u"changed");
    document.AddAnnotation(0, "Highlight", u"added", std::nullopt,
                           Authorship{u"author", {2024, 5, 1, 10, 0, 0, 0}});
    document.RemoveAnnotation(0, 1);
    document.Undo();
    document.InsertPage(1);
    document.MovePage(0, 1);
    document.DeletePage(0);
    document.Undo();
    document.RemoveAnnotation(0, 0);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view input = TextOf(data, size);
    if (size > kMostBytes) {
        return 0;
    }
    const auto document = QpdfDocument::OpenBytes(std::string(input), "file", {{}, true}).document;
    if (document == nullptr) {
        return 0;
    }
    List(*document);
    ChangeDocument(*document);
    const Listing listing = List(*document);
    const BytesResult written = document->WriteBytes(Encryption::kDropped);
    document->Warnings();
    if (!written.Succeeded()) {
        return 0;
    }
    const auto again = QpdfDocument::OpenBytes(written.bytes, "file", {{}, true}).document;
    if (again == nullptr) {
        EndWithFault("What was written does not open.", input);
    }
    if (again->PageCount() != document->PageCount() || List(*again) != listing) {
        EndWithFault("What was written lists otherwise.", input);
    }
    return 0;
}
