// A copy of the page that is kept by what the document tells and by what the reader reads then: it
// must be the page after every operation.

#include "RandomPage.h"
#include "html-engine/TreeReader.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace HtmlEngine::Test {
namespace {

class Mirror final : public TreeObserver {
public:
    explicit Mirror(Document& document) : document_(document), reader_(document)
    {
        Copy();
        document.SetObserver(this);
    }
    ~Mirror() override { document_.SetObserver(nullptr); }

    void OnInserted(NodeHandle parent, NodeHandle previous, NodeHandle first,
                    NodeHandle last) noexcept override
    {
        Say("inserted");
        std::vector<NodeHandle> run;
        for (NodeHandle node = first; node != kNoNodeHandle; node = reader_.NextSibling(node)) {
            EXPECT_EQ(reader_.Parent(node), parent);
            EXPECT_TRUE(Enter(node));
            run.push_back(node);
            if (node == last) {
                break;
            }
        }
        std::vector<NodeHandle>& siblings = nodes_.at(parent).children;
        auto place = siblings.begin();
        if (previous != kNoNodeHandle) {
            place = std::find(siblings.begin(), siblings.end(), previous);
            ASSERT_NE(place, siblings.end());
            ++place;
        }
        siblings.insert(place, run.begin(), run.end());
    }

    void OnRemoved(NodeHandle parent, NodeHandle previous, NodeHandle first,
                   NodeHandle last) noexcept override
    {
        Say("removed");
        std::vector<NodeHandle>& siblings = nodes_.at(parent).children;
        const auto from = std::find(siblings.begin(), siblings.end(), first);
        const auto to = std::find(from, siblings.end(), last);
        ASSERT_NE(to, siblings.end());
        EXPECT_EQ(previous, from == siblings.begin() ? kNoNodeHandle : *(from - 1));
        NodeHandle walked = first;
        for (auto at = from; at != to + 1; ++at, walked = reader_.NextSibling(walked)) {
            EXPECT_EQ(*at, walked);
            EXPECT_NE(reader_.Kind(walked), NodeKind::None);
            EXPECT_EQ(reader_.Parent(walked), kNoNodeHandle);
            Forget(walked);
        }
        EXPECT_EQ(walked, kNoNodeHandle);
        siblings.erase(from, to + 1);
    }

    void OnTextChanged(NodeHandle text) noexcept override
    {
        Renew(text, "text " + std::string(reader_.Text(text)));
    }
    void OnAttributesChanged(NodeHandle element) noexcept override { Renew(element, "attributes"); }
    void OnStatesChanged(NodeHandle element) noexcept override { Renew(element, "states"); }

    void OnPageReplaced() noexcept override
    {
        Say("page");
        for (const auto& [handle, node] : nodes_) {
            ended_.insert(handle);
        }
        Copy();
    }

    // The copy is the page, node by node and with the same identities.
    void Compare()
    {
        std::size_t count = 0;
        std::vector<NodeHandle> open{document_.NodeOf(document_.Root())};
        while (!open.empty()) {
            const NodeHandle handle = open.back();
            open.pop_back();
            ++count;
            const auto found = nodes_.find(handle);
            ASSERT_NE(found, nodes_.end());
            ASSERT_EQ(found->second.own, OwnOf(handle));
            ASSERT_EQ(found->second.children, ChildrenOf(handle));
            ASSERT_EQ(document_.ElementOf(handle),
                      reader_.Kind(handle) == NodeKind::Element ? handle : kNoElement);
            const std::vector<NodeHandle>& children = found->second.children;
            open.insert(open.end(), children.begin(), children.end());
        }
        ASSERT_EQ(count, nodes_.size());
    }

    // What was told since the last time, in short.
    std::string Told() { return std::exchange(told_, {}); }

private:
    struct Node {
        std::string own;  // kind, text, attributes and states
        std::vector<NodeHandle> children;
    };

    void Say(std::string_view what)
    {
        told_ += told_.empty() ? "" : ", ";
        told_ += what;
    }

