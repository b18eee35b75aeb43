// What is open in the workbench and who looks at it: the documents with their views, and the pages
// in browsers, which all see the same and may all act. Messages of pages come in, what has changed
// goes out to every page, after each call of the UI thread. What takes long (reading, writing and
// releasing files) happens on other threads. [ui-thread]
#pragma once

#include "documents/Document.h"
#include "services/Host.h"
#include "web/HttpServer.h"
#include "web/OpenDocument.h"
#include "web/PanelStream.h"
#include "web/WorkerThreads.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Documents {
struct OpenResult;
}

namespace Workbench {

// How it stands about the question what becomes of changes that are not saved.
enum class EndQuestion : std::uint8_t {
    kStands,
    kTakenBack,  // or was never asked
    kOver,       // answered, or there is nobody or nothing left to wait for
};

class Desk : public std::enable_shared_from_this<Desk> {
public:
    // Sends a message to a page.
    using Sender = std::function<void(SocketNumber, std::shared_ptr<const std::string>)>;

    // The host's panel has been started. Host and workers outlive the desk.
    Desk(Host& host, WorkerThreads& workers, bool listAll, Sender send);
    ~Desk();
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    // --- Documents ---

    // Opens a view of a document, which becomes the active one. `stamp` is that of its file before
    // it was read.
    DocumentNumber Add(std::string name, std::optional<std::filesystem::path> path,
                       std::shared_ptr<Documents::Document> content,
                       std::optional<FileStamp> stamp = std::nullopt);

    const std::vector<std::unique_ptr<OpenDocument>>& OpenDocuments() const noexcept
    {
        return documents_;
    }

    // The document as it stands, as a file. 404 for a number that none has.
    void GiveContent(DocumentNumber number, bool asDownload, PendingAnswerPtr answer);

    // Opens a file that a browser has sent.
    void OpenUpload(const std::string& name, const std::string& password, std::string bytes,
                    PendingAnswerPtr answer);

    // --- Pages ---

    // A page has come: it is sent everything.
    void Connect(SocketNumber page);
    void Disconnect(SocketNumber page);
    void Receive(SocketNumber page, const std::string& text);
    // For a message that is too long, of which only the beginning has come.
    void RefuseBeginning(SocketNumber page, const std::string& text);

    // Tells the pages what has changed since the last call. To be called after each call of the UI
    // thread.
    void Update();

    // One line for the users.
    void Notify(const std::string& text);

    // --- The end ---

    // Has the pages ask what becomes of changes that are not saved. False when there are none or
    // nobody can be asked.
    bool AskBeforeEnding(std::chrono::milliseconds patience);
    EndQuestion QuestionOfEnding() const;
    // Whether a user has answered that they may be lost.
    bool DiscardsChanges() const noexcept { return ending_ && ending_->discards; }

    // Tells the pages that the workbench ends.
    void SayGoodbye();

private:
    using Json = nlohmann::ordered_json;

    struct Page {
        SocketNumber socket = 0;
        std::uint64_t sequence = 0;  // of the panel message sent last
    };
    // What reading a file has led to.
    struct ReadResult {
        std::string error;
        std::string reason;  // "password", "damaged" or empty
        std::shared_ptr<Documents::Document> content;
        std::optional<FileStamp> stamp{};  // of the file before it was read
    };
    // The question what becomes of unsaved changes.
    struct Ending {
        std::chrono::steady_clock::time_point until;
        bool takesAnswers = true;  // not while one is being followed
        bool isOver = false;
        bool discards = false;
    };
    struct CommandEntry;
    static const CommandEntry kCommands[];

    // --- Sending ---

    void Send(SocketNumber page, const Json& message);
    void Broadcast(const Json& message);
    void SendPanel(Page& page, const std::vector<PanelMessage>& messages);
    void SendPanelChanges();
    std::string DescribeDocuments() const;
    Json DescribeLocales() const;
    void Reply(const PageCommand& command, const std::string& error = {}, Json more = {});
    // A reply with an error. The reason in one word for the page, empty where there is no word.
    void Refuse(const PageCommand& command, const std::string& error,
                const std::string& reason = {});
    void Answer(const PageCommand& command, const WriteOutcome& outcome);
    static Json DescribeNotice(const std::string& text, const std::string& reason);
    void BroadcastProgress(const std::string& name, const char* state);

    // --- Messages of pages ---

    PanelInput ReadInput(SocketNumber socket, const PageMessage& message, bool isKey) const;
    void Take(const PanelInput& input);
    void Act(const PanelInput& input);
    void RefuseInput(const PanelInput& input, const std::string& error, const std::string& reason);
    bool Deletes(const PanelInput& input) const;
    HtmlEngine::ElementHandle TargetOf(const PanelInput& input) const;
    OpenDocument* DocumentAround(HtmlEngine::ElementHandle element) const;
    void CheckInput(const OpenDocument& document, const PanelInput& input) const;
    // Where the current comment stands. Throws CommandRefused when there is none, and when its item
    // is another one than the page means that named `item`.
    CurrentComment::Place CurrentPlace(const OpenDocument& document,
                                       std::optional<std::uint64_t> item) const;
    void Run(const PageCommand& command);
    void Execute(const CommandEntry& entry, const PageCommand& command);
    static const CommandEntry* FindEntry(const PageCommand& command);
    void CheckRevision(const PageCommand& command) const;
    void RunWaiting(OpenDocument& document);

