// One container for each document view: made, shown, hidden and removed with the host's views.
#include "PanelFixture.h"

#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"

#include <thread>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <sys/mman.h>
#endif

namespace PanelTests {
namespace {

using namespace Workbench;
using testing::ElementsAre;

using Collection = UIDocumentsCollection;

constexpr const char* kAnyContainer = "body > .panel-content[doc-view-addr]";

class Containers : public PanelTest {
protected:
    // A view that the host's collection does not list.
    ViewPtr MakeView(DocumentPtr document) const
    {
        const auto view = BLDocumentViewObject::Make(
            state, document ? BLDocumentObject::Make(state, document) : nullptr);
        view->Connect();
        return UIDocumentViewObject::Make(view);
    }
    template <class E>
    void Fire(const ViewPtr& view)
    {
        host.State().Fire(host.Collection().Event<E>(), view->AsInterface());
    }
    // The keys of the containers that are shown.
    std::vector<std::string> Shown() const
    {
        std::vector<std::string> keys;
        const HtmlEngine::Document& document = *host.Panel().Document();
        document.SelectAll(document.Root(), kAnyContainer, [&](ElementHandle container) {
            if (document.Style(container, "visibility") != "collapse") {
                keys.push_back(*document.Attribute(container, "doc-view-addr"));
            }
            return true;
        });
        return keys;
    }
};

TEST_F(Containers, FollowTheViewsOfTheCollection)
{
    host.StartPanel();
    TakeError();
    const ViewPtr early = host.OpenView(MakeDocument(FivePages()));
    const ViewPtr second = host.OpenView(MakeDocument({{Comment("Ink")}}));
    EXPECT_EQ(CountMatches(kAnyContainer), 0u);

    host.HandOverDocuments();
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 2u);
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(second)));
    EXPECT_EQ(OutlineOf(early), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
    EXPECT_EQ(OutlineOf(second), "0:0_0* [ECRD]");

    const ViewPtr late = Open(MakeDocument({{}}));
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(late)));
    EXPECT_EQ(OutlineOf(late), "(There are no items to show) []");
    EXPECT_TRUE(host.Panel().Document()->Attribute(Find(late, ""),
                                                   "disabled-when-document-locked-for-write"));

    const auto created = MakeView(MakeDocument({{}}));
    host.Collection().Add(created);
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 4u);
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(late))) << "a view created behind the active one";

    host.Collection().Activate(early);
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(early)));
    EXPECT_EQ(OutlineOf(early), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]") << "kept meanwhile";
    host.Collection().Activate(nullptr);
    EXPECT_THAT(Shown(), ElementsAre());

    const std::size_t attached = host.Panel().AttachedHandlerCount();
    host.CloseView(late);
    host.CloseView(second);
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 2u);
    EXPECT_EQ(host.Panel().AttachedHandlerCount(), attached - 2);
}

TEST_F(Containers, TolerateEventsThatAHostShouldNotFire)
{
    const ViewPtr view = StartWith(FivePages());
    const ViewPtr stranger = MakeView(MakeDocument(FivePages()));

    Fire<Collection::OnDocumentViewCreated>(view);  // announced before
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);

    Fire<Collection::OnDocumentViewActivated>(stranger);  // has no container
    EXPECT_THAT(Shown(), ElementsAre());
    Fire<Collection::OnDocumentViewDeactivated>(stranger);
    Fire<Collection::OnDocumentViewDestroyed>(stranger);
    Fire<Collection::OnDocumentViewActivated>(UIDocumentViewObject::Make(nullptr));
    Fire<Collection::OnDocumentViewCreated>(UIDocumentViewObject::Make(nullptr));
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);

    Fire<Collection::OnDocumentViewDestroyed>(view);
    Fire<Collection::OnDocumentViewDestroyed>(view);
    EXPECT_EQ(CountMatches(kAnyContainer), 0u);
    Fire<Collection::OnDocumentViewCreated>(view);  // a view at an address that had one before
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);
    ExpectFresh(view);
}

TEST_F(Containers, AViewThatIsGoneBeforeItsHandlerIsAttachedGetsNone)
{
    Start();
    const std::size_t attached = host.Panel().AttachedHandlerCount();
    ViewPtr brief = MakeView(MakeDocument(FivePages()));
    Fire<Collection::OnDocumentViewCreated>(brief);
    brief.Reset();
    Settle();
    EXPECT_EQ(host.Panel().AttachedHandlerCount(), attached);

    const ViewPtr closed = host.OpenView(MakeDocument(FivePages()));
    host.CloseView(closed);
    Settle();
    EXPECT_EQ(host.Panel().AttachedHandlerCount(), attached);
}

