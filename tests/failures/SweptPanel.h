// A panel in which one thing that a reader, a host or a document does happens while something
// fails. Afterwards the panel must stand: it is idle, the next event makes its list equal to its
// document, the same thing succeeds, and nothing is left behind.
#pragma once

#include "PanelFixture.h"

#include "services/ModuleBoundary.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace PanelTests {

class SweptPanel : public PanelTest {
public:
    SweptPanel();

    // What a host can expect of the panel after a failure.
    enum class Expected {
        kMendsItself,       // with the next event
        kMendsWithLoading,  // with the next loading: what failed counts as how the host is
        kStands,            // not to crash, nor to keep anything
    };

    // Runs the operation between `arm` and `disarm`, which says what to expect, and judges the
    // panel.
    struct Operation {
        const char* name;
        void (SweptPanel::*act)();
        bool startsPanel = false;  // is itself the start
        bool ends = false;         // cannot be done twice
        bool endsHost = false;
    };
    static std::span<const Operation> Operations();
    void Run(const Operation& operation, const std::function<void()>& arm,
             const std::function<Expected()>& disarm);

    void TestBody() override {}

private:
    void StartUp();
    void OpenAnother();
    void ActivateFirst();
    void CloseFirst();
    void End();
    void PressKeys();
    void ClickButtons();
    void ClickItem();
    void CollapsePage();
    void DeleteByKey();
    void AddComment();
    void RemoveComment();
    void EditComment();
    void EmptyPage();
    void ChangePages();
    void FocusComment();
    void SwitchLanguage();
    void EditOnForeignThread();

    // Runs the loop until nothing is left that could happen while something fails.
    void RunForAWhile();
    void Perhaps(const std::function<void()>& step);
    void PressKey(std::uint32_t key);
    void Click(const char* selector);
    void ExpectRecovery(const Operation& operation, Expected expected);
    void ExpectWholeList();

    ViewPtr view_, other_;
    const Workbench::OnSide host_{Workbench::Side::kHost};
};

// How far apart the points are that are swept: PANEL_SWEEP_STRIDE, or what suits every test run.
std::uint64_t SweepStride();

// Runs every operation with its n-th point failing, n growing by a stride until none fails. `run`
// does one of these on a panel of its own and says whether the point was reached. The number of
// points; ends with the first failure of the test. `way` shifts the points, so that different ways
// of failing do not always meet the same.
std::uint64_t
SweepPoints(std::uint64_t way,
            const std::function<bool(const SweptPanel::Operation& operation, std::uint64_t n)>& run,
            std::uint64_t stride = SweepStride());

}  // namespace PanelTests
