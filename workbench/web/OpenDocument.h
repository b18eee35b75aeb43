// One document that is open in the workbench, as its pages know it. [ui-thread]
#pragma once

#include "documents/Document.h"
#include "services/Host.h"
#include "web/CurrentComment.h"
#include "web/FileCopies.h"
#include "web/HttpServer.h"
#include "web/PageMessage.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Workbench {

using DocumentNumber = std::uint32_t;

// A command of a page, kept until it is answered.
struct PageCommand {
    SocketNumber socket = 0;
    std::uint64_t id = 0;
    std::shared_ptr<const PageMessage> message;
};

// A click or a key for the panel, kept until it may act.
struct PanelInput {
    SocketNumber socket = 0;
    std::optional<std::uint64_t> id;    // of the reply; nothing: none is wanted
    std::optional<std::uint64_t> item;  // the current item as the page knows it; see Desk::Current
    HtmlEngine::ElementHandle container = HtmlEngine::kNoElement;  // the one that was shown
    std::optional<std::uint64_t> element;  // as pages know it; nothing: what is current then
    std::optional<std::uint32_t> key;      // nothing: a click
    std::uint32_t modifiers = 0;
};

struct OpenDocument;

// Called with the document when its turn has come, with null when it was closed before.
using DocumentWork = std::function<void(OpenDocument*)>;

struct OpenDocument {
    DocumentNumber number = 0;
    std::string name;
    std::optional<std::filesystem::path> path;  // absolute; nothing: it came from a browser
    std::optional<FileStamp> stamp;  // of the file there when it was read or written last
    std::shared_ptr<Documents::Document> content;
    Host::ViewPtr view;
    CurrentComment current;
    std::uint64_t shownBefore = 0;  // go-to requests to views of it that are closed

    // Jobs on other threads that keep the document's lock for long. What may edit waits until they
    // are done, so that the UI thread does not, and so does what comes behind it.
    std::uint32_t fileJobs = 0;
    bool saving = false;
    std::deque<std::variant<PageCommand, PanelInput, DocumentWork>> waiting;

    // The file as it stood at a revision, and who waits for that of the present one.
    struct WantedBytes {
        PendingAnswerPtr answer;
        bool asDownload = false;
    };
    std::shared_ptr<const std::string> bytes;
    std::uint64_t bytesRevision = 0;
    Documents::Encryption bytesEncryption = Documents::Encryption::kKept;
    bool writesBytes = false;
    std::vector<WantedBytes> wantBytes;
    std::chrono::steady_clock::time_point wantBytesSince;
    std::uint64_t seenRevision = 0;
    std::chrono::steady_clock::time_point changedAt;  // when it got that revision
};

// Warnings about a file for the pages: without the file's name and folder in front, none long, and
// not many of them.
std::vector<std::string> ShortWarnings(const std::vector<std::string>& warnings,
                                       const std::string& name);

// DOCUMENT of the protocol.
nlohmann::ordered_json DescribeDocument(const OpenDocument& document,
                                        const HtmlEngine::Document& page);

// ANNOTATION of the protocol; null where there is none. [any-thread]
nlohmann::ordered_json DescribeAnnotation(const Documents::AnnotationRef& annotation,
                                          std::size_t index);

// What the command "annotations" answers: those of one page. [any-thread]
nlohmann::ordered_json DescribeAnnotations(DocumentNumber number, Documents::Document& document,
                                           std::uint32_t page);

// JSON as text; what is no UTF-8 (names of files) comes with replacement characters.
std::string ToText(const nlohmann::ordered_json& json);

}  // namespace Workbench
