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

// How far apart the points are that are swept.
std::uint64_t SweepStride();

}  // namespace PanelTests
