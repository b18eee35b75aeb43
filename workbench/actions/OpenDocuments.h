// The documents that are open in the workbench, each with its view, in the order of opening.
// [ui-thread]
#pragma once

#include "actions/DocumentFile.h"
#include "services/Host.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

using DocumentNumber = std::uint32_t;

struct OpenDocument : DocumentFile {
    DocumentNumber number = 0;
    Host::ViewPtr view;
    std::size_t warningsTold = 0;            // see OpenDocuments::TakeWarnings
    std::uint64_t targetsOfFormerViews = 0;  // go-to requests to views of it that are closed

    BLDocumentObject& Object() const { return *view->View().Document(); }
};

class OpenDocuments {
public:
    // Numbers count up from `first` and are never given twice. The host outlives this.
    OpenDocuments(Host& host, DocumentNumber first) : host_(host), next_(first) {}

    // Opens a view of the document, which becomes the active one.
    OpenDocument& Open(DocumentFile file);

    // Closes the document's view. Returns the entry: releasing the content may take long.
    std::unique_ptr<OpenDocument> Close(OpenDocument& document);

    // Lets go of all entries without closing their views, as the host's end does that.
    void ReleaseAll() noexcept { documents_.clear(); }

    // Opens another view in place of the document's, with the focus that the former one has,
    // because the panel asks once whether a view is read-only. Which view is active stays. Off does
    // not go beyond what the document says.
    void ReopenView(OpenDocument& document, bool readOnly);

    void Activate(const OpenDocument& document);

    const std::vector<std::unique_ptr<OpenDocument>>& All() const noexcept { return documents_; }

    // Null when none is.
    OpenDocument* Find(DocumentNumber number) const;
    OpenDocument* FindActive() const;
    OpenDocument* FindFile(const std::filesystem::path& path) const;
    // The document whose list the element of the panel belongs to.
    OpenDocument* FindAround(HtmlEngine::ElementHandle element) const;

    // Throws ActionRefused, kGone.
    OpenDocument& Require(DocumentNumber number) const;

    // What was amiss with the files since the last call, one line each, naming the file.
    std::vector<std::string> TakeWarnings();

private:
    template <class Matches>
    OpenDocument* FindIf(Matches matches) const;

    Host& host_;
    DocumentNumber next_;
    std::vector<std::unique_ptr<OpenDocument>> documents_;
};

}  // namespace Workbench
