// The commands of pages: what each does, and why it may be refused.
#include "web/Desk.h"

#include "service-common/UnicodeText.h"
#include "services/AnnotationPlace.h"
#include "web/Author.h"
#include "web/CommandRefused.h"
#include "web/FileCopies.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <exception>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

const char* ReasonOf(Documents::EditFailure failure)
{
    switch (failure) {
    case Documents::EditFailure::kGone:
        return "gone";
    case Documents::EditFailure::kLastPage:
        return "last-page";
    default:
        return "";
    }
}

bool MayOverwrite(const PageCommand& command)
{
    return command.message->OptionalFlag("overwrite").value_or(false);
}

// A path as a user writes it: relative to where the workbench was started, or to the home folder.
fs::path PathFrom(const std::string& text)
{
    if (text.empty() || text.find('\0') != std::string::npos) {
        throw CommandRefused("a path is needed", "path");
    }
    fs::path path = text;
    const char* const home = std::getenv("HOME");
    if (text.starts_with("~/") && home != nullptr) {
        path = fs::path(home) / text.substr(2);
    }
    return fs::absolute(path).lexically_normal();
}

}  // namespace

struct Desk::CommandEntry {
    const char* name;
    void (Desk::*run)(const PageCommand&);
    bool waitsForFileJobs;     // so that the UI thread does not
    bool namesPlaces = false;  // pages and comments, which may be others by the time it is run
};

const Desk::CommandEntry Desk::kCommands[] = {
    {"open", &Desk::Open, false},
    {"close", &Desk::Close, true},
    {"activate", &Desk::Activate, false},
    {"add", &Desk::AddAnnotation, true},
    {"edit", &Desk::EditAnnotation, true, true},
    {"remove", &Desk::RemoveAnnotation, true, true},
    {"insert-page", &Desk::InsertPage, true, true},
    {"delete-page", &Desk::DeletePage, true, true},
    {"move-page", &Desk::MovePage, true, true},
    {"undo", &Desk::Undo, true},
    {"redo", &Desk::Redo, true},
    {"save", &Desk::Save, true},
    {"save-as", &Desk::SaveAs, true},
    {"save-copy", &Desk::SaveCopy, true},
    {"read-only", &Desk::SetReadOnly, true},
    {"locale", &Desk::SetLocale, false},
    {"focus", &Desk::Focus, false, true},
    {"current", &Desk::SendCurrent, true},
    {"annotations", &Desk::SendAnnotations, false},
    {"end", &Desk::End, false},
};

const Desk::CommandEntry* Desk::FindEntry(const PageCommand& command)
{
    const std::string name = command.message->Text("name");
    const auto entry = std::find_if(std::begin(kCommands), std::end(kCommands),
                                    [&](const CommandEntry& known) { return known.name == name; });
    if (entry == std::end(kCommands)) {
        throw CommandRefused("there is no command \"" + name + "\"");
    }
    return entry;
}

void Desk::Run(const PageCommand& command)
{
    try {
        const CommandEntry* const entry = FindEntry(command);
        OpenDocument* const document = entry->waitsForFileJobs ? &DocumentOf(command) : nullptr;
        if (document != nullptr && (document->fileJobs != 0 || !document->waiting.empty())) {
            document->waiting.emplace_back(command);
        } else {
            Execute(*entry, command);
        }
    } catch (const CommandRefused& refused) {
        Refuse(command, refused.what(), refused.Reason());
    } catch (const std::exception& error) {
        Refuse(command, error.what());
    }
}

void Desk::Execute(const CommandEntry& entry, const PageCommand& command)
{
    try {
        if (entry.namesPlaces) {
            CheckRevision(command);
        }
        (this->*entry.run)(command);
    } catch (const CommandRefused& refused) {
        Refuse(command, refused.what(), refused.Reason());
    } catch (const std::exception& error) {
        Refuse(command, error.what());
    }
}

// What a command names by numbers is something else once the document has another revision.
void Desk::CheckRevision(const PageCommand& command) const
{
    const OpenDocument& document = DocumentOf(command);
    const auto revision = command.message->OptionalNumber("revision");
    if (revision && *revision != document.content->Revision()) {
        throw CommandRefused(document.name + " has been changed meanwhile", "changed");
    }
}

