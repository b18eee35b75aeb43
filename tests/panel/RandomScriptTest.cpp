// Long scripts of whatever users, hosts and documents may do, drawn at random. After every step
// each list is what a fresh rendering of its document would be, and the current item, the states
// of the pages and the buttons are what a small model of the rules says.
//
// PANEL_SCRIPT_SEED plays one script again, PANEL_SCRIPT_STEPS sets its length.
#include "PanelFixture.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <thread>

namespace PanelTests {
namespace {

using namespace Workbench;
using Documents::Document;

constexpr std::uint32_t kRefused = 0x30001;

// What the rules say of one container.
class ListModel {
public:
    explicit ListModel(Document& document) : document_(document), readOnly_(document.ReadOnly()) {}

    struct Place {
        std::uint32_t page = 0;
        std::uint32_t position = 0;

        friend bool operator==(const Place&, const Place&) = default;
    };
    enum class State : char { kNone = '\0', kExpanded = '+', kCollapsed = '-' };
    enum Button { kExpandAll, kCollapseAll, kReply, kDelete, kMoveTop, kMoveBottom };

    // --- Loading and following the document ---

    void Reload(bool held)
    {
        loading_ = true;
        pages_.clear();
        current_.reset();
        UpdateButtons();
        if (!held) {
            Land();
        }
    }
    void Land()
    {
        if (!std::exchange(loading_, false)) {
            return;
        }
        for (std::uint32_t page = 0; page < document_.PageCount(); ++page) {
            RenderPage(page);
        }
        SelectFirst();
        UpdateButtons();
    }
    // An annotation was added to a page, or removed from it.
    void OnPageChanged(std::uint32_t page)
    {
        if (loading_) {
            return;
        }
        RenderPage(page);
        if (current_ && current_->page == page) {
            current_.reset();
        }
        if (!current_) {
            SelectFirst();
        }
        UpdateButtons();
    }
    // One that is not listed was removed: items behind it have another name now.
    void OnPositionGone(Place gone)
    {
        if (const auto page = pages_.find(gone.page); page != pages_.end()) {
            for (std::uint32_t& position : page->second.items) {
                position -= position > gone.position ? 1 : 0;
            }
        }
        if (current_ && current_->page == gone.page && current_->position > gone.position) {
            --current_->position;
        }
    }
    void OnFocus(Place place)
    {
        if (Has(place)) {
            current_ = place;
            UpdateMoveButtons();
            Reveal(place.page);
        }
    }

    // --- Moves; whether they moved ---

    bool MoveWithinPage(bool up)
    {
        if (!current_) {
            return false;
        }
        Reveal(current_->page);
        return Take(Sibling(up));
    }
    bool MoveToAdjacentPage(bool up) { return Take(InAdjacentPage(up)); }
    bool SelectFirst() { return Take(pages_.empty() ? Nowhere() : Edge(pages_.begin(), false)); }
    bool SelectLast() { return Take(pages_.empty() ? Nowhere() : Edge(--pages_.end(), true)); }

    void Toggle(std::uint32_t page)
    {
        State& state = pages_[page].state;
        state = state == State::kCollapsed ? State::kExpanded : State::kCollapsed;
        UpdatePageButtons();
    }
    void SetAll(State state)
    {
        for (auto& [index, page] : pages_) {
            page.state = state;
        }
        UpdatePageButtons();
    }
    void MakeCurrent(Place place) { current_ = place; }
    void UpdateMoveButtons()
    {
        enabled_[kMoveTop] = Sibling(true) || InAdjacentPage(true);
        enabled_[kMoveBottom] = Sibling(false) || InAdjacentPage(false);
    }

    const std::optional<Place>& Current() const { return current_; }
    bool IsEnabled(std::size_t button) const
    {
        return button == kDelete ? current_ && !readOnly_ && !IsCollapsed(current_->page)
                                 : enabled_[button];
    }
    bool IsReadOnly() const { return readOnly_; }
    bool IsLoading() const { return loading_; }
    bool IsCollapsed(std::uint32_t page) const
    {
        return pages_.at(page).state == State::kCollapsed;
    }
    std::vector<std::uint32_t> PagesShown() const
    {
        std::vector<std::uint32_t> shown;
        for (const auto& [index, page] : pages_) {
            shown.push_back(index);
        }
        return shown;
    }
    std::vector<Place> Items() const
    {
        std::vector<Place> items;
        for (const auto& [index, page] : pages_) {
            for (const std::uint32_t position : page.items) {
                items.push_back({index, position});
            }
        }
        return items;
    }

