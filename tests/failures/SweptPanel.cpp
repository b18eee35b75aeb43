#include "SweptPanel.h"

#include "services/PanelElements.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>

namespace PanelTests {

using namespace Workbench;

namespace {

constexpr std::uint32_t kEveryKey[] = {kKeyEnd,  kKeyUpArrow,  kKeyPageUp, kKeyDownArrow,
                                       kKeyHome, kKeyPageDown, kKeyEnter};

}  // namespace

SweptPanel::SweptPanel() = default;

std::span<const SweptPanel::Operation> SweptPanel::Operations()
{
    static constexpr Operation kOperations[] = {
        {"start", &SweptPanel::StartUp, true},
        {"open", &SweptPanel::OpenAnother},
        {"activate", &SweptPanel::ActivateFirst},
        {"keys", &SweptPanel::PressKeys},
        {"buttons", &SweptPanel::ClickButtons},
        {"item", &SweptPanel::ClickItem},
        {"collapse", &SweptPanel::CollapsePage},
        {"delete", &SweptPanel::DeleteByKey},
        {"add", &SweptPanel::AddComment},
        {"remove", &SweptPanel::RemoveComment},
        {"edit", &SweptPanel::EditComment},
        {"empty a page", &SweptPanel::EmptyPage},
        {"pages", &SweptPanel::ChangePages},
        {"focus", &SweptPanel::FocusComment},
        {"language", &SweptPanel::SwitchLanguage},
        {"foreign edit", &SweptPanel::EditOnForeignThread},
        {"close", &SweptPanel::CloseFirst, false, true},
        {"end", &SweptPanel::End, false, true, true},
    };
    return kOperations;
}

void SweptPanel::Run(const Operation& operation, const std::function<void()>& arm,
                     const std::function<Expected()>& disarm)
{
    if (!operation.startsPanel) {
        StartUp();
        ASSERT_TRUE(host.RunUntilIdle());
        ASSERT_EQ(OutlineOf(view_), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
    }
    TakeFailures();
    arm();
    (this->*operation.act)();
    if (!operation.endsHost) {
        RunForAWhile();
    }
    ExpectRecovery(operation, disarm());
    if (host.Plugin() != nullptr) {
        TakeError();
    }
    TakeFailures();
    view_.Reset();
    other_.Reset();
    TearDown();
}

void SweptPanel::ExpectWholeList()
{
    ASSERT_TRUE(host.RunUntilIdle(std::chrono::seconds(20))) << OutlineOf(view_);
    const std::string shown = ListHtml(view_);
    const std::string fresh = FreshListHtml(view_);
    const auto differs = std::mismatch(shown.begin(), shown.end(), fresh.begin(), fresh.end());
    EXPECT_TRUE(shown == fresh) << OutlineOf(view_) << "\n"
                                << std::string(differs.first, shown.end()).substr(0, 80) << "\n"
                                << std::string(differs.second, fresh.end()).substr(0, 80);
}

void SweptPanel::ExpectRecovery(const Operation& operation, Expected expected)
{
    if (operation.endsHost) {
        return;
    }
    if (host.PanelModel() == nullptr) {
        return;  // the start failed, and said so by an exception
    }
    if (operation.startsPanel) {
        // Handed over again, as a host does that was told of a failure.
        host.HandOverDocuments();
    }
    // The next events.
    Perhaps([&] { OpenAnother(); });
    if (operation.act == &SweptPanel::CloseFirst) {
        view_ = other_;
    }
    for (const ViewPtr& view : host.Views()) {
        Publish(view, DocumentOf(view).AddAnnotation(0, "Ink", u"after"));
    }
    RunForAWhile();
    if (expected != Expected::kMendsItself) {
        host.SwitchLanguage("de");
    }
    if (expected == Expected::kStands) {
        EXPECT_TRUE(host.RunUntilIdle(std::chrono::seconds(5))) << "a list is still loading";
        return;
    }
    ExpectWholeList();
    TakeFailures();
    if (!operation.startsPanel && !operation.ends) {
        (this->*operation.act)();
        ExpectWholeList();
        EXPECT_EQ(TakeFailures(), "") << "the second time";
    }
}

void SweptPanel::Perhaps(const std::function<void()>& step)
{
    try {
        step();
    } catch (const std::exception&) {  // NOLINT: the module may fail, and must stand
    }
}

void SweptPanel::RunForAWhile()
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(60);
    host.State().loop.RunUntil([this] { return host.IsIdle(); }, end);
}

void SweptPanel::StartUp()
{
    Perhaps([&] {
        host.StartPanel();
        host.HandOverDocuments();
    });
    view_ = host.OpenView(MakeDocument(FivePages()));
    RunForAWhile();
}

void SweptPanel::OpenAnother()
{
    other_ = host.OpenView(MakeDocument({{Comment("Text", u"other")}}));
    RunForAWhile();
    host.Collection().Activate(view_ ? view_ : other_);
    RunForAWhile();
}

void SweptPanel::ActivateFirst()
{
    host.Collection().Activate(view_);
}

void SweptPanel::CloseFirst()
{
    host.CloseView(view_);
    view_.Reset();
}

void SweptPanel::End()
{
    view_.Reset();
    EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
}

void SweptPanel::PressKey(std::uint32_t key)
{
    const auto container = FindContainer(*host.Panel().Document(), KeyOf(view_));
    ElementHandle list = kNoElement;
    host.Panel().Document()->SelectFirst(container, "div.results-container", list);
    if (list != kNoElement) {
        host.Panel().PressKey(list, key);
    }
}

void SweptPanel::Click(const char* selector)
{
    const auto container = FindContainer(*host.Panel().Document(), KeyOf(view_));
    ElementHandle target = kNoElement;
    host.Panel().Document()->SelectFirst(container, selector, target);
    if (target != kNoElement) {
        host.Panel().Click(target);
    }
}

void SweptPanel::PressKeys()
{
    for (const std::uint32_t key : kEveryKey) {
        PressKey(key);
    }
}

void SweptPanel::ClickButtons()
{
    for (const char* button :
         {"#expand-all", "#collapse-all", "#reply", "#move-bottom", "#move-top"}) {
        Click(button);
    }
}

void SweptPanel::ClickItem()
{
    Click("li[annot-name=\"2_0\"]");
}

void SweptPanel::CollapsePage()
{
    Click("div.icon");
}

void SweptPanel::DeleteByKey()
{
    PressKey(kKeyEnd);
    PressKey(kKeyDelete);
}

void SweptPanel::AddComment()
{
    Publish(view_, DocumentOf(view_).AddAnnotation(1, "Square", u"added"));
}

void SweptPanel::RemoveComment()
{
    Publish(view_, DocumentOf(view_).RemoveAnnotation(0, 0));
    Publish(view_, DocumentOf(view_).AddAnnotation(0, "Text", u"and one for the next time"));
}

void SweptPanel::EditComment()
{
    Publish(view_, DocumentOf(view_).ChangeContents(3, 1, u"changed"));
}

void SweptPanel::EmptyPage()
{
    if (DocumentOf(view_).AnnotationAt(2, 0)) {
        Publish(view_, DocumentOf(view_).RemoveAnnotation(2, 0));
    }
}

void SweptPanel::ChangePages()
{
    Publish(view_, DocumentOf(view_).InsertPage(1));
    RunForAWhile();
    Publish(view_, DocumentOf(view_).DeletePage(1));
}

void SweptPanel::FocusComment()
{
    view_->View().SetFocus(3, DocumentOf(view_).AnnotationAt(3, 1));
    view_->View().SetFocus(0, DocumentOf(view_).AnnotationAt(0, 0));
}

void SweptPanel::SwitchLanguage()
{
    host.SwitchLanguage("ru");
}

void SweptPanel::EditOnForeignThread()
{
    host.State().firesOnForeignThread = true;
    Publish(view_, DocumentOf(view_).AddAnnotation(2, "Square", u"from elsewhere"));
    Publish(view_, DocumentOf(view_).ChangeContents(0, 1, u"changed elsewhere"));
    RunForAWhile();
    host.State().firesOnForeignThread = false;
}

std::uint64_t SweepStride()
{
    const char* const stride = std::getenv("PANEL_SWEEP_STRIDE");
    return stride == nullptr ? 41 : std::max<std::uint64_t>(std::strtoull(stride, nullptr, 10), 1);
}

std::uint64_t
SweepPoints(std::uint64_t way,
            const std::function<bool(const SweptPanel::Operation& operation, std::uint64_t n)>& run,
            std::uint64_t stride)
{
    std::uint64_t points = 0;
    std::uint64_t shift = way * SweptPanel::Operations().size();
    for (const SweptPanel::Operation& operation : SweptPanel::Operations()) {
        for (std::uint64_t n = shift++ % stride; run(operation, n); n += stride) {
            ++points;
            if (testing::Test::HasFailure()) {
                return points;
            }
        }
    }
    return points;
}

}  // namespace PanelTests