TEST_F(Containers, EventsOfAForeignThreadAreActedOnInTheirOrder)
{
    Start();
    const ViewPtr first = MakeView(MakeDocument(FivePages()));
    const ViewPtr second = MakeView(MakeDocument({{Comment("Ink")}}));
    const ViewPtr third = MakeView(MakeDocument({{}}));
    std::thread([&] {
        for (const ViewPtr* view : {&first, &second, &third}) {
            Fire<Collection::OnDocumentViewCreated>(*view);
            Fire<Collection::OnDocumentViewActivated>(*view);
        }
        Fire<Collection::OnDocumentViewDestroyed>(third);
        Fire<Collection::OnDocumentViewActivated>(first);
    }).join();
    EXPECT_EQ(CountMatches(kAnyContainer), 0u) << "nothing is done on that thread";
    Fire<Collection::OnDocumentViewDestroyed>(second);  // overtakes none of them
    Settle();
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(first)));
    ExpectFresh(first);
}

TEST_F(Containers, AChildFrameBringsItsDocuments)
{
    const ViewPtr main = StartWith(FivePages());
    const auto collection = UIDocumentsCollectionObject::Make(state);
    const auto frame = UIDocumentFrameObject::Make(collection);
    const ViewPtr before = MakeView(MakeDocument({{Comment("Ink")}}));
    collection->Add(before);
    host.MainFrame().AnnounceChildFrame(*frame.Get());
    Settle();
    EXPECT_EQ(OutlineOf(before), "0:0_0* [ECRD]");
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(main)));

    const ViewPtr after = MakeView(MakeDocument({{}, {Comment("Ink")}}));
    collection->Add(after);
    collection->Activate(after);
    Settle();
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(after)));
    EXPECT_EQ(OutlineOf(after), "1:1_0* [ECRD]");
    collection->Close(after);
    collection->Close(before);
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);

    host.MainFrame().AnnounceChildFrame(*UIDocumentFrameObject::Make(nullptr).Get());
    Settle();
}

TEST_F(Containers, AnotherCollectionTakesThePlaceOfTheFormerOneAlone)
{
    const ViewPtr own = StartWith(FivePages());
    const ViewPtr shared = Open(MakeDocument({{Comment("Ink")}}));
    const ViewPtr lent = Open(MakeDocument({{Comment("Ink")}}));
    const auto child = UIDocumentsCollectionObject::Make(state);
    const ViewPtr inChild = MakeView(MakeDocument(
        {{Comment("Stamp", u"<div class=\"panel-content\" doc-view-addr=\"7\">is none</div>")}}));
    child->Add(inChild);
    child->Add(lent);
    host.MainFrame().AnnounceChildFrame(*UIDocumentFrameObject::Make(child).Get());
    Settle();
    const auto other = UIDocumentsCollectionObject::Make(state);
    const ViewPtr fresh = MakeView(MakeDocument({{}, {Comment("Ink")}}));
    other->Add(shared);
    other->Add(fresh);
    other->Activate(fresh);
    const auto idle = UIDocumentsCollectionObject::Make(state);

    UIDocumentsCollectionObject& first = host.Collection();
    struct Row {
        const char* name;
        UIDocumentsCollectionObject* collection;
        UIDocumentsCollectionObject* former;
        std::vector<ViewPtr> views;
        ViewPtr active;
    };
    const Row rows[] = {
        {"again", &first, other.Get(), {own, shared, lent, inChild}, lent},
        {"another", other.Get(), &first, {shared, fresh, lent, inChild}, fresh},
        {"that of the child frame", child.Get(), other.Get(), {lent, inChild}, inChild},
        {"the first again", &first, other.Get(), {own, shared, lent, inChild}, lent},
        {"with no active view", idle.Get(), &first, {lent, inChild}, nullptr},
    };
    child->Activate(inChild);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CallMethod<UIDocumentPanelModel::SetDocumentsCollection>(host.PanelModel(),
                                                                 row.collection->AsInterface());
        Settle();
        EXPECT_EQ(CountMatches(kAnyContainer), row.views.size());
        EXPECT_EQ(host.Panel().AttachedHandlerCount(), row.views.size() + 1);
        EXPECT_EQ(Shown(),
                  row.active ? std::vector{KeyOf(row.active)} : std::vector<std::string>());
        for (const ViewPtr& view : row.views) {
            ExpectFresh(view);
        }
        const auto subscribers = [](UIDocumentsCollectionObject& collection) {
            return collection.Event<Collection::OnDocumentViewCreated>().SubscriberCount() +
                   collection.Event<Collection::OnSbSViewDestroyed>().SubscriberCount();
        };
        EXPECT_EQ(subscribers(*row.collection), 2u);
        EXPECT_EQ(subscribers(*row.former), 0u);
        EXPECT_EQ(subscribers(*child.Get()), 2u);

        const ViewPtr late = MakeView(MakeDocument({{Comment("Ink")}}));
        child->Add(late);
        Settle();
        ExpectFresh(late);
        child->Close(late);
        EXPECT_EQ(CountMatches(kAnyContainer), row.views.size());
    }

    // One view in two collections: what the one shows or has is not the other's to hide or remove.
    child->Activate(lent);
    idle->Add(lent);
    host.State().Fire(idle->Event<Collection::OnDocumentViewDeactivated>(), lent->AsInterface());
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(lent)));
    child->Close(lent);
    EXPECT_EQ(CountMatches(kAnyContainer), 2u);
    EXPECT_THAT(Shown(), ElementsAre(KeyOf(inChild)));
    idle->Close(lent);
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);
}