    // In the form of Outline, without the message of an empty list.
    std::string Text() const
    {
        std::ostringstream out;
        out << (loading_ ? "loading " : "");
        for (const auto& [index, page] : pages_) {
            out << index;
            if (page.state != State::kNone) {
                out << static_cast<char>(page.state);
            }
            char separator = ':';
            for (const std::uint32_t position : page.items) {
                out << std::exchange(separator, ',') << index << "_" << position
                    << (current_ == Place{index, position} ? "*" : "");
            }
            out << " ";
        }
        out << "[";
        constexpr std::string_view kLetters = "ECRDTB";
        for (std::size_t i = 0; i < kLetters.size(); ++i) {
            out << (IsEnabled(i) ? kLetters.substr(i, 1) : "");
        }
        out << "]";
        return out.str();
    }

private:
    struct PageModel {
        std::vector<std::uint32_t> items;
        State state = State::kNone;
    };
    using PageMap = std::map<std::uint32_t, PageModel>;
    using MaybePlace = std::optional<Place>;

    static MaybePlace Nowhere() { return std::nullopt; }
    static MaybePlace Edge(PageMap::const_iterator page, bool last)
    {
        return Place{page->first, last ? page->second.items.back() : page->second.items.front()};
    }

    void RenderPage(std::uint32_t index)
    {
        PageModel page;
        for (std::uint32_t i = 0;; ++i) {
            const Documents::PageRef record = document_.AcquirePage(index);
            std::uint32_t count = 0;
            Documents::FunctionTable().PageGetAnnotCount(record.Get(), &count);
            if (i >= count) {
                break;
            }
            bool listed = false;
            Documents::FunctionTable().AnnotIsListed(document_.AnnotationAt(index, i).Get(),
                                                     &listed);
            if (listed) {
                page.items.push_back(i);
            }
        }
        if (page.items.empty()) {
            pages_.erase(index);
        } else {
            pages_[index] = std::move(page);
        }
    }
    bool Has(Place place) const
    {
        const auto page = pages_.find(place.page);
        return page != pages_.end() &&
               std::count(page->second.items.begin(), page->second.items.end(), place.position) > 0;
    }
    MaybePlace Sibling(bool up) const
    {
        if (!current_) {
            return std::nullopt;
        }
        const auto& items = pages_.at(current_->page).items;
        const auto at = std::find(items.begin(), items.end(), current_->position);
        if (up ? at == items.begin() : at + 1 == items.end()) {
            return std::nullopt;
        }
        return Place{current_->page, up ? *(at - 1) : *(at + 1)};
    }
    MaybePlace InAdjacentPage(bool up) const
    {
        if (!current_) {
            return std::nullopt;
        }
        const auto page = pages_.find(current_->page);
        if (up ? page == pages_.begin() : std::next(page) == pages_.end()) {
            return std::nullopt;
        }
        return Edge(up ? std::prev(page) : std::next(page), up);
    }
    bool Take(MaybePlace place)
    {
        current_ = place ? place : current_;
        return place.has_value();
    }
    void Reveal(std::uint32_t page)
    {
        pages_[page].state = State::kExpanded;
        UpdatePageButtons();
    }

    void UpdatePageButtons()
    {
        const auto all = [this](State state) {
            return std::all_of(pages_.begin(), pages_.end(),
                               [&](const auto& page) { return page.second.state == state; });
        };
        enabled_[kExpandAll] = !all(State::kExpanded);
        enabled_[kCollapseAll] = !all(State::kCollapsed);
    }
    void UpdateButtons()
    {
        enabled_[kReply] = !pages_.empty();
        UpdatePageButtons();
        UpdateMoveButtons();
    }

    Document& document_;
    const bool readOnly_;
    bool loading_ = false;
    PageMap pages_;
    MaybePlace current_;
    bool enabled_[6] = {};
};

class RandomScript : public PanelTest {
protected:
    struct OpenView {
        ViewPtr view;
        ListModel model;
        std::string fresh;  // empty: to be rendered anew
    };

    void Play(std::uint32_t seed, std::uint32_t steps);
    void Step();
    void CheckEverything();

    std::uint32_t Below(std::uint32_t end)
    {
        return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(random_);
    }
    template <class T>
    const T& OneOf(const std::vector<T>& values)
    {
        return values[Below(static_cast<std::uint32_t>(values.size()))];
    }
    bool Holds() const { return host.State().loop.Holds(); }
    void Note(const std::string& text) { history_.push_back(text); }

