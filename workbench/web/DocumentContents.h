// PDF files of the open documents in their present state, for browser clients that show pages or
// download them. They are written on worker threads, once edits have paused for a moment; one
// that is only shown gives way to what waits for the document, some times in a row.
// [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "web/HttpServer.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Workbench {

class BrowserSession;

class DocumentContents {
public:
    // The session outlives this.
    explicit DocumentContents(BrowserSession& session) : session_(session) {}

    // Answers with the file: unencrypted for display, encrypted like the original for a download.
    // 404 for an unknown document number.
    void Give(DocumentNumber number, bool asDownload, PendingAnswerPtr answer);

    void NoteEdit(DocumentNumber number);
    void Forget(DocumentNumber number) { files_.erase(number); }

    // Starts the writes that are requested and due. To be called often.
    void WriteDue();

private:
    using Clock = std::chrono::steady_clock;

    struct Wanted {
        PendingAnswerPtr answer;
        bool asDownload = false;
    };
    struct File {
        std::shared_ptr<const std::string> bytes;  // null: none yet, or not of a known revision
        std::uint64_t revision = 0;                // of the bytes, and so is the encryption
        Documents::Encryption encryption = Documents::Encryption::kKept;
        bool isBeingWritten = false;
        unsigned timesGivenWay = 0;  // since it was written last
        std::vector<Wanted> wanted;
        Clock::time_point wantedSince;
        Clock::time_point editedAt;
    };

    static bool GivesWay(const File& file);
    void Write(OpenDocument& document, File& file);
    void Take(DocumentNumber number, Documents::Encryption encryption, std::uint64_t revision,
              bool gaveWay, Documents::BytesResult result);

    BrowserSession& session_;
    std::map<DocumentNumber, File> files_;
};

}  // namespace Workbench
