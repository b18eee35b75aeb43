// Elements of the panel's document known to the host: containers, lists, items, and the targets of
// the user's input. All selectors for them are in this module. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "html-engine/TreeReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

class HtmlPanel;

// Key of a view's container: the low 32 bits of the view object's address as a signed number.
std::string ContainerKey(const void* documentView);

// Keys of all containers in the panel, in document order.
std::vector<std::string> ContainerKeys(const HtmlEngine::Document& panel);

// The container with that key; kNoElement when the panel has none.
HtmlEngine::ElementHandle FindContainer(const HtmlEngine::Document& panel, const std::string& key);

// The visible container; kNoElement when there is none.
HtmlEngine::ElementHandle FindVisibleContainer(const HtmlEngine::Document& panel);

// Key of the container around the element; empty when there is none.
std::string KeyOfContainerAround(const HtmlEngine::Document& panel,
                                 HtmlEngine::ElementHandle element);

// The list element of a container; kNoElement for an element that is not a container.
HtmlEngine::ElementHandle FindList(const HtmlEngine::Document& panel,
                                   HtmlEngine::ElementHandle container);

// Whether the container's preloader is visible, because its list is being rendered.
bool IsLoading(const HtmlEngine::Document& panel, HtmlEngine::ElementHandle container);

// Number of containers with a visible preloader.
std::size_t CountLoading(const HtmlEngine::Document& panel);

// The current item of a container's list; kNoElement when there is none.
HtmlEngine::ElementHandle FindCurrentItem(const HtmlEngine::Document& panel,
                                          HtmlEngine::ElementHandle container);

// A page and a position in its annotation array, both from 0.
struct CommentPosition {
    std::uint32_t page = 0;
    std::uint32_t index = 0;
};

// The annotation of an item; nullopt for an element that is not an item.
std::optional<CommentPosition> PositionOfItem(const HtmlEngine::Document& panel,
                                              HtmlEngine::ElementHandle item);

// The parts of a list that may be large, told by their place in the panel's structure alone: the
// markup of a comment may imitate them anywhere else.
enum class ListPart {
    kNone,
    kPages,    // the list of a container; its child elements are page items
    kItems,    // the comments of a page item; its child elements are items
    kTooltip,  // the details of an item
};
ListPart ListPartOf(const HtmlEngine::TreeReader& tree, HtmlEngine::NodeHandle element);

// The element with the items of a page item; kNoNodeHandle when it has none.
HtmlEngine::NodeHandle ItemsOf(const HtmlEngine::TreeReader& tree, HtmlEngine::NodeHandle pageItem);

// Whether a page item is collapsed.
bool IsFolded(const HtmlEngine::TreeReader& tree, HtmlEngine::NodeHandle pageItem);

// A row of a list: the caption of a page item, or an item of it. Positions are from 0, among the
// child elements of the lists.
struct ListRow {
    HtmlEngine::ElementHandle list = HtmlEngine::kNoElement;
    std::size_t page = 0;
    std::optional<std::size_t> item;
};

// The row that the element is or is inside of; nullopt for elements outside the lists.
std::optional<ListRow> RowAround(const HtmlEngine::Document& panel,
                                 HtmlEngine::ElementHandle element);

// Whether the element belongs to the panel's delete button.
bool IsInDeleteButton(const HtmlEngine::Document& panel, HtmlEngine::ElementHandle element);

// The target of a key press without an explicit target: the container's current item when it is
// visible, else the list.
HtmlEngine::ElementHandle FindKeyTarget(const HtmlPanel& panel,
                                        HtmlEngine::ElementHandle container);

}  // namespace Workbench