TEST_F(Containers, AHandlerThatCouldNotBeSentForOrAttachedComesWithTheNextEvent)
{
    const ViewPtr view = StartWith(FivePages());
    using Engine = UIHtmlEngine;
    auto& engine = *reinterpret_cast<SODetails::ServiceObjectTable<Engine>*>(host.Engine());
    MethodEntry& attach = engine.methods[Engine::AttachHandler::kSlot];
    const Engine::AttachHandler::Function refuse = [](Engine* self, HtmlElementHandle, UIHandler*) {
        return CallMethodUnchecked<Engine::DeleteElement>(self, nullptr).code;  // fails
    };
    const MethodEntry sound = std::exchange(attach, reinterpret_cast<MethodEntry>(refuse));
    const ViewPtr refused = Open(MakeDocument({{Comment("Stamp")}}));
    EXPECT_EQ(OutlineOf(refused), "[ECRDTB]") << "as the template has it";
    attach = sound;
    host.Collection().Activate(view);
    Settle();
    EXPECT_EQ(OutlineOf(refused), "0:0_0* [ECRD]");
    TakeError();

    BasicServiceObjectPtr<ServiceObject> service;
    ServiceProviderGetServiceObject(AtomService::Resolve(UIService::kName), service.Receive());
    BasicServiceObjectPtr<UIThread> thread;
    CallMethod<UIService::GetThreadObject>(static_cast<UIService*>(service.Get()),
                                           host.State().loop.ThreadId(), thread.Receive());
    const std::uint32_t whole = std::exchange(thread->methodTableSize, 8u);
    const ViewPtr late = Open(MakeDocument({{Comment("Ink")}}));
    EXPECT_EQ(CountMatches(kAnyContainer), 3u);
    EXPECT_EQ(OutlineOf(late), "[ECRDTB]");
    thread->methodTableSize = whole;
    host.Collection().Activate(view);
    Settle();
    EXPECT_EQ(OutlineOf(late), "0:0_0* [ECRD]");
}

TEST_F(Containers, AttachedAgainThePanelHasOneContainerForEachView)
{
    const ViewPtr view = StartWith(FivePages());
    const ViewPtr closed = Open(MakeDocument({{Comment("Ink")}}));
    const auto child = UIDocumentsCollectionObject::Make(state);
    const ViewPtr inChild = MakeView(MakeDocument({{Comment("Stamp")}}));
    child->Add(inChild);
    host.MainFrame().AnnounceChildFrame(*UIDocumentFrameObject::Make(child).Get());
    Settle();
    UIElement body{};
    CallMethod<UIHandler::GetElementAttachedTo>(host.PanelHandler(), &body);
    for (const bool isDetached : {true, false}) {
        if (isDetached) {
            CallMethod<UIHandler::Detached>(host.PanelHandler());
            host.CloseView(closed);  // unheard
        }
        CallMethod<UIHandler::Attached>(host.PanelHandler(), host.Window(), &body);
        host.HandOverDocuments();
        Settle();
        EXPECT_EQ(CountMatches(kAnyContainer), 2u);
        EXPECT_EQ(host.Panel().AttachedHandlerCount(), 3u);
        EXPECT_THAT(Shown(), ElementsAre(KeyOf(view)));
        ExpectFresh(view);
        ExpectFresh(inChild);
    }
}

TEST_F(Containers, SelectionsAndSideBySideViewsAreNotKeptAlive)
{
    const ViewPtr view = StartWith(FivePages());
    const auto sideBySide = UIDocumentViewSbSObject::Make(view, nullptr);
    host.Collection().ShowSideBySide(sideBySide);
    view->View().SetFocus(0, DocumentOf(view).AnnotationAt(0, 1));  // fires a selection
    Settle();
    host.Collection().ShowSideBySide(nullptr);
    EXPECT_EQ(sideBySide->AsInterface()->GetRefCount(sideBySide->AsInterface()), 1u);
    const auto held = DescribeLiveObjects();
    EXPECT_THAT(held, testing::Not(testing::Contains(testing::HasSubstr("BLSelection:"))));
}