    void Open(const PageCommand& command);
    void Close(const PageCommand& command);
    void Activate(const PageCommand& command);
    void AddAnnotation(const PageCommand& command);
    void EditAnnotation(const PageCommand& command);
    void RemoveAnnotation(const PageCommand& command);
    void InsertPage(const PageCommand& command);
    void DeletePage(const PageCommand& command);
    void MovePage(const PageCommand& command);
    void Undo(const PageCommand& command);
    void Redo(const PageCommand& command);
    void Travel(const PageCommand& command, Documents::EditResult (Documents::Document::*step)());
    void Save(const PageCommand& command);
    void SaveAs(const PageCommand& command);
    void SaveCopy(const PageCommand& command);
    void SetReadOnly(const PageCommand& command);
    void SetLocale(const PageCommand& command);
    void Focus(const PageCommand& command);
    void SendCurrent(const PageCommand& command);
    void SendAnnotations(const PageCommand& command);
    void End(const PageCommand& command);

    // --- The end ---

    std::vector<DocumentNumber> UnsavedDocuments() const;
    Json DescribeEnding() const;
    void TellOfEnding();
    void SaveAllAndEnd(const PageCommand& command);
    void EndWhenSaved(const PageCommand& command, const WriteOutcome& outcome);

    // --- Documents ---

    OpenDocument* Find(DocumentNumber number) const;
    OpenDocument* ActiveDocument() const;
    OpenDocument* FindOpenFile(const std::filesystem::path& path) const;
    // The document that a command names. The second one fails for one that must not be changed.
    OpenDocument& DocumentOf(const PageCommand& command) const;
    OpenDocument& EditableDocumentOf(const PageCommand& command) const;
    void Publish(OpenDocument& document, Documents::EditResult edit);
    // Throws when the document or the annotation does not permit that the annotation is changed.
    static void CheckChangeable(const OpenDocument& document, std::uint32_t page,
                                std::uint32_t index);
    // Gives the focus to a comment, so that the panel makes it current.
    void Show(OpenDocument& document, std::uint32_t page,
              const Documents::AnnotationRef& annotation);
    void OpenView(OpenDocument& document);
    void CloseDocument(OpenDocument& document);
    void ReopenView(OpenDocument& document, bool readOnly);

    // Saves on another thread, unless that would replace what must not be.
    using Saved = std::function<void(Desk&, const WriteOutcome& outcome)>;
    void SaveTo(OpenDocument& document, const std::filesystem::path& path, bool overwrite,
                Saved then);
    void EndFileJob(DocumentNumber number);

    void GiveBytesWhenQuiet();
    void WriteBytes(OpenDocument& document);
    void TakeBytes(DocumentNumber number, Documents::Encryption encryption, std::uint64_t revision,
                   Documents::BytesResult result);

    static ReadResult ResultOf(Documents::OpenResult&& opened);
    static ReadResult ReadFile(const std::filesystem::path& path, const std::string& password,
                               bool listAll);
    static ReadResult ReadBytes(std::string bytes, const std::string& name,
                                const std::string& password, bool listAll);

    // Runs `work` on another thread and `then` with what it gave on this one, unless the desk is
    // gone by then. A Result has a member `error` for what `work` throws.
    template <class Result>
    void OnWorker(std::function<Result()> work, std::function<void(Desk&, Result)> then);

    Host& host_;
    WorkerThreads& workers_;
    const bool listAll_;
    const Sender send_;
    const Json locales_;
    const std::u16string author_;  // of comments that are added
    PanelStream panel_;
    std::vector<std::unique_ptr<OpenDocument>> documents_;  // in the order of opening
    DocumentNumber lastNumber_ = 0;
    std::vector<Page> pages_;
    std::string sentDocuments_;
    std::string sentLocale_;
    std::optional<Ending> ending_;
    std::vector<DocumentNumber> toldUnsaved_;  // what pages were told of the question last
    std::uint64_t scrollTo_ = 0;               // element that is to be scrolled into view; 0: none
};

template <class Result>
void Desk::OnWorker(std::function<Result()> work, std::function<void(Desk&, Result)> then)
{
    workers_.Post([work = std::move(work), then = std::move(then), desk = weak_from_this(),
                   &loop = host_.State().loop] {
        const auto result = std::make_shared<Result>();
        try {
            *result = work();
        } catch (const std::exception& error) {
            result->error = error.what();
        }
        loop.Post([then, desk, result] {
            if (const auto living = desk.lock()) {
                then(*living, std::move(*result));
            }
        });
    });
}

}  // namespace Workbench
