// Whole lists: rendered on the worker behind the preloader, overtaken, dropped, and failing.
#include "PanelFixture.h"

#include "RenderQueue.h"

#include "documents/Population.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/ServiceProvider.h"
#include "services/ResourceStore.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>

namespace PanelTests {
namespace {

using namespace Workbench;
using Documents::Fault;
using Documents::FaultInjection;
using Documents::TableEntry;

// A locale service that knows no text, that fails on demand, and that can keep a thread that is
// not the UI thread waiting.
class StubbornLocale : public HostObject<StubbornLocale, LocaleManager> {
public:
    explicit StubbornLocale(const UiThreadLoop& loop) : loop_(loop)
    {
        Offer<LocaleManager::GetString, &StubbornLocale::GetString>();
        Offer<LocaleManager::GetSectionString, &StubbornLocale::GetSectionString>();
    }

    void FailFromNowOn(bool fails) { fails_ = fails; }
    void KeepWaiting(bool waits)
    {
        const std::lock_guard lock(mutex_);
        waits_ = waits;
        changed_.notify_all();
    }
    bool SomebodyWaits() const
    {
        const std::lock_guard lock(mutex_);
        return waiting_ > 0;
    }

private:
    ResultCode Answer(const char16_t** text)
    {
        *text = nullptr;
        if (fails_) {
            FailCall(77, "the dictionary is lost");
        }
        std::unique_lock lock(mutex_);
        if (!loop_.IsUiThread()) {
            ++waiting_;
            changed_.wait(lock, [this] { return !waits_; });
            --waiting_;
        }
        return kResultOk;
    }
    ResultCode GetString(const char16_t** text, const char16_t*) { return Answer(text); }
    ResultCode GetSectionString(const char16_t** text, const char16_t*, const char16_t*)
    {
        return Answer(text);
    }

    const UiThreadLoop& loop_;
    std::atomic<bool> fails_ = false;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool waits_ = false;
    int waiting_ = 0;
};

class Loading : public PanelTest {
protected:
    void Hold(bool enabled) { host.State().loop.Hold(enabled); }

