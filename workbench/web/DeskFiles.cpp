// Files behind the documents of the desk: reading, writing, and handing them to browsers.
#include "web/Desk.h"

#include "documents/QpdfDocument.h"

#include <algorithm>

namespace Workbench {

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

std::shared_ptr<const std::string> SharedText(const Json& json)
{
    return std::make_shared<const std::string>(ToText(json));
}

HttpAnswer JsonAnswer(unsigned status, const Json& json)
{
    return {.status = status, .contentType = "application/json", .body = SharedText(json)};
}

bool IsPlain(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
           c == '_' || c == '.';
}

// A name in both forms that browsers take (RFC 6266): plain letters, and all of it in escapes.
std::string AttachmentNamed(const std::string& name)
{
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string plain;
    std::string escaped;
    for (const char c : name) {
        plain += IsPlain(c) ? c : '_';
        if (IsPlain(c)) {
            escaped += c;
        } else {
            escaped += '%';
            escaped += kDigits[static_cast<unsigned char>(c) >> 4];
            escaped += kDigits[static_cast<unsigned char>(c) & 15];
        }
    }
    return "attachment; filename=\"" + plain + "\"; filename*=UTF-8''" + escaped;
}

// What a browser calls a file, without any folder.
std::string PlainName(const std::string& name)
{
    const std::string last = name.substr(name.find_last_of("/\\") + 1);
    return last.empty() ? "document.pdf" : last;
}

}  // namespace

Desk::ReadResult Desk::ResultOf(Documents::OpenResult&& opened)
{
    const bool needsPassword = opened.failure == Documents::OpenFailure::kPassword;
    const bool isDamaged = opened.failure == Documents::OpenFailure::kDamaged;
    return {std::move(opened.message),
            needsPassword ? "password"
            : isDamaged   ? "damaged"
                          : "",
            std::move(opened.document),
            {}};
}

OpenDocument* Desk::FindOpenFile(const fs::path& path) const
{
    for (const auto& document : documents_) {
        std::error_code error;
        if (document->path &&
            (*document->path == path || fs::equivalent(*document->path, path, error))) {
            return document.get();
        }
    }
    return nullptr;
}

void Desk::CloseDocument(OpenDocument& document)
{
    const auto found = std::find_if(documents_.begin(), documents_.end(),
                                    [&](const auto& entry) { return entry.get() == &document; });
    const std::unique_ptr<OpenDocument> closed = std::move(*found);
    documents_.erase(found);
    host_.CloseView(closed->view);
    closed->view.Reset();
    for (const auto& waiting : closed->waiting) {
        if (const auto* const command = std::get_if<PageCommand>(&waiting)) {
            Refuse(*command, closed->name + " was closed", "gone");
        } else if (const auto* const work = std::get_if<DocumentWork>(&waiting)) {
            (*work)(nullptr);
        } else {
            RefuseInput(std::get<PanelInput>(waiting), closed->name + " was closed", "gone");
        }
    }
    // A big document takes long to be released.
    workers_.Post([content = std::move(closed->content)] {});
}

void Desk::SaveTo(OpenDocument& document, const fs::path& path, bool overwrite, Saved then)
{
    const Replaceable replaceable = overwrite                         ? Replaceable::kAnything
                                    : FindOpenFile(path) == &document ? Replaceable::kOwnFile
                                                                      : Replaceable::kNothing;
    ++document.fileJobs;
    document.saving = true;
    OnWorker<WriteOutcome>(
        [content = document.content, path, replaceable, known = document.stamp] {
            return WriteGuarded(path, replaceable, known, [&] { return content->Save(path); });
        },
        [number = document.number, then = std::move(then)](Desk& desk,
                                                           const WriteOutcome& outcome) {
            if (OpenDocument* const saved = desk.Find(number)) {
                saved->saving = false;
                saved->stamp = outcome.error.empty() ? outcome.stamp : saved->stamp;
            }
            then(desk, outcome);
            desk.EndFileJob(number);
        });
}

void Desk::EndFileJob(DocumentNumber number)
{
    if (OpenDocument* const document = Find(number)) {
        --document->fileJobs;
        RunWaiting(*document);
    }
}

void Desk::GiveContent(DocumentNumber number, bool asDownload, PendingAnswerPtr answer)
{
    OpenDocument* const document = Find(number);
    if (document == nullptr) {
        answer->Give({.status = 404});
        return;
    }
    if (document->wantBytes.empty()) {
        document->wantBytesSince = std::chrono::steady_clock::now();
    }
    document->wantBytes.push_back({std::move(answer), asDownload});
}

