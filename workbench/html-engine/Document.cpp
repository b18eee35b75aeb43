#include "html-engine/Document.h"

#include "html-engine/internal/DocumentParts.h"
#include "html-engine/internal/MarkupReader.h"
#include "html-engine/internal/NewContent.h"
#include "html-engine/internal/Serializer.h"
#include "html-engine/internal/TreeWalk.h"
#include "html-engine/internal/Utf8.h"

namespace HtmlEngine {

using namespace Internal;

Document::Document() : parts_(std::make_unique<Parts>())
{
    Load({});
}

Document::~Document()
{
    std::vector<HandlerOnPath> ended;
    parts_->isClosing = true;
    parts_->tree.SetObserver(nullptr);
    const NodeId root = parts_->tree.Root();
    parts_->Remove({root, root}, ended);
    Parts::NotifyDetached(ended);
}

void Document::Load(std::string_view html)
{
    if (parts_->isClosing) {
        return;
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (html.starts_with(kByteOrderMark)) {
        html.remove_prefix(kByteOrderMark.size());
    }
    const NodeId root = MarkupReader(parts_->tree, html).ReadPage();
    std::vector<HandlerOnPath> ended;
    const NodeId old = parts_->tree.Root();
    parts_->Remove({old, old}, ended);
    parts_->tree.SetRoot(root);
    ++parts_->changeCount;
    Parts::NotifyDetached(ended);
}

ElementHandle Document::Root() const
{
    return parts_->isClosing ? kNoElement : parts_->HandleOf(parts_->tree.Root());
}

std::uint64_t Document::ChangeCount() const
{
    return parts_->changeCount;
}

// ---- Life of elements ----

Result Document::Use(ElementHandle element)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    ++parts_->At(id).element.uses;
    return Result::Success;
}

Result Document::Unuse(ElementHandle element)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    Node& node = parts_->At(id);
    if (node.element.uses == 0) {
        return Result::NotHeld;
    }
    if (--node.element.uses == 0 && !node.Is(NodeFlag::kAttached) && node.parent == kNoNode) {
        parts_->tree.Dispose({id, id});
    }
    return Result::Success;
}

bool Document::IsKnown(ElementHandle element) const
{
    return parts_->Resolve(element) != kNoNode;
}

bool Document::IsAttached(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id != kNoNode && parts_->At(id).Is(NodeFlag::kAttached);
}

// ---- Structure ----

ElementHandle Document::Parent(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? kNoElement : parts_->HandleOf(parts_->At(id).parent);
}

std::size_t Document::ChildCount(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? 0 : parts_->At(id).element.elementCount;
}

ElementHandle Document::Child(ElementHandle element, std::size_t index) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? kNoElement : parts_->HandleOf(parts_->tree.Positions().Child(id, index));
}

std::size_t Document::IndexInParent(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? 0 : parts_->tree.Positions().IndexOf(id);
}

ElementHandle Document::NextSibling(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? kNoElement
                         : parts_->HandleOf(NextElementSibling(parts_->tree.Nodes(), id));
}

ElementHandle Document::PreviousSibling(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? kNoElement
                         : parts_->HandleOf(PreviousElementSibling(parts_->tree.Nodes(), id));
}

std::string_view Document::TagName(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? std::string_view() : parts_->tree.Atoms().Text(parts_->At(id).name);
}

// ---- Content ----

Result Document::SetHtml(ElementHandle element, std::string_view html, InsertPosition position)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    Tree& tree = parts_->tree;
    const bool isInner = position == InsertPosition::ReplaceContent ||
                         position == InsertPosition::InsertFirst ||
                         position == InsertPosition::AppendLast;
    const NodeId parent = isInner ? id : parts_->At(id).parent;
    if (parent == kNoNode) {
        return Result::NoPlace;
    }
    const Node& owner = parts_->At(parent);
    if (isInner && tree.IsVoid(parent)) {
        return Result::NoContent;
    }

    NewContent content(tree, html, parent);
    std::vector<HandlerOnPath> ended;
    bool changed = false;
    if (position == InsertPosition::ReplaceContent) {
        changed = !tree.ContentOf(id).IsEmpty();
        parts_->Remove(tree.ContentOf(id), ended);
    }
    const bool isFirst =
        position == InsertPosition::ReplaceContent || position == InsertPosition::InsertFirst;
    const NodeId previous = isFirst                                    ? kNoNode
                            : position == InsertPosition::AppendLast   ? owner.element.lastChild
                            : position == InsertPosition::InsertBefore ? parts_->At(id).previous
                                                                       : id;
    changed = content.Link(parent, previous) || changed;
    if (position == InsertPosition::ReplaceElement) {
        // After the new content is in: removing may join the text around the old element.
        parts_->Remove({id, id}, ended);
        changed = true;
    }
    parts_->changeCount += changed ? 1 : 0;
    Parts::NotifyDetached(ended);
    return Result::Success;
}

Result Document::SetText(ElementHandle element, std::string_view text)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    Tree& tree = parts_->tree;
    if (tree.IsVoid(id)) {
        return Result::NoContent;
    }
    if (text.empty() && tree.ContentOf(id).IsEmpty()) {
        return Result::Success;
    }
    std::string repaired;
    const std::string_view wellFormed = RepairUtf8(text, repaired);
    std::vector<HandlerOnPath> ended;
    parts_->Remove(tree.ContentOf(id), ended);
    if (!wellFormed.empty()) {
        const NodeId characters = tree.CreateCharacters(NodeKind::Text, wellFormed);
        tree.Link(id, kNoNode, {characters, characters});
    }
    ++parts_->changeCount;
    Parts::NotifyDetached(ended);
    return Result::Success;
}

Result Document::Delete(ElementHandle element)
{
    const NodeId id = parts_->Resolve(element);
    if (id == kNoNode) {
        return Result::UnknownElement;
    }
    if (parts_->At(id).parent == kNoNode) {
        return Result::NoPlace;
    }
    std::vector<HandlerOnPath> ended;
    parts_->Remove({id, id}, ended);
    ++parts_->changeCount;
    Parts::NotifyDetached(ended);
    return Result::Success;
}

std::string Document::TextContent(ElementHandle element) const
{
    std::string text;
    if (const NodeId id = parts_->Resolve(element); id != kNoNode) {
        const auto append = [&](NodeId node) {
            if (parts_->At(node).IsText()) {
                text += parts_->At(node).text.View();
            }
        };
        VisitSubtree(parts_->tree.Nodes(), id, append, [](NodeId) {});
    }
    return text;
}

std::string Document::InnerHtml(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? std::string() : Serializer(parts_->tree).Inner(id);
}

std::string Document::OuterHtml(ElementHandle element) const
{
    const NodeId id = parts_->Resolve(element);
    return id == kNoNode ? std::string() : Serializer(parts_->tree).Outer(id);
}

// ---- Following the tree ----

void Document::SetObserver(TreeObserver* observer)
{
    parts_->tree.SetObserver(observer);
}

NodeHandle Document::NodeOf(ElementHandle element) const
{
    return IsKnown(element) ? NodeHandle{element} : kNoNodeHandle;
}

ElementHandle Document::ElementOf(NodeHandle node) const
{
    return IsKnown(node) ? ElementHandle{node} : kNoElement;
}

}  // namespace HtmlEngine
