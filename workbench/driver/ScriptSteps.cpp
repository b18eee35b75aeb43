// The steps of a script: a table, and one function for each row.
#include "driver/Script.h"

#include "actions/Edits.h"
#include "driver/PanelReport.h"
#include "services/KeyNames.h"

#include <nlohmann/json.hpp>

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
    const ElementHandle container = FindVisibleContainer(*call.TheHost().Panel().Document());
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
    call.TheHost().Panel().Document()->SelectAll(VisibleContainer(call), selector,
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

OpenDocument& ActiveDocument(const StepCall& call)
{
    OpenDocument* const document = call.session.Documents().FindActive();
    if (document == nullptr) {
        throw StepError("no view is open");
    }
    return *document;
}

CommentPosition Position(const StepCall& call)
{
    return {Number(call.words[0]), Number(call.words[1])};
}

// --- The user of the panel ---

void Click(const StepCall& call)
{
    const std::uint32_t number = call.words.size() == 1 ? 1 : Number(call.words[1]);
    call.TheHost().Panel().Click(Match(call, call.words[0], number));
}

void PressKey(const StepCall& call)
{
    const std::uint32_t key = Key(call.words[0]);
    HtmlPanel& panel = call.TheHost().Panel();
    panel.PressKey(call.words.size() == 1 ? FindKeyTarget(panel, VisibleContainer(call))
                                          : Match(call, call.words[1], 1),
                   key);
}

// --- The view and its document ---

void Focus(const StepCall& call)
{
    const OpenDocument& document = ActiveDocument(call);
    const CommentPosition position = Position(call);
    document.view->View().SetFocus(position.page, CommentAt(document, position));
}

void FocusNone(const StepCall& call)
{
    if (call.words[0] != "none") {
        throw StepError("focus takes a page and an index, or none");
    }
    ActiveDocument(call).view->View().SetFocus(kPDNoPage, {});
}

void Add(const StepCall& call)
{
    AddComment(ActiveDocument(call), {Number(call.words[0]), call.words[1],
                                      call.words.size() == 3 ? call.words[2] : std::string()});
}

void Edit(const StepCall& call)
{
    EditComment(ActiveDocument(call), Position(call), call.words[2]);
}

void Remove(const StepCall& call)
{
    RemoveComment(ActiveDocument(call), Position(call));
}

void InsertPageAt(const StepCall& call)
{
    InsertPage(ActiveDocument(call), Number(call.words[0]));
}

void DeletePageAt(const StepCall& call)
{
    DeletePage(ActiveDocument(call), Number(call.words[0]));
}

void MovePageTo(const StepCall& call)
{
    MovePage(ActiveDocument(call), Number(call.words[0]), Number(call.words[1]));
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

void Open(const StepCall& call)
{
    call.session.Documents().Open(call.session.Read(call.words[0]));
}

void Activate(const StepCall& call)
{
    OpenDocuments& documents = call.session.Documents();
    documents.Activate(documents.Require(Number(call.words[0])));
}

void Close(const StepCall& call)
{
    OpenDocuments& documents = call.session.Documents();
    documents.Close(documents.Require(Number(call.words[0])));
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
    const std::filesystem::path path = call.words[0];
    Documents::Document& content = *ActiveDocument(call).content;
    WriteDocument(path, Replaceable::kAnything, {}, [&] { return content.Save(path); });
}

// --- What is printed ---

void Dump(const StepCall& call)
{
    call.output << call.session.Report(true);
}

void PrintCalls(const StepCall& call)
{
    call.output << ToLine(ToJson(call.TheHost().State().calls.Take())) << "\n";
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
    {"insert-page AT", InsertPageAt},
    {"delete-page N", DeletePageAt},
    {"move-page FROM TO", MovePageTo},
    {"locale NAME", SwitchLocale},
    {"readonly on|off", SetReadOnly},
    {"permit-delete on|off", PermitDeletion},
    {"interaction-lock on|off", LockInteraction},
    {"open FILE", Open},
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
