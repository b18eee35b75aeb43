#include "documents/MemoryDocument.h"

#include "documents/AnnotationSyntax.h"
#include "documents/PlainFile.h"
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
        AnnotationProperties properties = entry->properties;
        properties.hasAppearance = IsDrawn(properties);
        AnnotationRef record = MakeAnnotationRecord(std::move(properties), listAll_);
        records_.emplace(entry.get(), record);
        LinkPopup(*record.Get(), RecordOf(entry->popup));
        return record;
    }

private:
    const bool listAll_;
    std::unordered_map<const MemoryAnnotation*, AnnotationRef> records_;
};

// Writes each annotation once, with the pop-up that belongs to it, on however many pages it stands.
class AnnotationWriter {
public:
    explicit AnnotationWriter(PlainFile& file) : file_{file} {}

    // What an array of annotations has for it; "null" for null.
    std::string Write(const _PDAnnotRec* annotation)
    {
        if (annotation == nullptr) {
            return "null";
        }
        const auto [known, fresh] = written_.try_emplace(annotation, 0);
        if (fresh) {
            known->second = file_.Reserve();
            WriteObject(*annotation, known->second);
        }
        return PlainFile::Reference(written_.at(annotation));
    }

private:
    void WriteObject(const _PDAnnotRec& annotation, PlainFile::Number object)
    {
        const PropertyBlockRef block = annotation.properties.Load();
        std::string entries = AnnotationEntries(block->properties);
        const Appearance appearance = DrawAppearance(block->properties);
        if (!appearance.operators.empty()) {
            const PlainFile::Number form = file_.Reserve();
            file_.WriteStream(form, appearance.entries, appearance.operators);
            entries += " /AP << /N " + PlainFile::Reference(form) + " >>";
        }
        if (annotation.popup) {
            entries += " /Popup " + Write(annotation.popup.Get());
        }
        file_.Write(object, "<< " + entries + " >>");
    }

    PlainFile& file_;
    std::unordered_map<const _PDAnnotRec*, PlainFile::Number> written_;
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
    std::shared_ptr<MemoryDocument> document{new MemoryDocument{std::move(name), options}};
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

std::string MemoryDocument::FileBytes(Encryption /*encryption*/,
                                      const std::function<bool()>& /*goesOn*/)
{
    PlainFile file;
    const PlainFile::Number catalogue = file.Reserve();
    const PlainFile::Number tree = file.Reserve();
    file.Write(catalogue, "<< /Type /Catalog /Pages " + PlainFile::Reference(tree) + " >>");
    AnnotationWriter annotations{file};
    std::string kids;
    for (std::uint32_t page = 0; page < PageCount(); ++page) {
        const PlainFile::Number object = file.Reserve();
        kids += PlainFile::Reference(object) + ' ';
        std::string array;
        for (const AnnotationRef& annotation : KnownPage(page).Get()->annotations) {
            array += annotations.Write(annotation.Get()) + ' ';
        }
        file.Write(object, "<< /Type /Page /Parent " + PlainFile::Reference(tree) + " /MediaBox " +
                               RectangleSyntax(PageBox(page).value_or(MemoryPage{}.box)) +
                               " /Resources << >> /Annots [" + array + "] >>");
    }
    file.Write(tree, "<< /Type /Pages /Count " + std::to_string(PageCount()) + " /Kids [" + kids +
                         "] >>");
    return file.Finish();
}

}  // namespace Documents