    // One node has changed, and not its children.
    void Renew(NodeHandle node, std::string_view what)
    {
        Say(what);
        EXPECT_NE(nodes_.at(node).own, OwnOf(node));
        nodes_.at(node).own = OwnOf(node);
    }

    std::string OwnOf(NodeHandle node) const
    {
        std::string own = std::to_string(static_cast<int>(reader_.Kind(node))) + '|' +
                          std::string(reader_.Text(node)) + '|' +
                          std::to_string(reader_.State(node));
        for (std::size_t index = 0; index < reader_.AttributeCount(node); ++index) {
            const TreeReader::Attribute attribute = reader_.AttributeAt(node, index);
            own.append("|").append(attribute.name).append("=").append(attribute.value);
        }
        return own;
    }

    std::vector<NodeHandle> ChildrenOf(NodeHandle node) const
    {
        std::vector<NodeHandle> children;
        NodeHandle last = kNoNodeHandle;
        for (NodeHandle child = reader_.FirstChild(node); child != kNoNodeHandle;
             child = reader_.NextSibling(child)) {
            EXPECT_EQ(reader_.PreviousSibling(child), last);
            EXPECT_EQ(reader_.Parent(child), node);
            children.push_back(last = child);
        }
        EXPECT_EQ(reader_.LastChild(node), last);
        return children;
    }

    void Copy()
    {
        nodes_.clear();
        EXPECT_TRUE(Enter(document_.NodeOf(document_.Root())));
    }

    // False where a handle is in the copy already, or once was.
    bool Enter(NodeHandle top)
    {
        std::vector<NodeHandle> open{top};
        bool isNew = true;
        while (!open.empty()) {
            const NodeHandle handle = open.back();
            open.pop_back();
            Node node{OwnOf(handle), ChildrenOf(handle)};
            open.insert(open.end(), node.children.begin(), node.children.end());
            isNew = nodes_.emplace(handle, std::move(node)).second && isNew;
            isNew = ended_.count(handle) == 0 && isNew;
        }
        return isNew;
    }

    // Takes out by the copy's own links: the tree is told to still have the same.
    void Forget(NodeHandle top)
    {
        std::vector<NodeHandle> open{top};
        while (!open.empty()) {
            const NodeHandle handle = open.back();
            open.pop_back();
            const std::vector<NodeHandle> children = std::move(nodes_.at(handle).children);
            EXPECT_EQ(children, ChildrenOf(handle));
            open.insert(open.end(), children.begin(), children.end());
            nodes_.erase(handle);
            ended_.insert(handle);
        }
    }