void Desk::RunWaiting(OpenDocument& document)
{
    const DocumentNumber number = document.number;
    for (OpenDocument* open = &document;
         open != nullptr && open->fileJobs == 0 && !open->waiting.empty(); open = Find(number)) {
        const auto next = std::move(open->waiting.front());
        open->waiting.pop_front();
        if (const auto* const command = std::get_if<PageCommand>(&next)) {
            Execute(*FindEntry(*command), *command);
        } else if (const auto* const work = std::get_if<DocumentWork>(&next)) {
            (*work)(open);
        } else {
            Act(std::get<PanelInput>(next));
        }
    }
}

OpenDocument& Desk::DocumentOf(const PageCommand& command) const
{
    const std::uint32_t number = command.message->SmallNumber("document");
    OpenDocument* const document = Find(number);
    if (document == nullptr) {
        throw CommandRefused("there is no document " + std::to_string(number), "gone");
    }
    return *document;
}

OpenDocument& Desk::EditableDocumentOf(const PageCommand& command) const
{
    OpenDocument& document = DocumentOf(command);
    if (document.content->ReadOnly()) {
        throw CommandRefused(document.name + " is read-only", "read-only");
    }
    return document;
}

void Desk::Publish(OpenDocument& document, Documents::EditResult edit)
{
    const char* const reason = ReasonOf(edit.failure);
    const std::string error = document.view->View().Document()->Publish(std::move(edit));
    if (!error.empty()) {
        throw CommandRefused(error, reason);
    }
}

// --- Edits ---

void Desk::AddAnnotation(const PageCommand& command)
{
    const PageMessage& message = *command.message;
    OpenDocument& document = EditableDocumentOf(command);
    const std::uint32_t page = message.SmallNumber("page");
    const std::string subtype = message.Text("subtype");
    const std::string contents = message.OptionalText("contents").value_or("");
    const std::optional<_PDRect> rect = message.OptionalRect("rect");
    if (!document.content->AnnotationDeletionPermitted()) {
        throw CommandRefused(document.name + " does not permit changes of its comments",
                             "not-permitted");
    }
    Documents::EditResult edit =
        document.content->AddAnnotation(page, subtype, UnicodeText::ToUtf16(contents), rect,
                                        Documents::Authorship{author_, DateOf(std::time(nullptr))});
    Documents::AnnotationRef added;
    for (const Documents::Change& change : edit.changes) {
        if (const auto* const annotation = std::get_if<Documents::AnnotationChange>(&change)) {
            added = annotation->annotation;
        }
    }
    Publish(document, std::move(edit));
    Reply(command, {},
          {{"index", PositionOnPage(*document.content, page, added.Get()).value_or(0)}});
}

void Desk::EditAnnotation(const PageCommand& command)
{
    const PageMessage& message = *command.message;
    OpenDocument& document = EditableDocumentOf(command);
    const std::uint32_t page = message.SmallNumber("page");
    const std::uint32_t index = message.SmallNumber("index");
    const std::string contents = message.Text("contents");
    CheckChangeable(document, page, index);
    Publish(document, document.content->ChangeContents(page, index, UnicodeText::ToUtf16(contents),
                                                       DateOf(std::time(nullptr))));
    Reply(command);
}

void Desk::RemoveAnnotation(const PageCommand& command)
{
    OpenDocument& document = EditableDocumentOf(command);
    const PageMessage& message = *command.message;
    const CurrentComment::Place place =
        message.OptionalNumber("page")
            ? CurrentComment::Place{message.SmallNumber("page"), message.SmallNumber("index")}
            : CurrentPlace(document, message.OptionalNumber("item"));
    CheckChangeable(document, place.page, place.index);
    Publish(document, document.content->RemoveAnnotation(place.page, place.index));
    Reply(command);
}

void Desk::CheckChangeable(const OpenDocument& document, std::uint32_t page, std::uint32_t index)
{
    if (!document.content->AnnotationDeletionPermitted()) {
        throw CommandRefused(document.name + " does not permit changes of its comments",
                             "not-permitted");
    }
    const Documents::AnnotationRef annotation = document.content->AnnotationAt(page, index);
    const std::string refusal = Documents::Document::DeletionRefusal(annotation.Get());
    if (!refusal.empty()) {
        throw CommandRefused(document.name + ": the comment is not changed, " + refusal, "locked");
    }
}

void Desk::InsertPage(const PageCommand& command)
{
    OpenDocument& document = EditableDocumentOf(command);
    Publish(document, document.content->InsertPage(command.message->SmallNumber("at")));
    Reply(command);
}

