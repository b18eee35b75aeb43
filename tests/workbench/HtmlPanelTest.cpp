#include "services/HtmlPanel.h"

#include "services/HostObject.h"
#include "services/UIHtmlEngineObject.h"
#include "services/UIWndObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Workbench;
using HtmlEngine::ElementHandle;

// A handler that writes down what reaches it.
class RecordingHandler : public HostObject<RecordingHandler, UIHandler> {
public:
    RecordingHandler(std::string name, std::uint32_t groups, std::vector<std::string>& record)
        : name_(std::move(name)), groups_(groups), record_(record)
    {
        Offer<UIHandler::Attached, &RecordingHandler::Attached>();
        Offer<UIHandler::Detached, &RecordingHandler::Detached>();
        Offer<UIHandler::GetSubscribedEvents, &RecordingHandler::GetSubscribedEvents>();
        Offer<UIHandler::HandleEvent, &RecordingHandler::HandleEvent>();
        Offer<UIHandler::HandleKey, &RecordingHandler::HandleKey>();
        Offer<UIHandler::OnLocaleChanged, &RecordingHandler::OnLocaleChanged>();
    }

    ResultCode attachAnswer = kResultOk;
    ResultCode eventAnswer = kResultDeclined;
    std::function<void()> onEvent = [] {};
    bool takesEvents = false;
    UIWnd* window = nullptr;
    UIElement element{};

private:
    void Note(const std::string& what) { record_.push_back(name_ + "." + what); }

    ResultCode Attached(UIWnd* attachedWindow, const UIElement* attachedTo)
    {
        Note("Attached");
        window = attachedWindow;
        element = *attachedTo;
        return attachAnswer;
    }
    void Detached() { Note("Detached"); }
    void GetSubscribedEvents(std::uint32_t* mask) { *mask = groups_; }
    ResultCode HandleEvent(HtmlElementHandle place, UIBehaviourEvent* event)
    {
        EXPECT_EQ(place, element.handle);
        Note("Event" + std::to_string(event->kind));
        target = event->target;
        event->handled = takesEvents ? 1 : 0;
        onEvent();
        return eventAnswer;
    }
    ResultCode HandleKey(HtmlElementHandle, UIKeyEvent* event)
    {
        Note("Key" + std::to_string(event->kind) + ":" + std::to_string(event->virtualKey));
        return kResultDeclined;
    }
    void OnLocaleChanged() { Note("OnLocaleChanged"); }

    const std::string name_;
    const std::uint32_t groups_;
    std::vector<std::string>& record_;

public:
    HtmlElementHandle target = nullptr;
};

constexpr const char* kPage = R"(<html><body id="body"><h1 id="title" localize>Comments</h1>
<div class="panel-content" id="container" style="visibility: visible">
  <button id="delete" localize __l_o_c_a_l_e__t_o_k_e_n__="DELETE"><b id="bold">Delete</b></button>
  <button id="reply">Reply</button> <span class="button" id="span">x</span>
  <div class="picture" preloader id="preloader"><button id="veiled">x</button></div>
  <div class="results-container"><ul page-item="0"><li page-index="0" id="page">
    <div class="icon document" id="icon" localize>Page 1</div>
    <div><ul class="comments"><li annot-name="0_0" id="item"><p id="text">text</p></li></ul></div>
  </li></ul></div>
</div></body></html>)";

class Panel : public ::testing::Test {
protected:
    Panel()
    {
        locale->SwitchTo("en");
        panel->SetInterfaces(window->AsInterface(), engine->AsInterface());
        panel->LoadDocument(kPage);
    }
    ~Panel() override
    {
        panel->Close();
        panel->SetInterfaces(nullptr, nullptr);
    }

    ElementHandle Element(const std::string& id) const
    {
        ElementHandle found = HtmlEngine::kNoElement;
        panel->Document()->SelectFirst(panel->Document()->Root(), "#" + id, found);
        EXPECT_NE(found, HtmlEngine::kNoElement) << id;
        return found;
    }
    std::string Text(const std::string& id) const
    {
        return panel->Document()->TextContent(Element(id));
    }
    std::vector<std::string> TakeRecord() { return std::exchange(record, {}); }

    // The body's handler wants clicks, the container's clicks and keys, as in the real panel.
    void AttachBoth()
    {
        panel->AttachHandler(Element("body"), outer->AsInterface());
        panel->AttachHandler(Element("container"), inner->AsInterface());
        TakeRecord();
    }

    const HostStatePtr state = std::make_shared<HostState>();
    const BasicServiceObjectPtr<LocaleManagerObject> locale =
        LocaleManagerObject::Make(WORKBENCH_LOCALES);
    const std::shared_ptr<HtmlPanel> panel = std::make_shared<HtmlPanel>(state, locale);
    const BasicServiceObjectPtr<UIHtmlEngineObject> engine = UIHtmlEngineObject::Make(panel);
    const BasicServiceObjectPtr<UIWndObject> window =
        UIWndObject::Make(panel, engine->AsInterface());
    std::vector<std::string> record;
    BasicServiceObjectPtr<RecordingHandler> outer =
        RecordingHandler::Make("outer", kEventGroupBehaviour, record);
    BasicServiceObjectPtr<RecordingHandler> inner = RecordingHandler::Make(
        "inner", kEventGroupMouse | kEventGroupKeys | kEventGroupBehaviour, record);
};

