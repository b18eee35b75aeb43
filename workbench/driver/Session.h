// One run of the workbench: a host with its panel, and the documents that the user opened in it.
// [ui-thread]
#pragma once

#include "actions/OpenDocuments.h"
#include "driver/PanelReader.h"
#include "services/Host.h"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace Workbench {

struct SessionOptions {
    HostOptions host;
    bool listAll = false;  // list every annotation, whatever its subtype and flags
    std::string password;  // for files that need one
    std::chrono::seconds waitLimit = std::chrono::seconds(300);
};

class Session {
public:
    // Makes the host. The panel is not started yet. Documents are numbered from `firstNumber`.
    // Throws std::runtime_error.
    explicit Session(SessionOptions options, DocumentNumber firstNumber = 0);

    // Reads a PDF file, whatever it is called; the name is as the user wrote it. Throws
    // ActionRefused.
    DocumentFile ReadFile(const std::string& file) const;

    // Reads what a user calls a document: a file, or "memory:" and what MakeMemoryDocument takes.
    // Throws ActionRefused.
    DocumentFile Read(const std::string& name) const;

    // Starts the panel, opens a view of each document, hands them over, and returns when their
    // lists are there. Every opening activates its view, so the last one is active at the end.
    // Throws std::runtime_error.
    void Start(std::vector<DocumentFile> documents);

    // Runs the loop until the panel is idle. Throws std::runtime_error after the limit.
    void AwaitIdle();

    // What the panel failed in since the last call: posted calls, events and input. One text each.
    std::vector<std::string> TakeFailures();

    // As AwaitIdle; throws std::runtime_error also when a posted call or an event has failed
    // meanwhile.
    void Settle();

    // What is open.
    OpenDocuments& Documents() noexcept { return documents_; }
    const OpenDocuments& Documents() const noexcept { return documents_; }

    // What the panel holds for an open document. Throws std::runtime_error when the panel lacks a
    // container.
    PanelView ReadView(const OpenDocument& document) const;

    // {"views": [...]} of the open views, as for --json; the other with what each view shows and
    // has focused besides.
    nlohmann::ordered_json Report() const;
    nlohmann::ordered_json ReportWithViews() const;

    // {"consistent": true} when the panel has one container for each open view, and every list is
    // what a rendering of its document gives, lists that are still being rendered left out; else
    // the first difference: "consistent", "view" and "file", and a piece of each list, "panel" and
    // "fresh". These are the keys of containers where those are wrong, and "view" is null. Leaves
    // everything as it was. Throws std::runtime_error.
    nlohmann::ordered_json CheckConsistency();

    // Ends the panel. Throws std::runtime_error when service objects were lost.
    void Finish();

    Host& TheHost() noexcept { return host_; }

private:
    void ThrowFailures();

    const SessionOptions options_;
    Host host_;
    OpenDocuments documents_;
};

}  // namespace Workbench
