// The steps of a script: a table, and one function for each row.
#include "driver/Script.h"

#include "driver/PanelReport.h"
#include "service-common/UnicodeText.h"
#include "services/KeyNames.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <utility>

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;
using Words = std::vector<std::string>;

// What a step works with. Of the words those after the step's name, as many as its row says.
struct StepCall {
    Session& session;
    std::ostream& output;
    const Words words;

    Host& TheHost() const { return session.TheHost(); }
};

std::string Quoted(const std::string& text)
{
    return '"' + text + '"';
}

// --- What words stand for ---

std::uint32_t Number(const std::string& word)
{
    std::uint32_t number = 0;
    const char* const end = word.data() + word.size();
    const auto [rest, error] = std::from_chars(word.data(), end, number);
    if (error != std::errc() || rest != end) {
        throw StepError(Quoted(word) + " is no number");
    }
    return number;
}

// True for the first of two words, false for the other.
bool IsFirstOf(const std::string& word, const char* first, const char* second)
{
    if (word != first && word != second) {
        throw StepError(Quoted(word) + " is neither " + first + " nor " + second);
    }
    return word == first;
}

bool IsOn(const std::string& word)
{
    return IsFirstOf(word, "on", "off");
}

std::uint32_t Key(const std::string& name)
{
    const auto key = KeyNamed(name);
    if (!key) {
        throw StepError("there is no key " + Quoted(name));
    }
    return *key;
}

ElementHandle VisibleContainer(const StepCall& call)
{
    const ElementHandle container = FindVisibleContainer(*call.TheHost().Panel().Page());
    if (container == kNoElement) {
        throw StepError("the panel shows no list");
    }
    return container;
}

// A match in the visible container, counted from 1.
ElementHandle Match(const StepCall& call, const std::string& selector, std::uint32_t number)
{
    if (const std::string problem = HtmlEngine::Document::DescribeSelectorProblem(selector);
        !problem.empty()) {
        throw StepError("the selector " + Quoted(selector) + " is malformed: " + problem);
    }
    std::uint32_t count = 0;
    ElementHandle match = kNoElement;
    call.TheHost().Panel().Page()->SelectAll(VisibleContainer(call), selector,
                                             [&](ElementHandle element) {
                                                 match = ++count == number ? element : match;
                                                 return match == kNoElement;
                                             });
    if (match == kNoElement) {
        throw StepError("there is no match " + std::to_string(number) + " of " + Quoted(selector) +
                        ", only " + std::to_string(count));
    }
    return match;
}

Host::ViewPtr OpenView(const StepCall& call, const std::string& word)
{
    const Host::ViewPtr view = call.session.View(Number(word));
    if (!view) {
        throw StepError("no open view has the number " + word);
    }
    return view;
}

BLDocumentViewObject& ActiveView(const StepCall& call)
{
    const Host::ViewPtr& view = call.TheHost().Collection().ActiveView();
    if (!view) {
        throw StepError("no view is open");
    }
    return view->View();
}

Documents::Document& ActiveContent(const StepCall& call)
{
    return ActiveView(call).Document()->Content();
}

void PublishEdit(const StepCall& call, Documents::EditResult edit)
{
    const std::string error = ActiveView(call).Document()->Publish(std::move(edit));
    if (!error.empty()) {
        throw StepError(error);
    }
}

// --- The user of the panel ---

void Click(const StepCall& call)
{
    const std::uint32_t number = call.words.size() == 1 ? 1 : Number(call.words[1]);
    call.TheHost().Panel().Click(Match(call, call.words[0], number));
}

// What has the keyboard focus as long as nobody says otherwise: the current item, or the list when
// no item is current, or it is out of sight on a collapsed page.
ElementHandle KeyTarget(const StepCall& call)
{
    const HtmlPanel& panel = call.TheHost().Panel();
    ElementHandle current = kNoElement;
    panel.Page()->SelectFirst(VisibleContainer(call), "li[annot-name]:current", current);
    return current != kNoElement && panel.IsShown(current)
               ? current
               : Match(call, "div.results-container", 1);
}

void PressKey(const StepCall& call)
{
    const std::uint32_t key = Key(call.words[0]);
    call.TheHost().Panel().PressKey(
        call.words.size() == 1 ? KeyTarget(call) : Match(call, call.words[1], 1), key);
}

// --- The view and its document ---

void Focus(const StepCall& call)
{
    const std::uint32_t page = Number(call.words[0]);
    Documents::AnnotationRef annotation =
        ActiveContent(call).AnnotationAt(page, Number(call.words[1]));
    if (!annotation) {
        throw StepError("there is no annotation " + call.words[1] + " on page " + call.words[0]);
    }
    ActiveView(call).SetFocus(page, std::move(annotation));
}

void FocusNone(const StepCall& call)
{
    if (call.words[0] != "none") {
        throw StepError("focus takes a page and an index, or none");
    }
    ActiveView(call).SetFocus(kPDNoPage, {});
}

