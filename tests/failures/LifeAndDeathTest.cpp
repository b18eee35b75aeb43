// Views, documents, frames, handlers and the module come and go in orders drawn at random: in the
// middle of renderings and posted tasks, on foreign threads, twice, and again. Afterwards every
// list that is left equals its document, and nothing else is left.
//
// PANEL_LIFE_SEED plays one order again, PANEL_LIFE_COUNT sets how many there are.
#include "PanelFixture.h"

#include "services/ModuleBoundary.h"

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace PanelTests {
namespace {

using namespace Workbench;

std::uint64_t FromEnvironment(const char* name, std::uint64_t otherwise)
{
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

class Life : public PanelTest {
public:
    void Live(std::uint64_t seed);
    void TestBody() override {}

private:
    void Step();
    void Edit(const ViewPtr& view);
    void ChangePages(const ViewPtr& view);

    std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(random_() % end); }
    const ViewPtr& SomeView() { return views_[Below(static_cast<std::uint32_t>(views_.size()))]; }

    std::mt19937_64 random_;
    std::vector<ViewPtr> views_;
    std::vector<BasicServiceObjectPtr<UIDocumentFrameObject>> frames_;
    bool isDetached_ = false;
    const OnSide host_{Side::kHost};
};

void Life::Edit(const ViewPtr& view)
{
    Documents::Document& document = DocumentOf(view);
    const std::uint32_t page = Below(document.PageCount());
    switch (Below(3)) {
    case 0:
        Publish(view, document.AddAnnotation(page, "Ink", u"new"));
        break;
    case 1:
        if (document.AnnotationAt(page, 0)) {
            Publish(view, document.RemoveAnnotation(page, 0));
        }
        break;
    default:
        if (document.AnnotationAt(page, 0)) {
            Publish(view, document.ChangeContents(page, 0, u"<b>other"));
        }
    }
}

void Life::ChangePages(const ViewPtr& view)
{
    Documents::Document& document = DocumentOf(view);
    if (document.PageCount() > 1 && Below(2) == 0) {
        Publish(view, document.DeletePage(Below(document.PageCount())));
    } else if (document.PageCount() < 8) {
        Publish(view, document.InsertPage(Below(document.PageCount())));
    }
}

void Life::Step()
{
    const std::uint32_t kind = Below(14);
    if (kind < 3 || views_.empty()) {
        views_.push_back(host.OpenView(MakeDocument(FivePages())));
        return;
    }
    switch (kind) {
    case 3: {
        const std::size_t at = Below(static_cast<std::uint32_t>(views_.size()));
        host.CloseView(views_[at]);
        // The last reference to a view may be a foreign thread's.
        ViewPtr last = std::move(views_[at]);
        views_.erase(views_.begin() + static_cast<std::ptrdiff_t>(at));
        if (Below(2) == 0) {
            std::thread([held = std::move(last)]() mutable {
                const OnSide foreign(Side::kHost);
                held.Reset();
            }).join();
        }
        break;
    }
    case 4:
        host.Collection().Activate(SomeView());
        break;
    case 5:
        ChangePages(SomeView());
        break;
    case 6:
        host.SwitchLanguage(Below(2) == 0 ? "de" : "en");
        break;
    case 7:
        host.HandOverDocuments();
        break;
    case 8:
        frames_.push_back(UIDocumentFrameObject::Make(
            BasicServiceObjectPtr<UIDocumentsCollectionObject>::Retain(&host.Collection())));
        host.MainFrame().AnnounceChildFrame(*frames_.back().Get());
        if (Below(2) == 0) {
            frames_.clear();
        }
        break;
    case 9:
        host.State().firesOnForeignThread = Below(2) == 0;
        break;
    case 10:
        for (std::uint32_t calls = Below(6); calls > 0; --calls) {
            host.State().loop.RunNext();
        }
        break;
    case 11: {
        UIElement body{};
        CallMethod<UIHandler::GetElementAttachedTo>(host.PanelHandler(), &body);
        CallMethod<UIHandler::Detached>(host.PanelHandler());
        if (Below(2) == 0) {
            CallMethod<UIHandler::Detached>(host.PanelHandler());
        }
        isDetached_ = Below(4) == 0;
        if (!isDetached_) {
            CallMethod<UIHandler::Attached>(host.PanelHandler(), host.Window(), &body);
            host.HandOverDocuments();
        }
        break;
    }
    case 12:
        host.State().loop.Hold(!host.State().loop.Holds());
        break;
    default:
        Edit(SomeView());
    }
}

void Life::Live(std::uint64_t seed)
{
    random_.seed(seed);
    Start();
    for (std::uint32_t steps = 10 + Below(40); steps > 0; --steps) {
        Step();
        if (isDetached_) {
            break;  // what follows is the end of a panel without its element
        }
    }
    host.State().loop.Hold(false);
    Settle();
    if (!isDetached_) {
        for (const ViewPtr& view : views_) {
            ExpectFresh(view);
        }
    }
    TakeLateErrors();
    TakeFailures();
    // Model and handler may be kept past the end of the panel, and go on a foreign thread.
    auto model = BasicServiceObjectPtr<UIDocumentPanelModel>::Retain(host.PanelModel());
    auto handler = BasicServiceObjectPtr<UIHandler>::Retain(host.PanelHandler());
    CallMethod<UIInplacePlugin::Cleanup>(host.Plugin());
    CallMethod<UIDocumentPanelModel::SetDocumentsCollection>(model.Get(),
                                                             host.Collection().AsInterface());
    Settle();
    if (Below(2) == 0) {
        std::thread([held = std::move(model)]() mutable { held.Reset(); }).join();
    }
    model.Reset();
    handler.Reset();
    TakeError();
    TakeFailures();
    views_.clear();
    frames_.clear();
    TearDown();
}

TEST(LifeAndDeath, LeavesTheListsOfWhatLivesAndNothingElse)
{
    const std::uint64_t first = FromEnvironment("PANEL_LIFE_SEED", std::random_device()());
    const std::uint64_t count = FromEnvironment("PANEL_LIFE_COUNT", 150);
    for (std::uint64_t seed = first; seed < first + count; ++seed) {
        testing::ScopedTrace trace(__FILE__, __LINE__, "PANEL_LIFE_SEED=" + std::to_string(seed));
        Life life;
        life.Live(seed);
        ASSERT_FALSE(testing::Test::HasFailure());
    }
    std::cout << count << " lives from seed " << first << "\n";
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(LifeAndDeath, OfTheModuleTwoHundredTimesTakesNoMemory)
{
    const auto live = [] {
        const OnSide side(Side::kHost);
        Host host{HostOptions{}};
        host.StartPanel();
        host.HandOverDocuments();
        host.OpenView(MakeDocument(FivePages()));
        ASSERT_TRUE(host.RunUntilIdle());
        EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
    };
    for (int warm = 0; warm < 20; ++warm) {
        live();
    }
    const std::size_t before = mallinfo2().uordblks;
    for (int load = 0; load < 200; ++load) {
        live();
    }
    const std::size_t after = mallinfo2().uordblks;
    EXPECT_LT(after, before + 32 * 1024) << "grown from " << before;
}
#endif

}  // namespace
}  // namespace PanelTests
