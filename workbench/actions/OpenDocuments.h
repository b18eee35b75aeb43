// The documents open in the workbench, each with its view, in order of opening. [ui-thread]
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
    std::size_t warningsTold = 0;            // number of the content's warnings told so far
    std::uint64_t targetsOfFormerViews = 0;  // go-to requests to its closed views

    BLDocumentObject& Object() const { return *view->View().Document(); }
};

class OpenDocuments {
public:
    // Document numbers ascend from `first` and are never reused. The host outlives this.
    OpenDocuments(Host& host, DocumentNumber first) : host_(host), next_(first) {}

    // Opens a view of the document, which becomes the active one.
    OpenDocument& Open(DocumentFile file);

    // Closes the document's view. Returns the entry, so that the caller can release the content on
    // another thread, which may take long.
    std::unique_ptr<OpenDocument> Close(OpenDocument& document);

    // Drops all entries without closing their views, which the host's shut-down does.
    void ReleaseAll() noexcept { documents_.clear(); }

    // Replaces the document's view by a new one with the same focus and activation, because the
    // panel queries a view's read-only state once. `readOnly` false leaves a read-only document
    // read-only.
    void ReopenView(OpenDocument& document, bool readOnly);

    void Activate(const OpenDocument& document);

    const std::vector<std::unique_ptr<OpenDocument>>& All() const noexcept { return documents_; }

    // Each returns null when there is none.
    OpenDocument* Find(DocumentNumber number) const;
    OpenDocument* FindActive() const;
    OpenDocument* FindFile(const std::filesystem::path& path) const;
    // The document whose list contains the element of the panel.
    OpenDocument* FindAround(HtmlEngine::ElementHandle element) const;

    // Throws ActionRefused (kGone) for an unknown number.
    OpenDocument& Require(DocumentNumber number) const;

    // Problems found in the files since the last call, one line each, naming the file.
    std::vector<std::string> TakeWarnings();

private:
    template <class Matches>
    OpenDocument* FindIf(Matches matches) const;

    Host& host_;
    DocumentNumber next_;
    std::vector<std::unique_ptr<OpenDocument>> documents_;
};

}  // namespace Workbench
