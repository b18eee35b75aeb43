// Tracks a document's current comment, the one whose item is current in the panel's list, and
// chooses the current comment after an edit so that the list keeps its place. The panel owns the
// state; this class changes it by focusing a comment in the view, which the panel follows.
// [ui-thread]
#pragma once

#include "documents/Document.h"
#include "html-engine/Document.h"
#include "services/BLDocumentViewObject.h"
#include "services/PanelElements.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace Workbench {

class CurrentComment {
public:
    using Comment = BLDocumentViewObject::Focus;  // without an annotation: none

    // `changed` is called when the current item or the state of the list has changed.
    explicit CurrentComment(std::function<void()> changed) : changed_(std::move(changed)) {}

    // Reads the list after a call of the UI thread. A comment that Show or an edit requested while
    // there was no list is focused here once the list is complete.
    void Update(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // To be called after an edit, when the list is updated or loading.
    void FollowEdit(const std::vector<Documents::Change>& changes, BLDocumentViewObject& view,
                    const HtmlEngine::Document& panel);

    // Focuses a comment in the view, and again when the list is complete if it is loading now.
    void Show(Comment comment, BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // The list is rendered again for a new view; the current comment is restored in it.
    void Keep();

    // Whether the list is complete, not loading.
    bool HasList() const noexcept { return state_.hasList; }
    bool IsLoading() const noexcept { return state_.isLoading; }
    // The current item of the list; kNoElement for none.
    HtmlEngine::ElementHandle Item() const noexcept { return state_.item; }
    // Position of the current comment in the document; nothing for none.
    std::optional<CommentPosition> PositionIn(Documents::Document& document) const;
    // The same, and while the list is loading, that of the comment that is to be current in it.
    std::optional<CommentPosition> PlaceIn(Documents::Document& document) const;

private:
    // What an edit or Show requested since the last list stood comes before what was current in it.
    const Comment& Place() const { return wanted_.annotation ? wanted_ : comment_; }
    void ReadList(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    struct State {
        bool hasList = false;
        bool isLoading = false;
        HtmlEngine::ElementHandle item = HtmlEngine::kNoElement;

        bool operator==(const State&) const = default;
    };

    const std::function<void()> changed_;
    State state_;
    Comment comment_;  // of the present list, or of the last one
    Comment wanted_;
};

}  // namespace Workbench
