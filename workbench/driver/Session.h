// One run of the workbench: a host with its panel, and the open documents. [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "driver/PanelReader.h"
#include "driver/TextBlocks.h"
#include "services/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace Workbench {

struct SessionOptions {
    HostOptions host;
    bool listAll = false;     // list every annotation, whatever its subtype and flags
    std::string password;     // for files that need one
    bool forListing = false;  // files are listed and nothing else
    std::chrono::seconds waitLimit = std::chrono::seconds(300);
};

class Session {
public:
    // Creates the host without starting the panel. Documents are numbered from `firstNumber`.
    // Throws std::runtime_error.
    explicit Session(SessionOptions options, DocumentNumber firstNumber = 0);

    // Reads a PDF file, whatever its name; the document keeps the name as the user wrote it. Throws
    // ActionRefused.
    DocumentFile ReadFile(const std::string& file) const;

    // Reads a document by its name in a script: a file, or "memory:" and a description for
    // MakeMemoryDocument. Throws ActionRefused.
    DocumentFile Read(const std::string& name) const;

    // Starts the panel, opens a view of each document, passes the collection to the panel, and
    // waits until the lists are complete. Opening activates a view, so the last one is active at
    // the end. Throws std::runtime_error.
    void Start(std::vector<DocumentFile> documents);

    // Runs the loop until the panel is idle. Throws std::runtime_error at the time limit.
    void AwaitIdle();

    // Failures of the panel since the last call, in posted calls, events and input; one text each.
    std::vector<std::string> TakeFailures();

    // As AwaitIdle; throws std::runtime_error also when a posted call or an event has failed.
    void Settle();

    // The open documents.
    OpenDocuments& Documents() noexcept { return documents_; }
    const OpenDocuments& Documents() const noexcept { return documents_; }

    // Reads the panel's content for an open document. Throws std::runtime_error when the panel has
    // no container for it.
    void ReadView(const OpenDocument& document, PanelSink& sink) const;
    PanelView ReadView(const OpenDocument& document) const;

    // {"views": [...]} of the open views in a line, as for --json; `withViews` adds each view's
    // last go-to request and focus.
    TextBlocks Report(bool withViews) const;

    // {"consistent": true} when the panel has one container for each open view and every list
    // equals a fresh rendering of its document, lists that are being rendered excluded; else the
    // first difference: "consistent", "view" and "file", and excerpts of both lists, "panel" and
    // "fresh". When the containers differ, these hold their keys and "view" is null. Preserves the
    // state as CompareWithFreshList does. Throws std::runtime_error.
    nlohmann::ordered_json CheckConsistency();

    // Shuts down the panel. Throws std::runtime_error when service objects were leaked.
    void Finish();

    Host& TheHost() noexcept { return host_; }

private:
    void ThrowFailures();

    const SessionOptions options_;
    Host host_;
    OpenDocuments documents_;
};

}  // namespace Workbench
