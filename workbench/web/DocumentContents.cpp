#include "web/DocumentContents.h"

#include "web/BrowserSession.h"
#include "web/DocumentJson.h"

#include <boost/url/encode.hpp>
#include <boost/url/rfc/unreserved_chars.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <utility>

namespace Workbench {

namespace {

using Documents::Encryption;

// A file name in both forms of RFC 6266: ASCII characters only, and percent-encoded UTF-8.
std::string AttachmentNamed(const std::string& name)
{
    const auto isPlain = boost::urls::unreserved_chars;
    std::string plain = name;
    std::replace_if(
        plain.begin(), plain.end(), [&](unsigned char c) { return !isPlain(c); }, '_');
    return "attachment; filename=\"" + plain + "\"; filename*=UTF-8''" +
           boost::urls::encode(name, isPlain);
}

}  // namespace

void DocumentContents::Give(DocumentNumber number, bool asDownload, PendingAnswerPtr answer)
{
    if (session_.Documents().Find(number) == nullptr) {
        answer->Give({.status = 404});
        return;
    }
    File& file = files_[number];
    if (file.wanted.empty()) {
        file.wantedSince = Clock::now();
    }
    file.wanted.push_back({std::move(answer), asDownload});
}

void DocumentContents::NoteEdit(DocumentNumber number)
{
    files_[number].editedAt = Clock::now();
}

// Edits come in bursts, and each would otherwise wait for the file of the previous one.
void DocumentContents::WriteDue()
{
    constexpr std::chrono::milliseconds kQuiet(200);
    constexpr std::chrono::seconds kLongest(2);
    const auto now = Clock::now();
    for (auto& [number, file] : files_) {
        const bool isDue = now - file.editedAt >= kQuiet || now - file.wantedSince >= kLongest;
        if (!file.wanted.empty() && !file.isBeingWritten && isDue &&
            !session_.Jobs().HasWaiting(number)) {
            Write(session_.Documents().Require(number), file);
        }
    }
}

// A reader who waits for a download gets it, and one who goes on editing sees pages now and then.
bool DocumentContents::GivesWay(const File& file)
{
    constexpr unsigned kMostTimes = 5;
    return file.timesGivenWay < kMostTimes &&
           std::none_of(file.wanted.begin(), file.wanted.end(),
                        [](const Wanted& wanted) { return wanted.asDownload; });
}

void DocumentContents::Write(OpenDocument& document, File& file)
{
    const std::uint64_t revision = document.content->Revision();
    std::optional<Encryption> missing;
    for (Wanted& wanted : std::exchange(file.wanted, {})) {
        // The user has access to the open document; a downloaded file keeps its encryption.
        const Encryption encryption = document.content->Encrypted() && !wanted.asDownload
                                          ? Encryption::kDropped
                                          : Encryption::kKept;
        if (file.bytes == nullptr || file.revision != revision || file.encryption != encryption) {
            missing = encryption;
            file.wanted.push_back(std::move(wanted));
            continue;
        }
        HttpAnswer given{.contentType = "application/pdf", .body = file.bytes};
        if (wanted.asDownload) {
            given.headers.emplace_back("Content-Disposition", AttachmentNamed(document.name));
        }
        wanted.answer->Give(std::move(given));
    }
    if (!missing) {
        return;
    }
    file.isBeingWritten = true;
    const auto awaited = GivesWay(file) ? session_.Jobs().Awaited(document.number) : nullptr;
    const auto goesOn = [awaited] { return awaited == nullptr || !*awaited; };
    session_.RunJob<Documents::BytesResult>(
        document, DocumentJobs::Kind::kRead,
        [content = document.content, encryption = *missing, goesOn] {
            return content->WriteBytes(encryption, goesOn);
        },
        [number = document.number, encryption = *missing, revision,
         goesOn](BrowserSession& session, std::future<Documents::BytesResult> written) {
            Documents::BytesResult result;
            try {
                result = written.get();
            } catch (const std::exception& error) {
                result.error = error.what();
            }
            session.Contents().Take(number, encryption, revision, !goesOn(), std::move(result));
        });
}

void DocumentContents::Take(DocumentNumber number, Encryption encryption, std::uint64_t revision,
                            bool gaveWay, Documents::BytesResult result)
{
    OpenDocument* const document = session_.Documents().Find(number);
    if (document == nullptr) {
        return;
    }
    session_.CheckWarnings(number);
    File& file = files_[number];
    file.isBeingWritten = false;
    if (!result.Succeeded() && gaveWay) {
        ++file.timesGivenWay;
        file.wantedSince = Clock::now();
        return;
    }
    file.timesGivenWay = 0;
    if (!result.Succeeded()) {
        for (const Wanted& wanted : std::exchange(file.wanted, {})) {
            wanted.answer->Give(JsonAnswer(500, {{"error", result.error}}));
        }
        return;
    }
    // After an edit in between, the bytes may be those of either state, so the file is written
    // again.
    file.bytes.reset();
    if (document->content->Revision() == revision) {
        file.bytes = std::make_shared<const std::string>(std::move(result.bytes));
        file.revision = revision;
        file.encryption = encryption;
        Write(*document, file);
    }
}

}  // namespace Workbench
