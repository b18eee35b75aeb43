#include "web/PanelWriter.h"

#include "driver/JsonText.h"

#include <utility>

namespace Workbench {

using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;
using HtmlEngine::TreeReader;

namespace {

// Number of nodes of an insertion that are written.
std::size_t CountNodes(const TreeReader& reader, const HeldChildren& held,
                       std::span<const NodeHandle> tops)
{
    std::size_t count = 0;
    for (const NodeHandle top : tops) {
        NodeHandle node = top;
        for (;;) {
            ++count;
            const NodeHandle child = held.IsHeld(node) ? kNoNodeHandle : reader.FirstChild(node);
            if (child != kNoNodeHandle) {
                node = child;
                continue;
            }
            while (node != top && reader.NextSibling(node) == kNoNodeHandle) {
                node = reader.Parent(node);
            }
            if (node == top) {
                break;
            }
            node = reader.NextSibling(node);
        }
    }
    return count;
}

std::vector<NodeHandle> SiblingsFrom(const TreeReader& reader, NodeHandle first, NodeHandle last)
{
    std::vector<NodeHandle> siblings{first};
    while (siblings.back() != last) {
        siblings.push_back(reader.NextSibling(siblings.back()));
    }
    return siblings;
}

}  // namespace

// State of one insertion: a walk through the nodes, with the open brackets of the JSON text.
class PanelWriter::Insertion {
public:
    // `tops` are inserted behind `previous`.
    Insertion(PanelWriter& writer, std::span<const NodeHandle> tops, NodeHandle previous)
        : writer_(writer),
          reader_(writer.reader_),
          tops_(tops),
          previous_(previous),
          node_(tops.front()),
          remaining_(CountNodes(reader_, writer.held_, tops))
    {
    }

    void Write()
    {
        while (node_ != kNoNodeHandle) {
            if (writer_.IsFull()) {
                CutHere();
            }
            if (!open_) {
                Open();
            } else if (!isFirstChild_) {
                writer_.changes_ += ',';
            }
            const bool goesInside = writer_.WriteNode(node_);
            --remaining_;
            GoOn(goesInside);
        }
    }

private:
    void Open()
    {
        writer_.BeginChange();
        writer_.changes_ += "[\"i\",";
        writer_.WriteId(reader_.Parent(node_));
        writer_.changes_ += ',';
        writer_.WriteId(node_ == tops_.front() ? previous_ : reader_.PreviousSibling(node_));
        writer_.changes_ += ",[";
        open_ = true;
    }

    void Close()
    {
        if (std::exchange(open_, false)) {
            writer_.changes_ += "]]";
        }
    }

    // Ends the message before the present node, which then begins a new insertion.
    void CutHere()
    {
        NodeHandle parent = reader_.Parent(node_);
        for (; depth_ > 0; --depth_) {
            writer_.WriteNodeEnd(parent);
            parent = reader_.Parent(parent);
        }
        Close();
        writer_.EndMessage(remaining_);
    }

    void GoOn(bool goesInside)
    {
        if (goesInside && reader_.FirstChild(node_) != kNoNodeHandle) {
            node_ = reader_.FirstChild(node_);
            ++depth_;
            isFirstChild_ = true;
            return;
        }
        isFirstChild_ = false;
        EndNode(node_, goesInside);
        while (node_ != tops_.front()) {
            if (const NodeHandle next = reader_.NextSibling(node_); next != kNoNodeHandle) {
                node_ = next;
                return;
            }
            node_ = reader_.Parent(node_);
            if (depth_ > 0) {
                --depth_;
                EndNode(node_, true);
            } else {
                Close();
            }
        }
        previous_ = tops_.front();
        tops_ = tops_.subspan(1);
        node_ = tops_.empty() ? kNoNodeHandle : tops_.front();
        if (tops_.empty()) {
            Close();
        }
    }

    void EndNode(NodeHandle node, bool hasOpenChildren)
    {
        if (hasOpenChildren) {
            writer_.WriteNodeEnd(node);
        }
    }

