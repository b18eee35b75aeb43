// The fixture of the panel's tests: a host with the built module, documents made by code, what the
// panel shows as short text, and input. Fails a test that leaves behind a live service object, a
// record of the PDF library, a failure in the host's log, or an error record of the module.
#pragma once

#include "documents/FaultInjection.h"
#include "documents/MemoryDocument.h"
#include "driver/ListMarkup.h"
#include "driver/PanelReader.h"
#include "services/Host.h"
#include "services/HostObject.h"
#include "ui-engine/LocaleManager.SO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace PanelTests {

using Documents::MemoryEntry;
using DocumentPtr = std::shared_ptr<Documents::MemoryDocument>;
using Pages = std::vector<std::vector<MemoryEntry>>;  // their annotation arrays
using ViewPtr = Workbench::Host::ViewPtr;
using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;
using Workbench::WithNumberedTooltips;
using Workbench::WithoutIndents;

// An annotation in the rectangle 10, 20, 30, 60.
MemoryEntry Comment(const char* subtype, std::u16string contents = {}, std::uint32_t flags = 0);
DocumentPtr MakeDocument(const Pages& pages, const Documents::MemoryOptions& options = {});

// Pages 0, 2 and 3 with two, one and two comments; page 1 has none.
Pages FivePages();

// "0+:0_0*,0_1 2-:2_0 [ECRDTB]": page items with + expanded and - collapsed, * the current item,
// then the enabled buttons: expand all, collapse all, reply, delete, move top, move bottom.
// "loading" and "(message)" stand before.
std::string Outline(const Workbench::PanelView& view);

// A locale service without any lookup: every key is its own text.
class MuteLocale : public Workbench::HostObject<MuteLocale, LocaleManager> {};

class PanelTest : public testing::Test {
protected:
    PanelTest();
    void TearDown() override;

    // Starts the panel and hands the documents over.
    void Start();
    // Opens a view, which becomes the active one, and waits for its list.
    ViewPtr Open(DocumentPtr document);
    ViewPtr StartWith(const Pages& pages);
    void Settle();
    // Runs the loop until `isDone`, and fails the test when that takes minutes.
    void RunUntil(const std::function<bool()>& isDone);
    // Keeps renderings from landing, and waits until `count` of them are held back.
    void AwaitHeld(std::size_t count);

    // Makes an edit of the view's document known, as the host does.
    void Publish(const ViewPtr& view, Documents::EditResult edit);
    static Documents::Document& DocumentOf(const ViewPtr& view);
    static std::string KeyOf(const ViewPtr& view);

    // --- What the panel shows ---

    Workbench::PanelView Read(const ViewPtr& view) const;
    std::string OutlineOf(const ViewPtr& view) const { return Outline(Read(view)); }
    // The list's markup with numbered tooltips and without indents, as it is and as a fresh
    // rendering makes it.
    std::string ListHtml(const ViewPtr& view) const;
    std::string FreshListHtml(const ViewPtr& view) const;
    void ExpectFresh(const ViewPtr& view) const;
    // The n-th match in the view's container; the container itself for an empty selector.
    ElementHandle Find(const ViewPtr& view, const std::string& selector, std::size_t n = 0) const;
    std::size_t CountMatches(const std::string& selector) const;

    // --- Input. One step, or several parted by ";": a key ("Down"), which goes to the list, or a
    //     click ("click #delete", "click div.icon @1": the second match). ---

    void Do(const ViewPtr& view, const std::string& steps);
    // Brings an event to the handlers without the host's rules of what can be clicked.
    void Raise(ElementHandle target, UIBehaviourEvent event);
    void Raise(ElementHandle target, UIKeyEvent event);

    // --- What happened since the last time ---

    // Requests to documents and views: "GoTo(0,4,[..]) FocusAnnotation(0,"0_1")".
    std::string TakeCalls();
    // "UIHandler::HandleKey 2", parted by ";".
    std::string TakeFailures();
    // The text of the last error record of the UI thread, the module's or the host's; empty: none.
    // A plug-in of the test's own stands in for the panel's.
    std::string TakeError(UIInplacePlugin* plugin = nullptr);
    // The same when events lag behind their document: what they tell of may be gone by then.
    void TakeLateErrors();

    const Documents::LiveRecords recordsBefore_ = Documents::CountLiveRecords();
    Workbench::Host host;
    // For objects of the host's kinds that a test makes; owns nothing.
    const Workbench::HostStatePtr state;
};

}  // namespace PanelTests