    // --- Steps ---

    void OpenOne();
    void EditDocument();
    void ChangePages();
    void FocusSomething();
    void PressSomeKey();
    void ClickSomething();
    void ChangeHost();

    OpenView& Active() { return *views_[active_]; }
    Documents::AnnotationRef At(OpenView& open, ListModel::Place place)
    {
        return DocumentOf(open.view).AnnotationAt(place.page, place.position);
    }
    std::uint32_t AnnotationCount(OpenView& open, std::uint32_t page);
    std::u16string SomeContents();

    // What the commands do, by the rules.
    void Navigate(OpenView& open, const char* method);
    bool Deletes(OpenView& open, const char* method);
    void Move(OpenView& open, bool up);

    std::mt19937 random_;
    std::vector<std::unique_ptr<OpenView>> views_;
    std::size_t active_ = 0;
    bool locked_ = false;
    bool permitted_ = true;
    std::vector<std::string> history_;
    std::string expectedFailure_;
};

std::u16string RandomScript::SomeContents()
{
    static const std::vector<std::u16string> kParts = {
        u"",     u"text",         u"\n",         u"\r\n",       u"<b>bold</b>", u" & ",
        u"&lt;", u"\u0416\u65E5", u"\U0001F600", u"PAGE_ITEMS", u"%1%",         u"\"",
        u"'"};
    static const std::vector<std::u16string> kTags = {u"List<String>",
                                                      u"if a<b and c>d",
                                                      u"<b>",
                                                      u"</i>",
                                                      u"<u",
                                                      u"</li>",
                                                      u"</ul></div>",
                                                      u"<ul><li><p>",
                                                      u"<table>",
                                                      u"<li annot-name=\"0_0\">",
                                                      u"<style>",
                                                      u"<!--",
                                                      u"<td><a href='",
                                                      u"</popup>",
                                                      u"<p id=NoItemsMessage>"};
    std::u16string contents;
    for (std::uint32_t i = Below(4); i > 0; --i) {
        contents += Below(8) == 0 ? OneOf(kTags) : OneOf(kParts);
    }
    return contents;
}

std::uint32_t RandomScript::AnnotationCount(OpenView& open, std::uint32_t page)
{
    std::uint32_t count = 0;
    Documents::FunctionTable().PageGetAnnotCount(DocumentOf(open.view).AcquirePage(page).Get(),
                                                 &count);
    return count;
}

void RandomScript::OpenOne()
{
    static const std::vector<const char*> kSubtypes = {"Text", "Ink", "Highlight", "Sound", ""};
    Pages pages(1 + Below(6));
    for (auto& page : pages) {
        for (std::uint32_t i = Below(4); i > 0; --i) {
            const std::uint32_t flags = Below(8) == 0 ? Documents::kFlagLocked : 0;
            page.push_back(Below(10) == 0 ? nullptr
                                          : Comment(OneOf(kSubtypes), SomeContents(), flags));
        }
    }
    host.ForceReadOnly(Below(5) == 0);
    const DocumentPtr document = MakeDocument(pages);
    const ViewPtr view = host.OpenView(document);
    document->ForceAnnotationDeletionPermitted(permitted_);
    views_.push_back(std::make_unique<OpenView>(OpenView{view, ListModel(*document), {}}));
    views_.back()->model.Reload(Holds());
    active_ = views_.size() - 1;
    Note("open");
}

void RandomScript::EditDocument()
{
    OpenView& open = *OneOf(std::vector<OpenView*>{&Active(), views_[0].get()});
    Document& document = DocumentOf(open.view);
    const std::uint32_t page = Below(document.PageCount());
    const std::uint32_t count = AnnotationCount(open, page);
    const std::uint32_t position = count == 0 ? 0 : Below(count);
    const auto annotation = document.AnnotationAt(page, position);
    const std::string place = std::to_string(page) + "_" + std::to_string(position);
    bool listed = false;
    Documents::FunctionTable().AnnotIsListed(annotation.Get(), &listed);
    switch (Below(3)) {
    case 0: {
        const std::string subtype = OneOf(std::vector<std::string>{"Stamp", "Square", "Link"});
        Note("add " + std::to_string(page) + " " + subtype);
        Publish(open.view, document.AddAnnotation(page, subtype, SomeContents()));
        if (subtype != "Link") {
            open.model.OnPageChanged(page);
        }
        break;
    }
    case 1:
        if (annotation) {
            Note("edit " + place);
            Publish(open.view, document.ChangeContents(page, position, SomeContents()));
        }
        break;
    default:
        if (annotation) {
            Note("remove " + place);
            Publish(open.view, document.RemoveAnnotation(page, position));
            listed ? open.model.OnPageChanged(page) : open.model.OnPositionGone({page, position});
        }
    }
    open.fresh.clear();
}

void RandomScript::ChangePages()
{
    OpenView& open = Active();
    Document& document = DocumentOf(open.view);
    const std::uint32_t count = document.PageCount();
    const std::uint32_t page = Below(count);
    switch (Below(3)) {
    case 0:
        if (count >= 10) {
            return;
        }
        Note("insert-page " + std::to_string(page));
        Publish(open.view, document.InsertPage(page));
        break;
    case 1:
        if (count == 1) {
            return;
        }
        Note("delete-page " + std::to_string(page));
        Publish(open.view, document.DeletePage(page));
        break;
    default: {
        const std::uint32_t to = Below(count);
        if (to == page) {
            return;
        }
        Note("move-page " + std::to_string(page) + " " + std::to_string(to));
        Publish(open.view, document.MovePage(page, to));
    }
    }
    open.model.Reload(Holds());
    open.fresh.clear();
}

void RandomScript::FocusSomething()
{
    OpenView& open = Active();
    const std::uint32_t page = Below(DocumentOf(open.view).PageCount());
    const ListModel::Place place{page, Below(4)};
    const auto annotation = At(open, place);
    const auto before = open.view->View().FocusedAnnotation();
    Note("focus " + std::to_string(page) + " " + std::to_string(place.position));
    open.view->View().SetFocus(page, annotation);
    if (annotation && (before.page != page || before.annotation != annotation)) {
        open.model.OnFocus(place);
    }
}

void RandomScript::Navigate(OpenView& open, const char* method)
{
    if (locked_) {
        return;
    }
    if (!open.model.Current()) {
        expectedFailure_ = std::string(method) + " 2";
        return;
    }
    const ListModel::Place place = *open.model.Current();
    const auto focus = open.view->View().FocusedAnnotation();
    if (focus.page != place.page || focus.annotation != At(open, place)) {
        open.model.OnFocus(place);
    }
}

bool RandomScript::Deletes(OpenView& open, const char* method)
{
    if (open.model.IsReadOnly() || !permitted_) {
        return false;
    }
    if (!open.model.Current()) {
        expectedFailure_ = std::string(method) + " 2";
        return false;
    }
    const ListModel::Place place = *open.model.Current();
    if (!Document::DeletionRefusal(At(open, place).Get()).empty()) {
        expectedFailure_ = std::string(method) + " " + std::to_string(kRefused);
        return false;
    }
    open.fresh.clear();
    return true;
}

void RandomScript::Move(OpenView& open, bool up)
{
    if (open.model.MoveWithinPage(up) || open.model.MoveToAdjacentPage(up)) {
        Navigate(open, "UIHandler::HandleEvent");
        open.model.UpdateMoveButtons();
    }
}

void RandomScript::PressSomeKey()
{
    OpenView& open = Active();
    ListModel& model = open.model;
    const std::string key = OneOf(std::vector<std::string>{
        "Up", "Down", "PageUp", "PageDown", "Home", "End", "Left", "Right", "Enter", "Delete"});
    Note("key " + key);
    const auto place = model.Current();
    bool moved = false;
    bool deletes = false;
    if (key == "Up" || key == "Down") {
        moved = model.MoveWithinPage(key == "Up");
    } else if (key == "PageUp" || key == "PageDown") {
        moved = model.MoveToAdjacentPage(key == "PageUp");
    } else if (key == "Home") {
        moved = model.SelectFirst();
    } else if (key == "End") {
        moved = model.SelectLast();
    } else if (key == "Enter") {
        Navigate(open, "UIHandler::HandleKey");
    } else if (key == "Delete") {
        deletes = Deletes(open, "UIHandler::HandleKey");
    }
    if (moved) {
        model.UpdateMoveButtons();
    }
    Do(open.view, key);
    if (deletes) {
        model.OnPageChanged(place->page);
    }
}

void RandomScript::ClickSomething()
{
    OpenView& open = Active();
    ListModel& model = open.model;
    const auto place = model.Current();
    const std::string selector = OneOf(std::vector<std::string>{
        "div.icon", "ul.comments > li[annot-name]", "ul.comments > li[annot-name]", "#expand-all",
        "#collapse-all", "#reply", "#delete", "#move-top", "#move-bottom"});
    std::uint32_t n = 0;
    const auto items = model.Items();
    const auto pages = model.PagesShown();
    if (selector == "div.icon") {
        if (pages.empty()) {
            return;
        }
        n = Below(static_cast<std::uint32_t>(pages.size()));
        model.Toggle(pages[n]);
    } else if (selector == "ul.comments > li[annot-name]") {
        if (items.empty()) {
            return;
        }
        n = Below(static_cast<std::uint32_t>(items.size()));
        if (!model.IsCollapsed(items[n].page)) {
            model.MakeCurrent(items[n]);
            Navigate(open, "UIHandler::HandleEvent");
            model.UpdateMoveButtons();
        }
    } else if (selector == "#expand-all" && model.IsEnabled(ListModel::kExpandAll)) {
        model.SetAll(ListModel::State::kExpanded);
    } else if (selector == "#collapse-all" && model.IsEnabled(ListModel::kCollapseAll)) {
        model.SetAll(ListModel::State::kCollapsed);
    } else if (selector == "#move-top" && model.IsEnabled(ListModel::kMoveTop)) {
        Move(open, true);
    } else if (selector == "#move-bottom" && model.IsEnabled(ListModel::kMoveBottom)) {
        Move(open, false);
    }
    Note("click " + selector + " @" + std::to_string(n));
    const bool deletes = selector == "#delete" && model.IsEnabled(ListModel::kDelete) &&
                         Deletes(open, "UIHandler::HandleEvent");
    Do(open.view, "click " + selector + " @" + std::to_string(n));
    if (deletes) {
        model.OnPageChanged(place->page);
    }
}

void RandomScript::ChangeHost()
{
    switch (Below(8)) {
    case 0: {
        const std::string language = OneOf(std::vector<std::string>{"en", "de", "ru", "he"});
        Note("locale " + language);
        host.SwitchLanguage(language);
        Settle();
        for (const auto& open : views_) {
            open->model.Reload(Holds());
            open->fresh.clear();
        }
        break;
    }
    case 1:
        host.State().firesOnForeignThread = Below(2) == 0;
        Note("fire");
        break;
    case 2:
        locked_ = Below(3) == 0;
        host.State().interactionLocked = locked_;
        Note("interaction-lock " + std::to_string(locked_));
        break;
    case 3:
        permitted_ = Below(4) != 0;
        host.ForceDeletionPermitted(permitted_);
        Note("permit-delete " + std::to_string(permitted_));
        break;
    case 4:
        active_ = Below(static_cast<std::uint32_t>(views_.size()));
        Note("activate " + std::to_string(active_));
        host.Collection().Activate(Active().view);
        break;
    case 5:
        if (views_.size() < 4) {
            OpenOne();
        } else {
            Note("close " + std::to_string(active_));
            host.CloseView(Active().view);
            views_.erase(views_.begin() + static_cast<std::ptrdiff_t>(active_));
            active_ = std::min(active_, views_.size() - 1);
        }
        break;
    default:
        Note("hold " + std::to_string(!Holds()));
        host.State().loop.Hold(!Holds());
        Settle();
        if (!Holds()) {
            for (const auto& open : views_) {
                open->model.Land();
            }
        }
    }
}

void RandomScript::Step()
{
    expectedFailure_.clear();
    switch (Below(12)) {
    case 0:
    case 1:
    case 2:
        EditDocument();
        break;
    case 3:
        ChangePages();
        break;
    case 4:
        FocusSomething();
        break;
    case 5:
    case 6:
    case 7:
        PressSomeKey();
        break;
    case 8:
    case 9:
    case 10:
        ClickSomething();
        break;
    default:
        ChangeHost();
    }
    Settle();
}

void RandomScript::CheckEverything()
{
    ASSERT_EQ(TakeFailures(), expectedFailure_);
    if (!expectedFailure_.empty()) {
        TakeError();
    }
    ASSERT_EQ(TakeError(), "");
    for (std::size_t i = 0; i < views_.size(); ++i) {
        OpenView& open = *views_[i];
        PanelView read = Read(open.view);
        ASSERT_EQ(read.visible, i == active_);
        ASSERT_EQ(read.noItems.has_value(), read.pages.empty() && !open.model.IsLoading());
        read.noItems.reset();
        ASSERT_EQ(Outline(read), open.model.Text()) << "view " << i;
        if (open.model.IsLoading()) {
            continue;
        }
        if (open.fresh.empty()) {
            open.fresh = FreshListHtml(open.view);
        }
        ASSERT_EQ(ListHtml(open.view), open.fresh) << "view " << i;
    }
}

void RandomScript::Play(std::uint32_t seed, std::uint32_t steps)
{
    random_.seed(seed);
    Start();
    OpenOne();
    OpenOne();
    Settle();
    CheckEverything();
    for (std::uint32_t step = 0; step < steps && !HasFatalFailure() && !HasNonfatalFailure();
         ++step) {
        Step();
        CheckEverything();
    }
    if (HasFailure()) {
        std::string last;
        for (std::size_t i = history_.size() > 12 ? history_.size() - 12 : 0; i < history_.size();
             ++i) {
            last += "\n  " + history_[i];
        }
        ADD_FAILURE() << "PANEL_SCRIPT_SEED=" << seed << " after " << history_.size()
                      << " steps, the last of them:" << last;
    }
    views_.clear();
}

std::uint32_t NumberIn(const char* variable, std::uint32_t otherwise)
{
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise
                           : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

TEST_F(RandomScript, LeavesEveryListAsAFreshRenderingAndTheRulesSay)
{
    const std::uint32_t seed = NumberIn("PANEL_SCRIPT_SEED", std::random_device()());
    const std::uint32_t steps = NumberIn("PANEL_SCRIPT_STEPS", 2000);
    std::cout << "PANEL_SCRIPT_SEED=" << seed << " PANEL_SCRIPT_STEPS=" << steps << std::endl;
    RecordProperty("seed", std::to_string(seed));
    Play(seed, steps);
}

// Edits that another thread makes faster than the loop can follow: in between the list may be
// anything, in the end it is fresh again.
class Bursts : public RandomScript {
protected:
    void PlayBursts(std::uint32_t seed, std::uint32_t bursts);
};

void Bursts::PlayBursts(std::uint32_t seed, std::uint32_t bursts)
{
    random_.seed(seed);
    Start();
    host.ForceReadOnly(false);
    OpenOne();
    Settle();
    const ViewPtr view = Active().view;
    Document& document = DocumentOf(view);
    const auto someEdit = [&] {
        const std::uint32_t pages = document.PageCount();
        const std::uint32_t page = Below(pages);
        const std::uint32_t count = AnnotationCount(Active(), page);
        switch (Below(12)) {
        case 0:
            return pages < 8 ? document.InsertPage(page) : document.DeletePage(page);
        case 1:
            return document.MovePage(page, Below(pages));
        case 2:
        case 3:
        case 4:
            return document.AddAnnotation(page, Below(2) == 0 ? "Ink" : "Link", SomeContents());
        case 5:
        case 6:
        case 7:
        case 8:
            return document.ChangeContents(page, Below(count + 1), SomeContents());
        default:
            return document.RemoveAnnotation(page, Below(count + 1));
        }
    };
    for (std::uint32_t burst = 0; burst < bursts && !HasFailure(); ++burst) {
        SCOPED_TRACE(testing::Message() << "PANEL_SCRIPT_SEED=" << seed << ", burst " << burst);
        std::thread([&] {
            for (std::uint32_t i = 1 + Below(8); i > 0; --i) {
                // A place without an annotation cannot be edited; nothing happens then.
                if (auto edit = someEdit(); edit.Succeeded()) {
                    Publish(view, std::move(edit));
                }
            }
        }).join();
        for (std::uint32_t i = Below(6); i > 0; --i) {
            host.State().loop.RunNext();  // the next burst may come before it has followed
        }
        if (Below(3) == 0) {
            continue;
        }
        Settle();
        ExpectFresh(view);
        const std::string outline = OutlineOf(view);
        EXPECT_EQ(std::count(outline.begin(), outline.end(), '*'), Read(view).pages.empty() ? 0 : 1)
            << outline;
        TakeLateErrors();
    }
    Settle();
    ExpectFresh(view);
    TakeLateErrors();
    views_.clear();
}

TEST_F(Bursts, OfEditsEndInAFreshList)
{
    const std::uint32_t seed = NumberIn("PANEL_SCRIPT_SEED", std::random_device()());
    std::cout << "PANEL_SCRIPT_SEED=" << seed << std::endl;
    PlayBursts(seed, NumberIn("PANEL_SCRIPT_STEPS", 2000) / 4);
}

}  // namespace
}  // namespace PanelTests