    PanelWriter& writer_;
    const TreeReader& reader_;
    std::span<const NodeHandle> tops_;  // the present one and those behind it
    NodeHandle previous_;               // of the present top
    NodeHandle node_;
    std::size_t remaining_;
    std::size_t depth_ = 0;  // nodes whose children are being written
    bool open_ = false;
    bool isFirstChild_ = false;
};

bool PanelWriter::IsFull() const noexcept
{
    return nodes_ >= kMostNodes || changes_.size() >= kFullBytes;
}

void PanelWriter::BeginChange()
{
    if (IsFull()) {
        EndMessage(0);
    }
    if (!changes_.empty()) {
        changes_ += ',';
    }
}

void PanelWriter::EndMessage(std::size_t remaining)
{
    PanelMessage message = R"({"type":"panel",)";
    message.reserve(changes_.size() + 80);
    message += std::exchange(reset_, false) ? R"("reset":true,"changes":[)" : R"("changes":[)";
    message += changes_;
    message += R"(],"remaining":)";
    AppendNumber(message, remaining);
    message += '}';
    messages_.push_back(std::move(message));
    changes_.clear();
    nodes_ = 0;
}

void PanelWriter::WriteId(NodeHandle node)
{
    AppendNumber(changes_, IdOf(node));
}

// Writes a node completely, or, and then returns true, an element up to its children.
bool PanelWriter::WriteNode(NodeHandle node)
{
    ++nodes_;
    changes_ += '[';
    WriteId(node);
    const NodeKind kind = reader_.Kind(node);
    if (kind == NodeKind::Element) {
        changes_ += ',';
        AppendJsonText(changes_, reader_.TagName(node));
        changes_ += ',';
        WriteAttributes(node);
        changes_ += ',';
        AppendNumber(changes_, reader_.State(node));
        changes_ += ',';
        if (held_.IsHeld(node)) {
            held_.Describe(node, changes_);
            changes_ += ']';
            return false;
        }
        changes_ += '[';
        return true;
    }
    changes_ += kind == NodeKind::Comment ? ",null," : ",";
    AppendJsonText(changes_, reader_.Text(node));
    changes_ += ']';
    return false;
}

void PanelWriter::WriteNodeEnd(NodeHandle element)
{
    switch (reader_.NamespaceOf(element)) {
    case HtmlEngine::Namespace::Html:
        changes_ += "]]";
        return;
    case HtmlEngine::Namespace::Svg:
        changes_ += "],\"svg\"]";
        return;
    case HtmlEngine::Namespace::MathMl:
        changes_ += "],\"math\"]";
        return;
    }
}

void PanelWriter::WriteAttributes(NodeHandle element)
{
    changes_ += '[';
    const std::size_t count = reader_.AttributeCount(element);
    std::string classes;
    std::size_t index = 0;
    for (; index < count; ++index) {
        const auto [name, value] = reader_.AttributeAt(element, index);
        if (name != "class") {
            break;
        }
        classes += classes.empty() ? "" : " ";
        classes += value;
    }
    if (!classes.empty()) {
        changes_ += "\"class\",";
        AppendJsonText(changes_, classes);
    }
    for (; index < count; ++index) {
        const auto [name, value] = reader_.AttributeAt(element, index);
        if (changes_.back() != '[') {
            changes_ += ',';
        }
        AppendJsonText(changes_, name);
        changes_ += ',';
        AppendJsonText(changes_, value);
    }
    changes_ += ']';
}

void PanelWriter::Insert(NodeHandle first, NodeHandle last)
{
    Insertion(*this, SiblingsFrom(reader_, first, last), reader_.PreviousSibling(first)).Write();
}

void PanelWriter::InsertHeld(std::span<const NodeHandle> children, NodeHandle previous)
{
    if (!children.empty()) {
        Insertion(*this, children, previous).Write();
    }
}

void PanelWriter::Change(std::string_view json)
{
    BeginChange();
    changes_ += json;
}

void PanelWriter::Remove(NodeHandle first, NodeHandle last)
{
    BeginChange();
    changes_ += "[\"r\"";
    for (NodeHandle node = first;; node = reader_.NextSibling(node)) {
        changes_ += ',';
        WriteId(node);
        if (node == last) {
            break;
        }
    }
    changes_ += ']';
}

void PanelWriter::Text(NodeHandle text)
{
    BeginChange();
    changes_ += "[\"t\",";
    WriteId(text);
    changes_ += ',';
    AppendJsonText(changes_, reader_.Text(text));
    changes_ += ']';
}

void PanelWriter::Attributes(NodeHandle element)
{
    BeginChange();
    changes_ += "[\"a\",";
    WriteId(element);
    changes_ += ',';
    WriteAttributes(element);
    changes_ += ']';
}

void PanelWriter::States(NodeHandle element)
{
    BeginChange();
    changes_ += "[\"s\",";
    WriteId(element);
    changes_ += ',';
    AppendNumber(changes_, reader_.State(element));
    changes_ += ']';
}

void PanelWriter::Reset(NodeHandle root)
{
    messages_.clear();
    changes_.clear();
    nodes_ = 0;
    reset_ = true;
    Insert(root, root);
}

std::vector<PanelMessage> PanelWriter::Take()
{
    if (!changes_.empty()) {
        EndMessage(0);
    }
    return std::exchange(messages_, {});
}

}  // namespace Workbench