TEST_F(Panel, KeepsAHandlerUntilItsElementLeavesTheTree)
{
    EXPECT_TRUE(CallMethod<UIHtmlEngine::AttachHandler>(
                    engine->AsInterface(), HandleOf(Element("container")), inner->AsInterface())
                    .Succeeded());
    EXPECT_EQ(inner->window, window->AsInterface());
    EXPECT_EQ(inner->element.engine, engine->AsInterface());
    EXPECT_EQ(inner->AsInterface()->GetRefCount(inner->AsInterface()), 2u);
    EXPECT_EQ(panel->AttachedHandlerCount(), 1u);

    CallMethod<UIHtmlEngine::DeleteElement>(engine->AsInterface(), HandleOf(Element("container")));
    panel->Close();
    EXPECT_THAT(record, ElementsAre("inner.Attached", "inner.Detached"));
    EXPECT_EQ(inner->AsInterface()->GetRefCount(inner->AsInterface()), 1u);
}

TEST_F(Panel, DetachesEverythingOnceWhenThePageCloses)
{
    AttachBoth();
    panel->Close();
    panel->Close();
    EXPECT_THAT(record, ::testing::UnorderedElementsAre("outer.Detached", "inner.Detached"));
    EXPECT_EQ(
        CallMethodUnchecked<UIHtmlEngine::SetText>(engine->AsInterface(), nullptr, u"", 0u).code,
        kResultNotInitialized);
}

TEST_F(Panel, RaisesAClickOnTheNearestClickableElement)
{
    AttachBoth();
    struct Row {
        const char* clicked;
        const char* target;  // empty: nothing is raised
        std::function<void(HtmlEngine::Document&)> before = [](auto&) {};
    };
    const auto set = [this](const char* id, std::uint32_t bits) {
        return [this, id, bits](HtmlEngine::Document& document) {
            document.SetState(Element(id), bits, ~bits);
        };
    };
    const Row rows[] = {
        {"text", "item"},
        {"item", "item"},
        {"icon", "icon"},
        {"bold", "delete"},
        {"span", "span"},
        {"title", ""},
        {"page", ""},
        {"reply", ""},   // the style sheet hides it
        {"veiled", ""},  // and what is inside the preloader
        {"bold", "", set("delete", kStateDisabled)},
        {"bold", "delete", set("delete", 0)},
        {"text", "", set("page", kStateCollapsed)},  // a closed page hides its comments
        {"icon", "icon"},
        {"text", "item", set("page", kStateExpanded)},
        {"veiled", "veiled",
         [this](HtmlEngine::Document& document) {
             document.SetStyle(Element("preloader"), "visibility", "visible");
         }},
        {"text", "",
         [this](HtmlEngine::Document& document) {
             document.SetStyle(Element("container"), "visibility", "collapse");
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.clicked) + " -> " + row.target);
        row.before(*panel->Document());
        panel->Click(Element(row.clicked));
        if (*row.target == 0) {
            EXPECT_THAT(TakeRecord(), IsEmpty());
        } else {
            EXPECT_THAT(TakeRecord(), ElementsAre("inner.Event0", "outer.Event0"));
            EXPECT_EQ(inner->target, HandleOf(Element(row.target)));
            EXPECT_EQ(outer->target, inner->target);
        }
    }
}

TEST_F(Panel, StopsAnEventThatAHandlerHasTaken)
{
    AttachBoth();
    inner->takesEvents = true;
    panel->Click(Element("item"));
    EXPECT_THAT(record, ElementsAre("inner.Event0"));
}

TEST_F(Panel, GivesKeysOnlyToHandlersThatWantThem)
{
    AttachBoth();
    panel->PressKey(Element("item"), kKeyEnter);
    EXPECT_THAT(TakeRecord(), ElementsAre("inner.Key1:13", "inner.Key0:13"));
    panel->PressKey(Element("title"), kKeyEnter);
    EXPECT_THAT(TakeRecord(), IsEmpty()) << "the target is outside the handler's element";
}

TEST_F(Panel, SurvivesAHandlerThatRemovesItselfWhileItHandles)
{
    AttachBoth();
    const ElementHandle item = Element("item");
    inner->onEvent = [&] { panel->Document()->Delete(Element("container")); };
    panel->Click(item);
    EXPECT_THAT(TakeRecord(), ElementsAre("inner.Event0", "inner.Detached", "outer.Event0"));
    EXPECT_FALSE(panel->Document()->IsKnown(item));
    panel->Click(item);
    panel->PressKey(item, kKeyEnter);
    EXPECT_THAT(TakeRecord(), IsEmpty());
}

TEST_F(Panel, TranslatesByTokenOrOriginalTextAndTellsTheHandlers)
{
    AttachBoth();
    struct Row {
        const char* language;
        const char* title;
        const char* deletion;
        const char* direction;
    };
    const Row rows[] = {
        {"de", "Kommentare", "L\xC3\xB6schen", "ltr"},
        {"he", "\xD7\x94\xD7\xA2\xD7\xA8\xD7\x95\xD7\xAA", "\xD7\x9E\xD7\x97\xD7\xA7", "rtl"},
        {"en", "Comments", "Delete", "ltr"},
    };
    for (const Row& row : rows) {
        locale->SwitchTo(row.language);
        panel->OnLocaleChanged();
        EXPECT_EQ(Text("title"), row.title);
        EXPECT_EQ(Text("delete"), row.deletion);
        EXPECT_EQ(Text("icon"), "Page 1") << "a text that is no key stays";
        const ElementHandle root = panel->Document()->Root();
        EXPECT_EQ(panel->Document()->Attribute(root, "dir"), row.direction);
        EXPECT_EQ(panel->Document()->Attribute(root, "lang"), row.language);
        EXPECT_THAT(TakeRecord(), ElementsAre("outer.OnLocaleChanged", "inner.OnLocaleChanged"));
    }
}

}  // namespace