TEST_F(Containers, ANewLanguageRendersEveryListAnew)
{
    const ViewPtr list = StartWith({{}, {Comment("Highlight", u"x")}});
    const ViewPtr empty = Open(MakeDocument({{}}));
    const ViewPtr none = MakeView(nullptr);
    host.Collection().Add(none);
    Settle();
    struct Row {
        const char* language;
        const char* caption;
        const char* title;
        const char* noItems;
        const char* button;
    };
    const Row rows[] = {
        {"de", "Seite 2", "Hervorhebung", "Es sind keine Elemente vorhanden", "Löschen"},
        {"ru", "Страница 2", "Выделение", "Нет элементов для показа", "Удалить"},
        {"en", "Page 2", "Highlight", "There are no items to show", "Delete"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.language);
        host.SwitchLanguage(row.language);
        Settle();
        const PanelView read = Read(list);
        ASSERT_EQ(read.pages.size(), 1u);
        EXPECT_EQ(read.pages[0].caption, row.caption);
        EXPECT_EQ(read.pages[0].items[0].title, row.title);
        EXPECT_EQ(Read(empty).noItems, row.noItems);
        EXPECT_EQ(host.Panel().Document()->TextContent(Find(list, "#delete")), row.button);
        EXPECT_EQ(OutlineOf(none), "[]");
        ExpectFresh(list);
    }
}

#if !defined(_WIN32)  // memory at chosen addresses is asked of the system

// A view object at an address that the test chooses.
class PlacedView : public BLDocumentViewObject {
public:
    using BLDocumentViewObject::BLDocumentViewObject;

    static void* operator new(std::size_t) { return place; }
    static void operator delete(void*) {}  // the mapping is the test's

    static inline void* place = nullptr;
};

TEST_F(Containers, AKeyIsTheLowHalfOfTheAddressAsASignedNumber)
{
    // Two places whose addresses differ above bit 31 alone, with bit 31 set.
    constexpr std::size_t kSize = 1 << 16;
    static_assert(sizeof(PlacedView) < kSize);
    constexpr std::uintptr_t kLow = 0x90000000u;
    std::vector<void*> places;
    for (std::uintptr_t high = 2; high < 4096 && places.size() < 2; ++high) {
        const std::uintptr_t address = (high << 36) | kLow;
        void* const wanted = reinterpret_cast<void*>(address);
        void* const mapped = mmap(wanted, kSize, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
        if (mapped == wanted) {
            places.push_back(mapped);
        }
    }
    if (places.size() < 2) {
        GTEST_SKIP() << "the system gives no memory at chosen addresses";
    }

    Start();
    const auto make = [&](void* place, const Pages& pages) {
        PlacedView::place = place;
        using Placed = SODetails::ServiceObjectCppTheConcrete<PlacedView>;
        return UIDocumentViewObject::Make(
            Placed::Create(state, BLDocumentObject::Make(state, MakeDocument(pages))));
    };
    const auto fire = [&](auto& event, const auto& view) {
        host.State().Fire(event, view->AsInterface());
        Settle();
    };
    auto first = make(places[0], {{Comment("Ink")}});
    auto second = make(places[1], {{Comment("Ink")}});
    auto& created = host.Collection().Event<Collection::OnDocumentViewCreated>();
    auto& activated = host.Collection().Event<Collection::OnDocumentViewActivated>();
    auto& destroyed = host.Collection().Event<Collection::OnDocumentViewDestroyed>();
    fire(created, first);
    fire(activated, first);
    EXPECT_THAT(Shown(), ElementsAre("-1879048192"));
    fire(created, second);
    EXPECT_EQ(CountMatches(".panel-content[doc-view-addr=\"-1879048192\"]"), 2u);
    fire(activated, second);
    EXPECT_THAT(Shown(), ElementsAre("-1879048192", "-1879048192"));
    fire(destroyed, first);
    EXPECT_EQ(CountMatches(kAnyContainer), 0u);
    fire(created, first);
    first.Reset();  // unheard; the next view with its key has a container of its own
    const std::size_t attached = host.Panel().AttachedHandlerCount();
    fire(created, second);
    EXPECT_EQ(CountMatches(kAnyContainer), 1u);
    EXPECT_EQ(host.Panel().AttachedHandlerCount(), attached);
    fire(destroyed, second);
    second.Reset();
    for (void* const place : places) {
        munmap(place, kSize);
    }
}

#endif

}  // namespace
}  // namespace PanelTests