    Document& document_;
    TreeReader reader_;
    std::unordered_map<NodeHandle, Node> nodes_;
    std::unordered_set<NodeHandle> ended_;
    std::string told_;
};

TEST(TreeObserver, IsToldEnoughToKeepACopy)
{
    ForEachSeed(20, [](unsigned seed) {
        RandomPage changing(seed);
        Mirror mirror(*changing.page);
        for (int step = 0; step < 150; ++step) {
            changing.Change();
            ASSERT_NO_FATAL_FAILURE(mirror.Compare());
        }
    });
}

TEST(TreeObserver, IsToldNoMoreThanHasChanged)
{
    const struct {
        void (*change)(TestPage& page, ElementHandle a);
        std::string_view told;
    } rows[] = {
        {[](TestPage& page, ElementHandle a) { page->SetAttribute(a, "x", "1"); }, "attributes"},
        {[](TestPage& page, ElementHandle a) { page->SetAttribute(a, "id", "a"); }, ""},
        {[](TestPage& page, ElementHandle a) { page->SetStyle(a, "color", "red"); }, "attributes"},
        {[](TestPage& page, ElementHandle a) { page->SetAttribute(a, "disabled", ""); },
         "attributes, states"},
        {[](TestPage& page, ElementHandle a) { page->SetState(a, ElementState::kExpanded, 0); },
         "states"},
        {[](TestPage& page, ElementHandle a) { page->SetState(a, ElementState::kCurrent, 0); },
         "states, states"},
        {[](TestPage& page, ElementHandle a) { page->SetState(a, 0, ElementState::kCurrent); }, ""},
        {[](TestPage& page, ElementHandle a) { page->SetText(a, "t"); }, "removed, inserted"},
        {[](TestPage& page, ElementHandle a) { page->Delete(a); }, "removed, text xy, removed"},
        {[](TestPage& page, ElementHandle a) {
             page->SetHtml(a, "<i>1</i><b>2</b>", InsertPosition::AppendLast);
         },
         "inserted"},
        {[](TestPage& page, ElementHandle a) {
             page->SetHtml(a, "1<i></i>", InsertPosition::InsertBefore);
         },
         "text x1, inserted"},
        {[](TestPage& page, ElementHandle a) {
             page->SetHtml(a, "<i></i>1", InsertPosition::InsertAfter);
         },
         "text 1y, inserted"},
        {[](TestPage& page, ElementHandle a) {
             page->SetHtml(a, "1", InsertPosition::InsertAfter);
         },
         "text 1y"},
        {[](TestPage& page, ElementHandle a) {
             page->SetHtml(a, "1", InsertPosition::ReplaceElement);
         },
         "text 1y, removed, text x1y, removed"},
        {[](TestPage& page, ElementHandle) { page->Load("<p>"); }, "page"},
        {[](TestPage& page, ElementHandle a) {
             page->Use(a);
             page->Load("<p>");
             page->SetText(a, "not in the page");
             page->SetAttribute(a, "x", "1");
             page->SetState(a, ElementState::kExpanded, 0);
             page->SetHtml(a, "<i></i>", InsertPosition::AppendLast);
             page->Unuse(a);
         },
         "page"},
    };
    for (const auto& row : rows) {
        TestPage page("x<p id=a><u></u></p>y<p id=b></p>");
        page->SetState(page.Find("#b"), ElementState::kCurrent, 0);
        Mirror mirror(*page);
        row.change(page, page.Find("#a"));
        EXPECT_EQ(mirror.Told(), row.told);
        mirror.Compare();
    }
}

TEST(TreeReader, NamesKindsAndNamespaces)
{
    TestPage page("<svg></svg><math></math>t<!--c-->");
    const TreeReader reader(*page);
    const NodeHandle svg = reader.FirstChild(page->NodeOf(page.Body()));
    const NodeHandle math = reader.NextSibling(svg);
    const NodeHandle text = reader.NextSibling(math);
    const NodeHandle comment = reader.NextSibling(text);
    EXPECT_EQ(reader.NamespaceOf(svg), Namespace::Svg);
    EXPECT_EQ(reader.NamespaceOf(math), Namespace::MathMl);
    EXPECT_EQ(reader.NamespaceOf(page->Root()), Namespace::Html);
    EXPECT_EQ(reader.TagName(math), "math");
    EXPECT_EQ(reader.Kind(text), NodeKind::Text);
    EXPECT_EQ(reader.Text(text), "t");
    EXPECT_EQ(reader.Kind(comment), NodeKind::Comment);
    EXPECT_EQ(reader.Text(comment), "c");
    EXPECT_EQ(reader.FirstChild(text), kNoNodeHandle);
    EXPECT_EQ(reader.AttributeCount(comment), 0U);
    page->SetText(page.Body(), "");
    for (const NodeHandle ended : {svg, text, comment, kNoNodeHandle, ~NodeHandle{0}}) {
        EXPECT_EQ(reader.Kind(ended), NodeKind::None);
        EXPECT_EQ(reader.NextSibling(ended), kNoNodeHandle);
        EXPECT_EQ(reader.Text(ended), "");
        EXPECT_EQ(page->ElementOf(ended), kNoElement);
    }
}

}  // namespace
}  // namespace HtmlEngine::Test
