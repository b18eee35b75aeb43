// The elements of the panel's document that a host has to know: containers, lists, items, and what
// of them a reader's input is for. Their selectors stand here and nowhere else. [ui-thread]
#pragma once

#include "html-engine/Document.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

class HtmlPanel;

// Key of the container of the view object at that address: its low 32 bits as a signed number.
std::string ContainerKey(const void* documentView);

// Keys of all containers that the panel has, in document order.
std::vector<std::string> ContainerKeys(const HtmlEngine::Document& panel);

// The container with that key; kNoElement when the panel has none.
HtmlEngine::ElementHandle FindContainer(const HtmlEngine::Document& panel, const std::string& key);

// The container that is shown; kNoElement when none is.
HtmlEngine::ElementHandle FindVisibleContainer(const HtmlEngine::Document& panel);

// Key of the container that the element stands in; empty when it stands in none.
std::string KeyOfContainerAround(const HtmlEngine::Document& panel,
                                 HtmlEngine::ElementHandle element);

// The element of a container that holds its list; kNoElement for an element that is no container.
HtmlEngine::ElementHandle FindList(const HtmlEngine::Document& panel,
                                   HtmlEngine::ElementHandle container);

// Whether the container shows its preloader: its list is being rendered.
bool IsLoading(const HtmlEngine::Document& panel, HtmlEngine::ElementHandle container);

// Number of containers that show their preloader.
std::size_t CountLoading(const HtmlEngine::Document& panel);

// The current item of a container's list; kNoElement when no item is current.
HtmlEngine::ElementHandle FindCurrentItem(const HtmlEngine::Document& panel,
                                          HtmlEngine::ElementHandle container);

// A page and a position in its array of annotations, both from 0.
struct CommentPosition {
    std::uint32_t page = 0;
    std::uint32_t index = 0;
};

// Which annotation an item stands for; nothing for an element that is no item.
std::optional<CommentPosition> PositionOfItem(const HtmlEngine::Document& panel,
                                              HtmlEngine::ElementHandle item);

// Whether a click on the element presses the panel's delete button.
bool IsInDeleteButton(const HtmlEngine::Document& panel, HtmlEngine::ElementHandle element);

// The element that a key without a target of its own is for: the current item of the container's
// list when a reader could see it, else the list.
HtmlEngine::ElementHandle FindKeyTarget(const HtmlPanel& panel,
                                        HtmlEngine::ElementHandle container);

}  // namespace Workbench
