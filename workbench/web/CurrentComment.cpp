#include "web/CurrentComment.h"

#include "documents/Records.h"
#include "driver/PanelReader.h"
#include "services/AnnotationPlace.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
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

// Leading digits; 0 where there are none.
std::uint32_t NumberIn(std::string_view text)
{
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// What an item stands for, read as the panel reads it: the page is that of the enclosing page's
// item, the index what its name holds besides.
std::optional<CurrentComment::Place> PlaceOf(const HtmlEngine::Document& panel, ElementHandle item)
{
    ElementHandle page = kNoElement;
    panel.Closest(item, "li[page-index]", page);
    std::string name = panel.Attribute(item, "annot-name").value_or("");
    if (page == kNoElement || name.empty()) {
        return std::nullopt;
    }
    const std::uint32_t index = NumberIn(panel.Attribute(page, "page-index").value_or(""));
    const std::string prefix = std::to_string(index) + "_";
    if (const std::size_t found = name.find(prefix); found != name.npos) {
        name.erase(found, prefix.size());
    }
    return CurrentComment::Place{index, NumberIn(name)};
}

// The listed comment of a page at a position or behind it, else the last one before.
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

// As above; of a page without any, the one that stands nearest on the nearest page.
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

// The page that shows the comment, if possible the one that did; kPDNoPage when none does.
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
    ElementHandle results = kNoElement;
    panel.SelectFirst(container, "div.results-container", results);
    stands_ = panel.Child(results, 0) != kNoElement && !IsLoading(panel, container);
    item_ = kNoElement;
    if (stands_) {
        panel.SelectFirst(results, "li[annot-name]:current", item_);
        const auto place = item_ == kNoElement ? std::nullopt : PlaceOf(panel, item_);
        comment_ = place
                       ? Comment{place->page,
                                 view.Document()->Content().AnnotationAt(place->page, place->index)}
                       : Comment{};
    }
}

void CurrentComment::Update(BLDocumentViewObject& view, const HtmlEngine::Document& panel)
{
    ReadList(view, panel);
    if (stands_ && wanted_.annotation) {
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
    wanted_ = comment_.annotation ? comment_ : wanted_;
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

std::optional<CurrentComment::Place> CurrentComment::PlaceIn(Documents::Document& document) const
{
    if (item_ == kNoElement) {
        return std::nullopt;
    }
    const auto index = PositionOnPage(document, comment_.page, comment_.annotation.Get());
    return index ? std::optional(Place{comment_.page, *index}) : std::nullopt;
}

}  // namespace Workbench