void Desk::DeletePage(const PageCommand& command)
{
    OpenDocument& document = EditableDocumentOf(command);
    Publish(document, document.content->DeletePage(command.message->SmallNumber("page")));
    Reply(command);
}

void Desk::MovePage(const PageCommand& command)
{
    OpenDocument& document = EditableDocumentOf(command);
    const std::uint32_t from = command.message->SmallNumber("from");
    const std::uint32_t to = command.message->SmallNumber("to");
    Publish(document, document.content->MovePage(from, to));
    Reply(command);
}

void Desk::Undo(const PageCommand& command)
{
    Travel(command, &Documents::Document::Undo);
}

void Desk::Redo(const PageCommand& command)
{
    Travel(command, &Documents::Document::Redo);
}

// The comment whose contents are others again is shown, too.
void Desk::Travel(const PageCommand& command, Documents::EditResult (Documents::Document::*step)())
{
    OpenDocument& document = EditableDocumentOf(command);
    Documents::EditResult edit = ((*document.content).*step)();
    const std::vector<Documents::Change> changes = edit.changes;
    Publish(document, std::move(edit));
    const auto* const first =
        changes.empty() ? nullptr : std::get_if<Documents::AnnotationChange>(&changes.front());
    if (first != nullptr && first->operation == PDAnnotOperation::kPropertiesChanged) {
        Show(document, first->page, first->annotation);
    }
    Reply(command);
}

// --- Files ---

void Desk::Open(const PageCommand& command)
{
    const fs::path path = PathFrom(command.message->Text("path"));
    if (OpenDocument* const open = FindOpenFile(path)) {
        host_.Collection().Activate(open->view);
        Reply(command, {}, {{"document", open->number}});
        return;
    }
    const std::string name = path.filename().string();
    const std::string password = command.message->OptionalText("password").value_or("");
    BroadcastProgress(name, "begun");
    OnWorker<ReadResult>(
        [path, password, listAll = listAll_] { return ReadFile(path, password, listAll); },
        [command, path, name](Desk& desk, ReadResult read) {
            desk.BroadcastProgress(name, read.content == nullptr ? "failed" : "done");
            if (read.content == nullptr) {
                desk.Refuse(command, read.error, read.reason);
                return;
            }
            // Somebody else may have asked for the same file meanwhile.
            OpenDocument* const open = desk.FindOpenFile(path);
            const DocumentNumber number =
                open != nullptr ? open->number
                                : desk.Add(name, path, std::move(read.content), read.stamp);
            desk.Reply(command, {}, {{"document", number}});
        });
}

void Desk::Close(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    const std::string unsaved = command.message->OptionalText("unsaved").value_or("ask");
    if (unsaved != "ask" && unsaved != "save" && unsaved != "discard") {
        throw MessageError("\"unsaved\" must be \"ask\", \"save\" or \"discard\"");
    }
    if (!document.content->Modified() || unsaved == "discard") {
        CloseDocument(document);
        Reply(command);
        return;
    }
    if (unsaved == "ask") {
        throw CommandRefused(document.name + " has changes that are not saved", "unsaved");
    }
    if (!document.path) {
        throw CommandRefused(document.name + " has no place yet where it could be saved", "path");
    }
    SaveTo(document, *document.path, MayOverwrite(command),
           [command, number = document.number](Desk& desk, const WriteOutcome& outcome) {
               if (OpenDocument* const saved = desk.Find(number);
                   outcome.error.empty() && saved != nullptr) {
                   desk.CloseDocument(*saved);
               }
               desk.Answer(command, outcome);
           });
}

void Desk::Save(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    if (!document.path) {
        throw CommandRefused(document.name + " has no place yet where it could be saved", "path");
    }
    SaveTo(document, *document.path, MayOverwrite(command),
           [command](Desk& desk, const WriteOutcome& outcome) { desk.Answer(command, outcome); });
}

void Desk::SaveAs(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    const fs::path path = PathFrom(command.message->Text("path"));
    if (const OpenDocument* const other = FindOpenFile(path);
        other != nullptr && other != &document) {
        throw CommandRefused(path.string() + " is open as another document");
    }
    SaveTo(document, path, MayOverwrite(command),
           [command, path, number = document.number](Desk& desk, const WriteOutcome& outcome) {
               if (OpenDocument* const saved = desk.Find(number);
                   outcome.error.empty() && saved != nullptr) {
                   saved->path = path;
                   saved->name = path.filename().string();
               }
               desk.Answer(command, outcome);
           });
}

