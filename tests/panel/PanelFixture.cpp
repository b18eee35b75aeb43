#include "PanelFixture.h"

#include "ListRenderer.h"
#include "driver/PanelReport.h"
#include "service-common/UnicodeText.h"
#include "service-common/WideText.h"
#include "services/HandlerAttachment.h"
#include "services/KeyNames.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <optional>
#include <sstream>
#include <utility>

namespace Documents {

void PrintTo(const LiveRecords& records, std::ostream* out)
{
    *out << records.pages << " pages, " << records.annotations << " annotations";
}

}  // namespace Documents

namespace PanelTests {

using namespace Workbench;

namespace {

// What the fixture leaves as the module's last error, to tell a new one from an old one.
constexpr const char* kMarker = "UIInplacePlugin::InitHtml() failed, code: 3";

std::string Trimmed(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

template <class Event, class M>
void RaiseEvent(const HtmlEngine::Document& document, ElementHandle target, std::uint32_t group,
                Event& event)
{
    event.target = HandleOf(target);
    for (const auto& [element, attached] : document.HandlersOf(target)) {
        auto& attachment = static_cast<HandlerAttachment&>(*attached);
        if (attachment.Wants(group)) {
            attachment.Call<M>(HandleOf(element), &event);
        }
    }
}

}  // namespace

MemoryEntry Comment(const char* subtype, std::u16string contents, std::uint32_t flags)
{
    Documents::AnnotationProperties properties;
    properties.subtype = subtype;
    properties.contents = std::move(contents);
    properties.rect = _PDRect{10, 20, 30, 60};
    properties.flags = flags;
    return Documents::MakeEntry(std::move(properties));
}

DocumentPtr MakeDocument(const Pages& pages, const Documents::MemoryOptions& options)
{
    std::vector<Documents::MemoryPage> made(pages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        made[i].annotations = pages[i];
    }
    return Documents::MemoryDocument::Make("document", made, options);
}

Pages FivePages()
{
    return {{Comment("Text", u"a"), Comment("Highlight")},
            {},
            {Comment("Square", u"b")},
            {Comment("Ink"), Comment("Stamp", u"c")},
            {}};
}

std::string Outline(const PanelView& view)
{
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << (view.loading ? "loading " : "");
    if (view.noItems) {
        out << "(" << *view.noItems << ") ";
    }
    for (const PanelPage& page : view.pages) {
        out << page.index
            << (page.state == PanelPageState::kExpanded    ? "+:"
                : page.state == PanelPageState::kCollapsed ? "-:"
                                                           : ":");
        for (const PanelItem& item : page.items) {
            out << (&item == page.items.data() ? "" : ",") << item.annotName
                << (item.current ? "*" : "");
        }
        out << " ";
    }
    out << "[";
    constexpr std::string_view kLetters = "ECRDTB";
    for (std::size_t i = 0; i < kLetters.size(); ++i) {
        out << (view.buttonDisabled[i] ? "" : kLetters.substr(i, 1));
    }
    out << "]";
    return out.str();
}

PanelTest::PanelTest()
    : host(HostOptions{.logsModuleErrors = false}), state(std::shared_ptr<void>(), &host.State())
{
    ClearThreadLastError();
}

void PanelTest::TearDown()
{
    host.State().loop.Hold(false);
    if (host.Plugin() != nullptr) {
        Settle();
        EXPECT_EQ(TakeError(), "") << "left by the test";
    }
    EXPECT_EQ(TakeFailures(), "") << "left by the test";
    EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
    EXPECT_EQ(Documents::CountLiveRecords(), recordsBefore_);
}

void PanelTest::Start()
{
    host.StartPanel();
    TakeError();  // sets the mark
    host.HandOverDocuments();
    Settle();
}

ViewPtr PanelTest::Open(DocumentPtr document)
{
    const ViewPtr view = host.OpenView(std::move(document));
    Settle();
    return view;
}

ViewPtr PanelTest::StartWith(const Pages& pages)
{
    Start();
    return Open(MakeDocument(pages));
}

void PanelTest::Settle()
{
    ASSERT_TRUE(host.RunUntilIdle()) << host.LoadingCount() << " lists are still loading";
}

void PanelTest::RunUntil(const std::function<bool()>& isDone)
{
    ASSERT_TRUE(host.State().loop.RunUntil(isDone, std::chrono::steady_clock::now() +
                                                       std::chrono::minutes(5)));
}

void PanelTest::AwaitHeld(std::size_t count)
{
    RunUntil([&] { return host.State().loop.HeldCount() == count; });
}

void PanelTest::Publish(const ViewPtr& view, Documents::EditResult edit)
{
    ASSERT_EQ(view->View().Document()->Publish(std::move(edit)), "");
}

Documents::Document& PanelTest::DocumentOf(const ViewPtr& view)
{
    return view->View().Document()->Content();
}

std::string PanelTest::KeyOf(const ViewPtr& view)
{
    return ContainerKey(view->View().AsInterface());
}

PanelView PanelTest::Read(const ViewPtr& view) const
{
    const auto read = ReadPanelView(*host.Panel().Document(), KeyOf(view));
    EXPECT_TRUE(read.has_value()) << "there is no container " << KeyOf(view);
    return read.value_or(PanelView{});
}

std::string PanelTest::ListHtml(const ViewPtr& view) const
{
    return WithoutIndents(WithNumberedTooltips(
        host.Panel().Document()->InnerHtml(Find(view, "div.results-container"))));
}

std::string PanelTest::FreshListHtml(const ViewPtr& view) const
{
    ListRenderer renderer(view->View().Document()->AsInterface());
    const std::string html = ToUtf8(renderer.RenderResults());
    HtmlEngine::Document document;
    document.Load("<!DOCTYPE html><div></div>");  // a doctype, as the panel has
    ElementHandle list = kNoElement;
    document.SelectFirst(document.Root(), "div", list);
    document.SetHtml(list, html, HtmlEngine::InsertPosition::ReplaceContent);
    return WithoutIndents(WithNumberedTooltips(document.InnerHtml(list)));
}

void PanelTest::ExpectFresh(const ViewPtr& view) const
{
    EXPECT_EQ(ListHtml(view), FreshListHtml(view));
}

ElementHandle PanelTest::Find(const ViewPtr& view, const std::string& selector, std::size_t n) const
{
    const HtmlEngine::Document& document = *host.Panel().Document();
    ElementHandle found = FindContainer(document, KeyOf(view));
    if (!selector.empty()) {
        const ElementHandle container = std::exchange(found, kNoElement);
        document.SelectAll(container, selector, [&](ElementHandle element) {
            found = n == 0 ? element : kNoElement;
            return n-- != 0;
        });
    }
    EXPECT_NE(found, kNoElement) << selector;
    return found;
}

std::size_t PanelTest::CountMatches(const std::string& selector) const
{
    std::size_t count = 0;
    host.Panel().Document()->SelectAll(host.Panel().Document()->Root(), selector,
                                       [&](ElementHandle) {
                                           ++count;
                                           return true;
                                       });
    return count;
}

void PanelTest::Do(const ViewPtr& view, const std::string& steps)
{
    std::istringstream in(steps);
    for (std::string step; std::getline(in, step, ';');) {
        step = Trimmed(step);
        if (const auto key = KeyNamed(step)) {
            host.Panel().PressKey(Find(view, "div.results-container"), *key);
        } else if (step.starts_with("click ")) {
            const std::string target = step.substr(6);
            const std::size_t at = target.rfind('@');
            const std::size_t n = at == target.npos ? 0 : std::stoul(target.substr(at + 1));
            host.Panel().Click(Find(view, Trimmed(target.substr(0, at)), n));
        } else {
            EXPECT_EQ(step, "") << "is no step";
        }
        Settle();
    }
}

void PanelTest::Raise(ElementHandle target, UIBehaviourEvent event)
{
    RaiseEvent<UIBehaviourEvent, UIHandler::HandleEvent>(*host.Panel().Document(), target,
                                                         kEventGroupBehaviour, event);
    Settle();
}

void PanelTest::Raise(ElementHandle target, UIKeyEvent event)
{
    RaiseEvent<UIKeyEvent, UIHandler::HandleKey>(*host.Panel().Document(), target, kEventGroupKeys,
                                                 event);
    EXPECT_EQ(event.handled, 0u);
    Settle();
}

std::string PanelTest::TakeCalls()
{
    std::string text;
    for (const auto& call : Workbench::ToJson(host.State().calls.Take())) {
        const std::string name = call[0].get<std::string>();
        text += (text.empty() ? "" : " ") + name.substr(name.find('.') + 1) + "(";
        for (std::size_t i = 1; i < call.size(); ++i) {
            text += (i == 1 ? "" : ",") + call[i].dump();
        }
        text += ")";
    }
    return text;
}

std::string PanelTest::TakeFailures()
{
    std::string text;
    for (const Failure& failure : host.State().failures.Take()) {
        text += (text.empty() ? "" : ";") + failure.where + " " + std::to_string(failure.code);
    }
    return text;
}

std::string PanelTest::TakeError(UIInplacePlugin* plugin)
{
    std::string text;
    if (const ErrorRecord* record = ThreadLastError()) {
        text = ToUtf8(record->message);
    }
    ClearThreadLastError();
    plugin = plugin == nullptr ? host.Plugin() : plugin;
    ErrorInfo info{};
    if (plugin->GetLastErrorInfo(plugin, &info, nullptr) == kResultOk) {
        const std::string message = UnicodeText::ToUtf8(info.message);
        text = message == kMarker ? text : message;
    }
    CallMethodUnchecked<UIInplacePlugin::InitHtml>(plugin, nullptr);
    return text;
}

void PanelTest::TakeLateErrors()
{
    EXPECT_THAT(TakeError(), testing::AnyOf("", "Annot not found", "Page index out of range",
                                            "BLDocument::AcquirePage() failed, code: 9"));
}

}  // namespace PanelTests
