// The comment of a document that is highlighted in its list, and which one is to be after an edit,
// so that the list stays where its reader is. The highlight itself is the panel's: the current
// item. The view gives a comment the focus, and the panel follows. [ui-thread]
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

    // `changed` is called when the item, or the state of the list, is another one.
    explicit CurrentComment(std::function<void()> changed) : changed_(std::move(changed)) {}

    // Reads the list as it is after a call of the UI thread. What Show and an edit have asked for
    // gets the focus of the view here when there was no list before.
    void Update(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // The document has been edited; its list follows already, or is loading.
    void FollowEdit(const std::vector<Documents::Change>& changes, BLDocumentViewObject& view,
                    const HtmlEngine::Document& panel);

    // Gives the focus of the view to a comment; once more when the list has come, if there is none.
    void Show(Comment comment, BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // The list is made anew, as that of another view: the comment is to be current there too.
    void Keep();

    // Whether there is a list, and not one that is being made.
    bool HasList() const noexcept { return state_.hasList; }
    bool IsLoading() const noexcept { return state_.isLoading; }
    // The current item of the list; kNoElement for none.
    HtmlEngine::ElementHandle Item() const noexcept { return state_.item; }
    // Position of the current comment in the document; nothing for none.
    std::optional<CommentPosition> PositionIn(Documents::Document& document) const;

private:
    void ReadList(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    struct State {
        bool hasList = false;
        bool isLoading = false;
        HtmlEngine::ElementHandle item = HtmlEngine::kNoElement;

        bool operator==(const State&) const = default;
    };

    const std::function<void()> changed_;
    State state_;
    Comment comment_;  // of the list that there is, or was last
    Comment wanted_;
};

}  // namespace Workbench
