#include "actions/OpenDocuments.h"

#include "actions/ActionRefused.h"
#include "services/PanelElements.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace Workbench {

namespace fs = std::filesystem;

template <class Matches>
OpenDocument* OpenDocuments::FindIf(Matches matches) const
{
    const auto found = std::find_if(documents_.begin(), documents_.end(),
                                    [&](const auto& document) { return matches(*document); });
    return found == documents_.end() ? nullptr : found->get();
}

OpenDocument& OpenDocuments::Open(DocumentFile file)
{
    auto document = std::make_unique<OpenDocument>();
    static_cast<DocumentFile&>(*document) = std::move(file);
    document->number = next_++;
    document->view = host_.OpenView(document->content);
    documents_.push_back(std::move(document));
    return *documents_.back();
}

std::unique_ptr<OpenDocument> OpenDocuments::Close(OpenDocument& document)
{
    const auto found = std::find_if(documents_.begin(), documents_.end(),
                                    [&](const auto& entry) { return entry.get() == &document; });
    std::unique_ptr<OpenDocument> closed = std::move(*found);
    documents_.erase(found);
    host_.CloseView(closed->view);
    closed->view.Reset();
    return closed;
}

void OpenDocuments::ReopenView(OpenDocument& document, bool readOnly)
{
    const Host::ViewPtr former = document.view;
    const Host::ViewPtr active = host_.Collection().ActiveView();
    const auto focus = former->View().FocusedAnnotation();
    host_.ForceReadOnly(readOnly ? std::optional(true) : std::nullopt);
    try {
        document.view = host_.OpenView(document.content);
    } catch (...) {
        host_.ForceReadOnly(std::nullopt);
        throw;
    }
    host_.ForceReadOnly(std::nullopt);
    document.targetsOfFormerViews += former->View().TargetCount();
    host_.CloseView(former);
    if (active != former) {
        host_.Collection().Activate(active);
    }
    document.view->View().SetFocus(focus.page, focus.annotation);
}

void OpenDocuments::Activate(const OpenDocument& document)
{
    host_.Collection().Activate(document.view);
}

OpenDocument* OpenDocuments::Find(DocumentNumber number) const
{
    return FindIf([&](const OpenDocument& document) { return document.number == number; });
}

OpenDocument* OpenDocuments::FindActive() const
{
    const Host::ViewPtr& active = host_.Collection().ActiveView();
    return FindIf([&](const OpenDocument& document) { return document.view == active; });
}

OpenDocument* OpenDocuments::FindFile(const fs::path& path) const
{
    return FindIf([&](const OpenDocument& document) {
        std::error_code error;
        return document.path &&
               (*document.path == path || fs::equivalent(*document.path, path, error));
    });
}

OpenDocument* OpenDocuments::FindAround(HtmlEngine::ElementHandle element) const
{
    const std::string key = KeyOfContainerAround(*host_.Panel().Document(), element);
    return FindIf([&](const OpenDocument& document) {
        return ContainerKey(document.view->View().AsInterface()) == key;
    });
}

OpenDocument& OpenDocuments::Require(DocumentNumber number) const
{
    OpenDocument* const document = Find(number);
    if (document == nullptr) {
        throw ActionRefused("there is no open document " + std::to_string(number),
                            RefusalReason::kGone);
    }
    return *document;
}

std::vector<std::string> OpenDocuments::TakeWarnings()
{
    std::vector<std::string> lines;
    for (const auto& document : documents_) {
        const std::vector<std::string> warnings = document->content->Warnings();
        const auto told =
            static_cast<std::ptrdiff_t>(std::exchange(document->warningsTold, warnings.size()));
        lines.insert(lines.end(), warnings.begin() + told, warnings.end());
    }
    return lines;
}

}  // namespace Workbench