void Add(const StepCall& call)
{
    const std::string contents = call.words.size() == 3 ? call.words[2] : std::string();
    PublishEdit(call, ActiveContent(call).AddAnnotation(Number(call.words[0]), call.words[1],
                                                        UnicodeText::ToUtf16(contents)));
}

void Edit(const StepCall& call)
{
    PublishEdit(call,
                ActiveContent(call).ChangeContents(Number(call.words[0]), Number(call.words[1]),
                                                   UnicodeText::ToUtf16(call.words[2])));
}

void Remove(const StepCall& call)
{
    PublishEdit(call,
                ActiveContent(call).RemoveAnnotation(Number(call.words[0]), Number(call.words[1])));
}

void InsertPage(const StepCall& call)
{
    PublishEdit(call, ActiveContent(call).InsertPage(Number(call.words[0])));
}

void DeletePage(const StepCall& call)
{
    PublishEdit(call, ActiveContent(call).DeletePage(Number(call.words[0])));
}

void MovePage(const StepCall& call)
{
    PublishEdit(call, ActiveContent(call).MovePage(Number(call.words[0]), Number(call.words[1])));
}

// --- The host ---

void SwitchLocale(const StepCall& call)
{
    try {
        call.TheHost().SwitchLanguage(call.words[0]);
    } catch (const std::exception& error) {
        throw StepError(error.what());
    }
}

void SetReadOnly(const StepCall& call)
{
    call.TheHost().ForceReadOnly(IsOn(call.words[0]));
}

void PermitDeletion(const StepCall& call)
{
    call.TheHost().ForceDeletionPermitted(IsOn(call.words[0]));
}

void LockInteraction(const StepCall& call)
{
    call.TheHost().State().interactionLocked = IsOn(call.words[0]);
}

void OpenDocument(const StepCall& call)
{
    try {
        call.session.Open(call.session.Read(call.words[0]));
    } catch (const OpenError& error) {
        throw StepError(error.what());
    }
}

void Activate(const StepCall& call)
{
    call.TheHost().Collection().Activate(OpenView(call, call.words[0]));
}

void Close(const StepCall& call)
{
    OpenView(call, call.words[0]);
    call.session.Close(Number(call.words[0]));
}

void FireOn(const StepCall& call)
{
    call.TheHost().State().firesOnForeignThread = IsFirstOf(call.words[0], "foreign", "ui");
}

void Hold(const StepCall& call)
{
    call.TheHost().State().loop.Hold(IsOn(call.words[0]));
}

void Save(const StepCall& call)
{
    const Documents::SaveResult saved =
        ActiveContent(call).Save(std::filesystem::path(call.words[0]));
    if (!saved.Succeeded()) {
        throw StepError(saved.error);
    }
}

// --- What is printed ---

void Dump(const StepCall& call)
{
    call.output << ToLine(call.session.ReportWithViews()) << "\n";
}

void PrintCalls(const StepCall& call)
{
    call.output << ToLine(call.TheHost().State().calls.Take()) << "\n";
}

void Check(const StepCall& call)
{
    call.output << ToLine(call.session.CheckConsistency()) << "\n";
}

// A step as it is written: its name, its words, those in brackets may be left out.
struct Step {
    std::string_view usage;
    void (*run)(const StepCall& call);
};

constexpr Step kSteps[] = {
    {"click SELECTOR [N]", Click},
    {"key NAME [SELECTOR]", PressKey},
    {"focus PAGE INDEX", Focus},
    {"focus none", FocusNone},
    {"add PAGE SUBTYPE [CONTENTS]", Add},
    {"edit PAGE INDEX CONTENTS", Edit},
    {"remove PAGE INDEX", Remove},
    {"insert-page AT", InsertPage},
    {"delete-page N", DeletePage},
    {"move-page FROM TO", MovePage},
    {"locale NAME", SwitchLocale},
    {"readonly on|off", SetReadOnly},
    {"permit-delete on|off", PermitDeletion},
    {"interaction-lock on|off", LockInteraction},
    {"open FILE", OpenDocument},
    {"activate N", Activate},
    {"close N", Close},
    {"fire ui|foreign", FireOn},
    {"hold on|off", Hold},
    {"save FILE", Save},
    {"dump", Dump},
    {"calls", PrintCalls},
    {"check", Check},
};

bool Takes(const Words& usage, std::size_t wordCount)
{
    std::size_t needed = usage.size();
    while (usage[needed - 1].front() == '[') {
        --needed;
    }
    return needed <= wordCount && wordCount <= usage.size();
}

}  // namespace

void RunStep(Session& session, std::ostream& output, const std::vector<std::string>& words)
{
    std::string usages;
    for (const Step& step : kSteps) {
        const Words usage = SplitWords(step.usage);
        if (usage[0] != words[0]) {
            continue;
        }
        if (Takes(usage, words.size())) {
            step.run({session, output, {words.begin() + 1, words.end()}});
            return;
        }
        usages.append(usages.empty() ? "" : ", or ").append(step.usage);
    }
    throw StepError(usages.empty() ? "there is no step " + Quoted(words[0])
                                   : "wrong number of words for " + usages);
}

}  // namespace Workbench
