#include "web/CurrentComment.h"

#include "documents/Records.h"
#include "services/AnnotationPlace.h"

#include <algorithm>
#include <utility>

namespace Workbench {

namespace {

using Comment = CurrentComment::Comment;
using Documents::AnnotationRef;
using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

bool IsListed(const AnnotationRef& annotation)
{
    return annotation && annotation.Get()->properties.Load()->listed;
}

// The first listed comment of a page at or after a position, else the last one before it.
Comment ListedNear(Documents::Document& document, std::uint32_t page, std::size_t position)
{
    const Documents::PageRef snapshot = document.AcquirePage(page);
    if (!snapshot) {
        return {};
    }
    const std::vector<AnnotationRef>& annotations = snapshot.Get()->annotations;
    const auto middle =
        annotations.begin() + static_cast<std::ptrdiff_t>(std::min(position, annotations.size()));
    if (const auto next = std::find_if(middle, annotations.end(), IsListed);
        next != annotations.end()) {
        return {page, *next};
    }
    const auto before =
        std::find_if(std::make_reverse_iterator(middle), annotations.rend(), IsListed);
    return before == annotations.rend() ? Comment{} : Comment{page, *before};
}

// As above; for a page without listed comments, the nearest comment on the nearest page.
Comment NearestListed(Documents::Document& document, std::uint32_t page, std::uint32_t position)
{
    Comment found = ListedNear(document, page, position);
    const std::uint32_t count = document.PageCount();
    for (std::uint32_t far = 1; !found.annotation && far < count; ++far) {
        if (page + far < count) {
            found = ListedNear(document, page + far, 0);
        }
        if (!found.annotation && far <= page) {
            found = ListedNear(document, page - far, static_cast<std::size_t>(-1));
        }
    }
    return found;
}

// The page that holds the comment, the former page if possible; kPDNoPage when none does.
std::uint32_t PageShowing(Documents::Document& document, const Comment& comment)
{
    return PositionOnPage(document, comment.page, comment.annotation.Get())
               ? comment.page
               : document.PageIndexOf(comment.annotation.Get());
}

}  // namespace

void CurrentComment::ReadList(BLDocumentViewObject& view, const HtmlEngine::Document& panel)
{
    const ElementHandle container = FindContainer(panel, ContainerKey(view.AsInterface()));
    State state;
    state.isLoading = Workbench::IsLoading(panel, container);
    state.hasList = !state.isLoading && panel.Child(FindList(panel, container), 0) != kNoElement;
    if (state.hasList) {
        state.item = FindCurrentItem(panel, container);
        const auto position = PositionOfItem(panel, state.item);
        comment_ = position ? Comment{position->page, view.Document()->Content().AnnotationAt(
                                                          position->page, position->index)}
                            : Comment{};
    }
    if (state_ != state) {
        state_ = state;
        changed_();
    }
}

void CurrentComment::Update(BLDocumentViewObject& view, const HtmlEngine::Document& panel)
{
    ReadList(view, panel);
    if (state_.hasList && wanted_.annotation) {
        const Comment wanted = std::exchange(wanted_, {});
        const std::uint32_t page = PageShowing(view.Document()->Content(), wanted);
        if (page != kPDNoPage) {
            view.FocusAnew(page, wanted.annotation);
            ReadList(view, panel);
        }
    }
}

void CurrentComment::Show(Comment comment, BLDocumentViewObject& view,
                          const HtmlEngine::Document& panel)
{
    wanted_ = std::move(comment);
    Update(view, panel);
    if (wanted_.annotation) {
        view.SetFocus(wanted_.page, wanted_.annotation);
    }
}

void CurrentComment::Keep()
{
    wanted_ = Place();
}

void CurrentComment::FollowEdit(const std::vector<Documents::Change>& changes,
                                BLDocumentViewObject& view, const HtmlEngine::Document& panel)
{
    Documents::Document& document = view.Document()->Content();
    for (const Documents::Change& change : changes) {
        if (const auto* const pages = std::get_if<Documents::PagesChange>(&change)) {
            Keep();
            const std::uint32_t page = pages->pages.front();
            if (pages->operation == PDPageOperation::kInserted) {
                Comment first = ListedNear(document, page, 0);
                wanted_ = first.annotation ? std::move(first) : wanted_;
            } else if (PageShowing(document, wanted_) == kPDNoPage) {
                wanted_ = NearestListed(document, std::min(page, document.PageCount() - 1), 0);
            }
            break;
        }
        const auto& [operation, page, annotation, position] =
            std::get<Documents::AnnotationChange>(change);
        if (operation == PDAnnotOperation::kAdded && IsListed(annotation)) {
            wanted_ = {page, annotation};
            break;
        }
        if (operation == PDAnnotOperation::kRemoved && IsListed(annotation)) {
            wanted_ = NearestListed(document, page, position);
            break;
        }
    }
    Update(view, panel);
}

std::optional<CommentPosition> CurrentComment::PositionIn(Documents::Document& document) const
{
    return state_.item == kNoElement ? std::nullopt : PlaceIn(document);
}

std::optional<CommentPosition> CurrentComment::PlaceIn(Documents::Document& document) const
{
    const Comment& comment = Place();
    const std::uint32_t page = comment.annotation ? PageShowing(document, comment) : kPDNoPage;
    if (page == kPDNoPage) {
        return std::nullopt;
    }
    const auto index = PositionOnPage(document, page, comment.annotation.Get());
    return index ? std::optional(CommentPosition{page, *index}) : std::nullopt;
}

}  // namespace Workbench
