// The comment of a document that is highlighted in its list, and which one is to be after an edit,
// so that the list stays where its reader is. The highlight itself is the panel's: the current
// item. The view gives a comment the focus, and the panel follows. [ui-thread]
#pragma once

#include "documents/Document.h"
#include "html-engine/Document.h"
#include "services/BLDocumentViewObject.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Workbench {

class CurrentComment {
public:
    struct Place {
        std::uint32_t page = kPDNoPage;
        std::uint32_t index = 0;
    };
    using Comment = BLDocumentViewObject::Focus;  // without an annotation: none

    // The list as it stands after a call of the UI thread. What Show and an edit have asked for
    // gets the focus of the view here when the list did not stand before.
    void Update(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // The document has been edited; its list follows already, or is loading.
    void FollowEdit(const std::vector<Documents::Change>& changes, BLDocumentViewObject& view,
                    const HtmlEngine::Document& panel);

    // Gives the focus of the view to a comment; once more when the list stands, if it does not yet.
    void Show(Comment comment, BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    // The list is made anew, as that of another view: the comment is to be current there too.
    void Keep();

    // Whether there is a list, and not one that is being made.
    bool ListStands() const noexcept { return stands_; }
    // Its current item; kNoElement for none.
    HtmlEngine::ElementHandle Item() const noexcept { return item_; }
    // Where the current comment stands in the document; nothing for none.
    std::optional<Place> PlaceIn(Documents::Document& document) const;

private:
    void ReadList(BLDocumentViewObject& view, const HtmlEngine::Document& panel);

    bool stands_ = false;
    HtmlEngine::ElementHandle item_ = HtmlEngine::kNoElement;
    Comment comment_;  // of the list that stands, or stood last
    Comment wanted_;
};

}  // namespace Workbench