// Edits come in bursts, and each would have to wait for the file of the one before.
void Desk::GiveBytesWhenQuiet()
{
    constexpr std::chrono::milliseconds kQuiet(200);
    constexpr std::chrono::seconds kLongest(2);
    const auto now = std::chrono::steady_clock::now();
    for (const auto& document : documents_) {
        if (const std::uint64_t revision = document->content->Revision();
            revision != document->seenRevision) {
            document->seenRevision = revision;
            document->changedAt = now;
        }
        const bool isDue =
            now - document->changedAt >= kQuiet || now - document->wantBytesSince >= kLongest;
        if (!document->wantBytes.empty() && !document->writesBytes && isDue) {
            WriteBytes(*document);
        }
    }
}

void Desk::WriteBytes(OpenDocument& document)
{
    using Documents::Encryption;
    const std::uint64_t revision = document.content->Revision();
    std::optional<Encryption> missing;
    for (auto& wanted : std::exchange(document.wantBytes, {})) {
        // Whoever looks at the document here has been admitted to it; what leaves keeps its lock.
        const Encryption encryption = document.content->Encrypted() && !wanted.asDownload
                                          ? Encryption::kDropped
                                          : Encryption::kKept;
        if (document.bytes == nullptr || document.bytesRevision != revision ||
            document.bytesEncryption != encryption) {
            missing = encryption;
            document.wantBytes.push_back(std::move(wanted));
            continue;
        }
        HttpAnswer given{.contentType = "application/pdf", .body = document.bytes};
        if (wanted.asDownload) {
            given.headers.emplace_back("Content-Disposition", AttachmentNamed(document.name));
        }
        wanted.answer->Give(std::move(given));
    }
    if (!missing) {
        return;
    }
    ++document.fileJobs;
    document.writesBytes = true;
    OnWorker<Documents::BytesResult>(
        [content = document.content, encryption = *missing] {
            return content->WriteBytes(encryption);
        },
        [number = document.number, encryption = *missing, revision](Desk& desk,
                                                                    Documents::BytesResult result) {
            desk.TakeBytes(number, encryption, revision, std::move(result));
        });
}

void Desk::TakeBytes(DocumentNumber number, Documents::Encryption encryption,
                     std::uint64_t revision, Documents::BytesResult result)
{
    OpenDocument* const document = Find(number);
    if (document == nullptr) {
        return;
    }
    document->writesBytes = false;
    if (!result.error.empty()) {
        for (const auto& wanted : std::exchange(document->wantBytes, {})) {
            wanted.answer->Give(JsonAnswer(500, {{"error", result.error}}));
        }
    } else {
        // An edit may have come in between: the bytes are of one of both states then, and it is
        // tried again.
        document->bytes.reset();
        if (document->content->Revision() == revision) {
            document->bytes = std::make_shared<const std::string>(std::move(result.bytes));
            document->bytesRevision = revision;
            document->bytesEncryption = encryption;
            WriteBytes(*document);
        }
    }
    EndFileJob(number);
}

Desk::ReadResult Desk::ReadFile(const fs::path& path, const std::string& password, bool listAll)
{
    const std::optional<FileStamp> stamp = StampOf(path);
    ReadResult read = ResultOf(Documents::QpdfDocument::Open(path, {password, listAll}));
    read.stamp = stamp;
    return read;
}

void Desk::OpenUpload(const std::string& name, const std::string& password, std::string bytes,
                      PendingAnswerPtr answer)
{
    const std::string plain = PlainName(name);
    BroadcastProgress(plain, "begun");
    const auto held = std::make_shared<std::string>(std::move(bytes));
    OnWorker<ReadResult>(
        [held, plain, password, listAll = listAll_] {
            return ReadBytes(std::move(*held), plain, password, listAll);
        },
        [plain, answer = std::move(answer)](Desk& desk, ReadResult read) {
            desk.BroadcastProgress(plain, read.content == nullptr ? "failed" : "done");
            if (read.content == nullptr) {
                answer->Give(JsonAnswer(422, {{"error", read.error}, {"reason", read.reason}}));
                return;
            }
            const DocumentNumber number = desk.Add(plain, std::nullopt, std::move(read.content));
            desk.Update();
            answer->Give(JsonAnswer(200, {{"document", number}}));
        });
}

Desk::ReadResult Desk::ReadBytes(std::string bytes, const std::string& name,
                                 const std::string& password, bool listAll)
{
    return ResultOf(
        Documents::QpdfDocument::OpenBytes(std::move(bytes), name, {password, listAll}));
}

}  // namespace Workbench
