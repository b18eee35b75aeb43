#include "services/BLDocumentObject.h"

#include "services/AnnotationPlace.h"
#include "services/BLDocumentViewObject.h"

#include <limits>
#include <utility>

namespace Workbench {

namespace {

constexpr const char* kDeleteCommand = "Annot_Delete";

Atom DeleteCommandAtom()
{
    static const Atom atom = [] {
        Atom resolved = kAtomNone;
        VxGetAtomFromString(kDeleteCommand, &resolved);
        return resolved;
    }();
    return atom;
}

}  // namespace

BLDocumentObject::BLDocumentObject(HostStatePtr state, std::shared_ptr<Documents::Document> content)
    : state_(std::move(state)), content_(std::move(content))
{
    Offer<BLDocument::GetPageCount, &BLDocumentObject::GetPageCount>();
    Offer<BLDocument::AcquirePage, &BLDocumentObject::AcquirePage>();
    Offer<BLDocument::ExecuteCommand, &BLDocumentObject::ExecuteCommand>();
}

ResultCode BLDocumentObject::GetPageCount(std::int32_t* count) const
{
    if (count == nullptr) {
        return kResultNullArgument;
    }
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    *count = static_cast<std::int32_t>(std::min(content_->PageCount(), kLargest));
    state_->calls.Query("BLDocument.GetPageCount");
    return kResultOk;
}

ResultCode BLDocumentObject::AcquirePage(std::uint32_t index, _PDPageRec** page) const
{
    if (page == nullptr) {
        return kResultNullArgument;
    }
    state_->calls.Query("BLDocument.AcquirePage", index);
    *page = content_->AcquirePage(index).Detach();
    // A page that the document has but cannot deliver is no page, and no mistake of the caller.
    return *page == nullptr && index >= content_->PageCount() ? kResultOutOfRange : kResultOk;
}

ResultCode BLDocumentObject::ExecuteCommand(Atom command, const void* arguments)
{
    const char* name = nullptr;
    VxGetStringFromAtom(command, &name);
    if (command != DeleteCommandAtom()) {
        state_->calls.Request("BLDocument.ExecuteCommand",
                              std::string(name == nullptr ? "" : name));
        FailCall(kResultNotFound, std::string("a document has no command \"") +
                                      (name == nullptr ? "" : name) + "\"");
    }
    if (arguments == nullptr) {
        return kResultNullArgument;
    }
    DeleteAnnotation(*static_cast<const BLAnnotCommandArguments*>(arguments));
    return kResultOk;
}

void BLDocumentObject::DeleteAnnotation(const BLAnnotCommandArguments& arguments)
{
    const auto position = PositionOnPage(*content_, arguments.pageIndex, arguments.annotation);
    const std::string place =
        std::to_string(arguments.pageIndex) + "_" + (position ? std::to_string(*position) : "?");
    state_->calls.Request("BLDocument.ExecuteCommand", std::string(kDeleteCommand),
                          arguments.pageIndex, place);
    const auto refuse = [&](const std::string& reason) {
        FailCall(kResultCommandRefused,
                 content_->Name() + ": annotation " + place + " is not deleted, " + reason);
    };
    if (arguments.document != AsInterface()) {
        refuse("the command names another document");
    }
    if (!position) {
        FailCall(kResultNotFound, content_->Name() + ": page " +
                                      std::to_string(arguments.pageIndex) +
                                      " does not show the annotation to be deleted");
    }
    if (content_->ReadOnly()) {
        refuse("the document is read-only");
    }
    if (!content_->AnnotationDeletionPermitted()) {
        refuse("the document does not permit it");
    }
    if (const std::string reason = Documents::Document::DeletionRefusal(arguments.annotation);
        !reason.empty()) {
        refuse(reason);
    }
    const std::string error = Publish(content_->RemoveAnnotation(arguments.pageIndex, *position));
    if (!error.empty()) {
        FailCall(kResultUnexpected, error);
    }
}

void BLDocumentObject::AddView(BLDocumentViewObject& view)
{
    const std::lock_guard lock(viewsMutex_);
    std::erase_if(views_, [](const auto& weak) { return !weak.Lock(); });
    views_.emplace_back(&view);
}

std::vector<BasicServiceObjectPtr<BLDocumentViewObject>> BLDocumentObject::LivingViews()
{
    std::vector<BasicServiceObjectPtr<BLDocumentViewObject>> living;
    const std::lock_guard lock(viewsMutex_);
    for (const auto& weak : views_) {
        if (auto view = weak.Lock()) {
            living.push_back(std::move(view));
        }
    }
    return living;
}

std::string BLDocumentObject::Publish(Documents::EditResult edit)
{
    Firings firings;
    for (const Documents::Change& change : edit.changes) {
        AppendFirings(firings, change);
    }
    if (firings.empty()) {
        return std::move(edit.error);
    }
    auto fireAll = [self = BasicServiceObjectPtr<BLDocumentObject>::Retain(this),
                    firings = std::move(firings)] {
        for (const auto& fire : firings) {
            fire();
        }
    };
    if (state_->firesOnForeignThread) {
        state_->foreignThread.Run(std::move(fireAll));
    } else {
        fireAll();
    }
    if (editCallback_) {
        editCallback_(edit.changes);
    }
    return {};
}

void BLDocumentObject::AppendFirings(Firings& firings, const Documents::Change& change)
{
    const auto views = LivingViews();
    for (const auto& view : views) {
        if (view->AdjustFocus(change)) {
            firings.push_back([view] { view->FireFocus(kPDNoPage, nullptr); });
        }
    }
    if (const auto* annotation = std::get_if<Documents::AnnotationChange>(&change)) {
        firings.push_back([this, copy = *annotation] {
            state_->Fire(Event<BLDocument::OnAnnotChanged>(), copy.operation, copy.page,
                         copy.annotation.Get());
        });
        return;
    }
    firings.push_back([this, views, copy = std::get<Documents::PagesChange>(change)] {
        const _PDPageRange range{static_cast<std::uint32_t>(copy.pages.size()), 0,
                                 copy.pages.data()};
        state_->Fire(Event<BLDocument::OnPagesChanged>(), copy.operation, &range);
        for (const auto& view : views) {
            state_->Fire(view->Event<BLDocumentView::OnPagesChanged>(), copy.operation, &range);
        }
    });
}

}  // namespace Workbench