void Desk::SaveCopy(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    const fs::path path = PathFrom(command.message->Text("path"));
    if (FindOpenFile(path) != nullptr) {
        throw CommandRefused(path.string() + " is open, a copy needs a place of its own");
    }
    const Replaceable replaceable =
        MayOverwrite(command) ? Replaceable::kAnything : Replaceable::kNothing;
    ++document.fileJobs;
    document.saving = true;
    OnWorker<WriteOutcome>(
        [content = document.content, path, replaceable] {
            return WriteGuarded(path, replaceable, {}, [&] { return WriteCopy(*content, path); });
        },
        [command, number = document.number](Desk& desk, const WriteOutcome& outcome) {
            if (OpenDocument* const copied = desk.Find(number)) {
                copied->saving = false;
            }
            desk.Answer(command, outcome);
            desk.EndFileJob(number);
        });
}

// --- Views ---

void Desk::Activate(const PageCommand& command)
{
    host_.Collection().Activate(DocumentOf(command).view);
    Reply(command);
}

void Desk::SetReadOnly(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    const bool on = command.message->Flag("on");
    ReopenView(document, on);
    if (!on && document.content->ReadOnly()) {
        throw CommandRefused(document.name + " itself does not permit changes", "read-only");
    }
    Reply(command);
}

// Not beyond what the document says: its file may be write-protected or not permit changes.
void Desk::ReopenView(OpenDocument& document, bool readOnly)
{
    const Host::ViewPtr former = document.view;
    const Host::ViewPtr active = host_.Collection().ActiveView();
    const auto focus = former->View().FocusedAnnotation();
    host_.ForceReadOnly(readOnly ? std::optional(true) : std::nullopt);
    document.current.Keep();
    OpenView(document);
    host_.ForceReadOnly(std::nullopt);
    document.shownBefore += former->View().TargetCount();
    host_.CloseView(former);
    if (active != former) {
        host_.Collection().Activate(active);
    }
    document.view->View().SetFocus(focus.page, focus.annotation);
}

void Desk::SetLocale(const PageCommand& command)
{
    host_.SwitchLanguage(command.message->Text("locale"));
    Reply(command);
}

void Desk::Focus(const PageCommand& command)
{
    OpenDocument& document = DocumentOf(command);
    if (!command.message->OptionalNumber("page")) {
        document.view->View().SetFocus(kPDNoPage, {});
        Reply(command);
        return;
    }
    const std::uint32_t page = command.message->SmallNumber("page");
    const std::uint32_t index = command.message->SmallNumber("index");
    Documents::AnnotationRef annotation = document.content->AnnotationAt(page, index);
    if (!annotation) {
        throw CommandRefused("there is no annotation " + std::to_string(index) + " on page " +
                                 std::to_string(page),
                             "gone");
    }
    Show(document, page, annotation);
    Reply(command);
}

void Desk::Show(OpenDocument& document, std::uint32_t page,
                const Documents::AnnotationRef& annotation)
{
    document.current.Show({page, annotation}, document.view->View(), *host_.Panel().Page());
}

void Desk::SendCurrent(const PageCommand& command)
{
    const OpenDocument& document = DocumentOf(command);
    const CurrentComment::Place place =
        CurrentPlace(document, command.message->OptionalNumber("item"));
    Reply(
        command, {},
        {{"page", place.page},
         {"revision", document.content->Revision()},
         {"annotation", DescribeAnnotation(document.content->AnnotationAt(place.page, place.index),
                                           place.index)}});
}

void Desk::SendAnnotations(const PageCommand& command)
{
    struct Result {
        std::string error;
        Json annotations;
    };
    const OpenDocument& document = DocumentOf(command);
    const std::uint32_t page = command.message->SmallNumber("page");
    if (page >= document.content->PageCount()) {
        throw CommandRefused(document.name + " has no page " + std::to_string(page), "gone");
    }
    OnWorker<Result>(
        [content = document.content, number = document.number, page] {
            return Result{{}, DescribeAnnotations(number, *content, page)};
        },
        [command](Desk& desk, const Result& result) {
            desk.Reply(command, result.error, result.annotations);
        });
}

}  // namespace Workbench
