#include "web/PanelWriter.h"

#include "driver/JsonText.h"

#include <utility>

namespace Workbench {

using HtmlEngine::kNoNodeHandle;
using HtmlEngine::NodeHandle;
using HtmlEngine::NodeKind;
using HtmlEngine::TreeReader;

namespace {

// Number of nodes from `first` to `last` with their descendants.
std::size_t CountNodes(const TreeReader& reader, NodeHandle first, NodeHandle last)
{
    std::size_t count = 0;
    std::size_t depth = 0;
    NodeHandle node = first;
    for (;;) {
        ++count;
        if (const NodeHandle child = reader.FirstChild(node); child != kNoNodeHandle) {
            node = child;
            ++depth;
            continue;
        }
        for (; depth > 0 && reader.NextSibling(node) == kNoNodeHandle; --depth) {
            node = reader.Parent(node);
        }
        if (depth == 0 && node == last) {
            return count;
        }
        node = reader.NextSibling(node);
    }
}

}  // namespace

// State of one insertion: a walk through the nodes, with the open brackets of the JSON text.
class PanelWriter::Insertion {
public:
    Insertion(PanelWriter& writer, NodeHandle first, NodeHandle last)
        : writer_(writer),
          reader_(writer.reader_),
          node_(first),
          last_(last),
          remaining_(CountNodes(reader_, first, last))
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
            writer_.WriteNode(node_);
            --remaining_;
            GoOn();
        }
    }

private:
    void Open()
    {
        writer_.BeginChange();
        writer_.changes_ += "[\"i\",";
        writer_.WriteId(reader_.Parent(node_));
        writer_.changes_ += ',';
        writer_.WriteId(reader_.PreviousSibling(node_));
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

    void GoOn()
    {
        if (const NodeHandle child = reader_.FirstChild(node_); child != kNoNodeHandle) {
            node_ = child;
            ++depth_;
            isFirstChild_ = true;
            return;
        }
        isFirstChild_ = false;
        EndNode(node_);
        for (;;) {
            if (node_ == last_) {
                Close();
                node_ = kNoNodeHandle;
                return;
            }
            if (const NodeHandle next = reader_.NextSibling(node_); next != kNoNodeHandle) {
                node_ = next;
                return;
            }
            node_ = reader_.Parent(node_);
            if (depth_ > 0) {
                --depth_;
                EndNode(node_);
            } else {
                Close();
            }
        }
    }

    void EndNode(NodeHandle node)
    {
        if (reader_.Kind(node) == NodeKind::Element) {
            writer_.WriteNodeEnd(node);
        }
    }

    PanelWriter& writer_;
    const TreeReader& reader_;
    NodeHandle node_;
    const NodeHandle last_;
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

// Writes a text or comment completely, and an element up to its children.
void PanelWriter::WriteNode(NodeHandle node)
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
        changes_ += ",[";
        return;
    }
    changes_ += kind == NodeKind::Comment ? ",null," : ",";
    AppendJsonText(changes_, reader_.Text(node));
    changes_ += ']';
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
    Insertion(*this, first, last).Write();
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