    // Puts a locale service into the place of the host's, before anything asks for it.
    BasicServiceObjectPtr<StubbornLocale> ProvideStubbornLocale()
    {
        const auto locale = StubbornLocale::Make(host.State().loop);
        VxHostRegisterService("LocaleManager", locale->AsInterface());
        return locale;
    }
};

TEST_F(Loading, ThePreloaderIsShownUntilTheListLands)
{
    Hold(true);
    const ViewPtr view = StartWith(FivePages());
    AwaitHeld(1);
    EXPECT_EQ(OutlineOf(view), "loading []");
    EXPECT_EQ(ListHtml(view), "");
    Hold(false);
    Settle();
    EXPECT_EQ(OutlineOf(view), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
}

TEST_F(Loading, WithoutLookupsTheKeysAreShown)
{
    VxHostRegisterService("LocaleManager", MuteLocale::Make()->AsInterface());
    const ViewPtr view = StartWith({{}, {}, {Comment("Squiggly")}});
    const PanelView read = Read(view);
    EXPECT_EQ(read.pages.at(0).caption, "Page 3");
    EXPECT_EQ(read.pages.at(0).items.at(0).title, "Squiggly");
    EXPECT_EQ(host.Panel().Document()->TextContent(Find(view, "#delete")), "DELETE");
    EXPECT_EQ(OutlineOf(Open(MakeDocument({{}}))), "(There are no items to show) []");
}

TEST_F(Loading, ChangesDuringALoadingAreInTheListWhenItLands)
{
    for (const bool foreign : {false, true}) {
        SCOPED_TRACE(foreign);
        Hold(true);
        const ViewPtr view =
            foreign ? host.OpenView(MakeDocument(FivePages())) : StartWith(FivePages());
        host.State().firesOnForeignThread = foreign;
        AwaitHeld(1);
        Documents::Document& document = DocumentOf(view);
        Publish(view, document.AddAnnotation(1, "Ink", u"added"));
        Publish(view, document.ChangeContents(0, 0, u"changed"));
        Publish(view, document.RemoveAnnotation(2, 0));
        Publish(view, document.RemoveAnnotation(3, 0));
        view->View().SetFocus(3, document.AnnotationAt(3, 0));
        Settle();
        EXPECT_EQ(OutlineOf(view), "loading []");
        Hold(false);
        Settle();
        EXPECT_EQ(OutlineOf(view), "0:0_0*,0_1 1:1_0 3:3_0 [ECRDB]");
        ExpectFresh(view);
    }
}

TEST_F(Loading, AnOvertakenRenderingIsDropped)
{
    Hold(true);
    const ViewPtr view = StartWith(FivePages());
    for (std::size_t held = 1; held <= 3; ++held) {
        AwaitHeld(held);
        Publish(view, DocumentOf(view).InsertPage(0));
    }
    AwaitHeld(4);
    Hold(false);
    for (int overtaken = 0; overtaken < 3; ++overtaken) {
        ASSERT_TRUE(host.State().loop.RunNext());
        EXPECT_EQ(OutlineOf(view), "loading []");
    }
    Settle();
    EXPECT_EQ(OutlineOf(view), "3:3_0*,3_1 5:5_0 6:6_0,6_1 [ECRDB]");
    ExpectFresh(view);
}

TEST_F(Loading, AClosedViewIsNotLandedOn)
{
    const auto locale = ProvideStubbornLocale();
    const ViewPtr other = StartWith(FivePages());  // keeps the worker
    {
        Hold(true);
        const ViewPtr held = host.OpenView(MakeDocument(FivePages()));
        AwaitHeld(1);
        host.CloseView(held);
        Hold(false);
        Settle();
    }
    {
        locale->KeepWaiting(true);
        const ViewPtr rendered = host.OpenView(MakeDocument(FivePages()));
        RunUntil([&] { return locale->SomebodyWaits(); });
        const ViewPtr queued = host.OpenView(MakeDocument(FivePages()));
        RunUntil([&] { return host.LoadingCount() == 2; });
        host.CloseView(rendered);
        host.CloseView(queued);
        locale->KeepWaiting(false);
        Settle();
    }
    EXPECT_EQ(CountMatches(".panel-content"), 1u);
    EXPECT_EQ(CountMatches("li[annot-name]"), 5u);
    ExpectFresh(other);
}

TEST_F(Loading, ManyViewsMayBeClosedInTheMiddle)
{
    Start();
    const Documents::LiveRecords before = Documents::CountLiveRecords();
    for (int round = 0; round < 30; ++round) {
        const ViewPtr large = host.OpenView(Documents::MakePopulationDocument({2000, 40}));
        const ViewPtr small = host.OpenView(MakeDocument(FivePages()));
        for (int call = 0; call < round; ++call) {
            host.State().loop.RunNext();
        }
        host.CloseView(large);  // its rendering may be queued, running, or on its way
        if (round % 2 == 0) {
            host.CloseView(small);  // and the worker ends with it
        } else {
            Settle();
            ExpectFresh(small);
            host.CloseView(small);
        }
    }
    Settle();
    EXPECT_EQ(CountMatches(".panel-content"), 0u);
    EXPECT_EQ(Documents::CountLiveRecords(), before);
}

// What a job holds of the host must not end on the worker.
TEST(RenderQueueTest, DestroysItsJobsOnTheThreadThatAddsThem)
{
    std::thread::id where;
    std::promise<void> ran;
    {
        RenderQueue queue;
        const auto noteEnd = [&where](int*) { where = std::this_thread::get_id(); };
        queue.Add([held = std::shared_ptr<int>(new int(0),
                                               [noteEnd](int* token) {
                                                   noteEnd(token);
                                                   delete token;
                                               }),
                   &ran] {
            ran.set_value();
            return true;
        });
        ran.get_future().wait();
        queue.Add([] { return true; });
    }
    EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(Loading, ARenderingThatFailsLeavesNoPreloaderAndTheNextOneWorks)
{
    const auto locale = ProvideStubbornLocale();
    const ViewPtr view = StartWith(FivePages());
    const std::vector<Platform::ModuleInstance> modules = ResourceStore::Instance().Modules();
    ASSERT_EQ(modules.size(), 1u);
    BasicServiceObjectPtr<ServiceObject> engine;
    {
        Atom atom = kAtomNone;
        VxGetAtomFromString("UIEngine", &atom);
        ServiceProviderGetServiceObject(atom, engine.Receive());
    }
    struct Row {
        const char* name;
        std::function<void()> breakIt, mendIt;
        const char* outline;
        const char* error;  // the beginning; empty: none
    };
    const Row rows[] = {
        {"no engine", [] { VxHostRefuseService("UIEngine", kResultFactoryFailed, 0); },
         [&] { VxHostRegisterService("UIEngine", engine.Get()); }, "[]",
         "Fail to query UIEngine service object: "},
        {"a locale service that fails", [&] { locale->FailFromNowOn(true); },
         [&] { locale->FailFromNowOn(false); }, "[]", "the dictionary is lost"},
        {"no templates", [&] { ResourceStore::Instance().Forget(modules.front()); },
         [&] { ResourceStore::Instance().Register(modules.front()); },
         "(There are no items to show) []", ""},
    };
    std::u16string contents;
    for (const Row& row : rows) {
        for (const bool landsWithChanges : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.name << " " << landsWithChanges);
            row.breakIt();
            Hold(landsWithChanges);
            host.Panel().CallHandlers<UIHandler::OnLocaleChanged>();
            if (landsWithChanges) {
                AwaitHeld(1);
                contents += u'x';
                Publish(view, DocumentOf(view).ChangeContents(0, 0, contents));
                Hold(false);
            }
            Settle();
            EXPECT_EQ(OutlineOf(view), row.outline);
            EXPECT_THAT(TakeError(), testing::StartsWith(row.error));
            EXPECT_EQ(TakeFailures(), "");

            row.mendIt();
            host.Panel().CallHandlers<UIHandler::OnLocaleChanged>();
            Settle();
            EXPECT_EQ(OutlineOf(view), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
            ExpectFresh(view);
            EXPECT_EQ(TakeError(), "");
        }
    }
}

// A list with items in every form.
Pages PagesForFaults()
{
    Documents::AnnotationProperties properties;
    properties.subtype = "Highlight";
    properties.contents = u"contents";
    properties.title = u"title";
    properties.subject = u"subject";
    properties.created = {2024, 5, 1, 10, 0, 0, 0};
    properties.modified = {2024, 6, 1, 10, 0, 0, 0};
    const MemoryEntry full = Documents::MakeEntry(properties);
    return {{full, nullptr, Comment("Ink")}, {}, {Comment("Link"), full, Comment("Square", u"x")}};
}

struct ItemText {
    std::uint32_t page;
    std::string name;
    std::string rest;
};

std::vector<ItemText> ItemsOf(const PanelView& view)
{
    std::vector<ItemText> items;
    for (const PanelPage& page : view.pages) {
        for (const PanelItem& item : page.items) {
            const PanelTooltip& tooltip = item.tooltip;
            items.push_back({page.index, item.annotName,
                             (item.classes.empty() ? "" : item.classes[0]) + "|" + item.title +
                                 "|" + item.contents.value_or("-") + "|" + tooltip.title + "|" +
                                 tooltip.subject + "|" + tooltip.created.value_or("-") + "|" +
                                 tooltip.modified.value_or("-")});
        }
    }
    return items;
}

TEST_F(Loading, EveryCallOfThePdfLibraryMayFail)
{
    const ViewPtr view = StartWith(PagesForFaults());
    const std::vector<ItemText> clean = ItemsOf(Read(view));
    ASSERT_EQ(clean.size(), 4u);
    const auto load = [&] {
        host.Panel().CallHandlers<UIHandler::OnLocaleChanged>();
        Settle();
        return ItemsOf(Read(view));
    };

    // What a failure may cost: the annotation or the page that it is about, or one text of it.
    enum class Cost { kItemOrPage, kText, kNothing };
    struct Row {
        TableEntry entry;
        Cost cost;
    };
    const Row rows[] = {
        {TableEntry::kAcquirePage, Cost::kItemOrPage},
        {TableEntry::kPageGetAnnotCount, Cost::kItemOrPage},
        {TableEntry::kPageGetAnnot, Cost::kItemOrPage},
        {TableEntry::kAnnotIsEqual, Cost::kItemOrPage},
        {TableEntry::kAnnotIsListed, Cost::kItemOrPage},
        {TableEntry::kAnnotGetSubtype, Cost::kText},
        {TableEntry::kAnnotGetContents, Cost::kText},
        {TableEntry::kAnnotGetTitle, Cost::kText},
        {TableEntry::kAnnotGetSubject, Cost::kText},
        {TableEntry::kAnnotGetCreationDate, Cost::kText},
        {TableEntry::kAnnotGetModificationDate, Cost::kText},
        {TableEntry::kAnnotGetRect, Cost::kNothing},
    };
    std::uint32_t faults = 0;
    for (const Row& row : rows) {
        for (std::uint32_t n = 0;; ++n) {
            SCOPED_TRACE(testing::Message()
                         << "entry " << static_cast<int>(row.entry) << " call " << n);
            const FaultInjection fault(Fault{row.entry, kResultUnexpected, n});
            const std::vector<ItemText> items = load();
            std::size_t missing = 0, missingPage = 0, different = 0, i = 0;
            for (const ItemText& item : clean) {
                if (i < items.size() && items[i].name == item.name) {
                    different += items[i++].rest == item.rest ? 0u : 1u;
                } else {
                    ++missing;
                    missingPage = item.page;
                }
            }
            EXPECT_EQ(i, items.size()) << "items that should not be there";
            EXPECT_FALSE(Read(view).noItems.has_value());
            const std::string said = TakeError();
            EXPECT_TRUE(missing + different == 0 || said == "Parts of the list could not be read")
                << said;
            if (fault.Failures() == 0) {
                EXPECT_EQ(missing + different, 0u);
                EXPECT_EQ(said, "");
                break;
            }
            ++faults;
            EXPECT_LE(different, row.cost == Cost::kText ? 1u : 0u);
            const bool wholePage = missing == 2 &&
                                   (items.empty() || items[0].page != missingPage) &&
                                   items.size() == 2 && items[0].page == items[1].page;
            EXPECT_TRUE(missing == 0 ||
                        (row.cost == Cost::kItemOrPage && (missing == 1 || wholePage)));
        }
    }
    EXPECT_GE(faults, 40u) << "the library was asked";
    EXPECT_EQ(ItemsOf(Read(view)).size(), clean.size());
    ExpectFresh(view);
}

}  // namespace
}  // namespace PanelTests
