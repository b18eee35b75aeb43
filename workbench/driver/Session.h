// One run of the workbench: a host with its panel, and the files that the user opened in it, in
// the order of opening. [ui-thread]
#pragma once

#include "driver/PanelReader.h"
#include "services/Host.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Workbench {

// A document that cannot be opened. The text names it, in one line.
class OpenError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct SessionOptions {
    HostOptions host;
    bool listAll = false;  // list every annotation, whatever its subtype and flags
    std::string password;  // for files that need one
    std::chrono::seconds waitLimit = std::chrono::seconds(300);
};

// A document that the user named.
struct NamedDocument {
    std::string name;  // as the user wrote it
    std::shared_ptr<Documents::Document> content;
};

class Session {
public:
    // Makes the host. The panel is not started yet. Throws std::runtime_error.
    explicit Session(SessionOptions options);

    // Reads a PDF file, without opening a view of it. Throws OpenError.
    NamedDocument ReadFile(const std::string& file) const;

    // Reads what a user calls a document: a file, or "memory:" and what MakeMemoryDocument takes.
    // Throws OpenError.
    NamedDocument Read(const std::string& name) const;

    // Makes a document in memory: "COMMENTS:PAGES" or "COMMENTS:PAGES:SEED", filled with the
    // population that benchmarks use. Throws OpenError.
    NamedDocument MakeMemoryDocument(const std::string& description) const;

    // Starts the panel, opens a view of each document, hands them over, and returns when their
    // lists are there. Every opening activates its view, so the last one is active at the end.
    // Throws std::runtime_error.
    void Start(const std::vector<NamedDocument>& documents);

    // Opens one more view and activates it. Does not wait.
    void Open(const NamedDocument& document);

    // Runs the loop until the panel is idle. Throws std::runtime_error after the limit.
    void AwaitIdle();

    // What the panel failed in since the last call: posted calls, events and input. One text each.
    std::vector<std::string> TakeFailures();

    // As AwaitIdle; throws std::runtime_error also when a posted call or an event has failed
    // meanwhile.
    void Settle();

    // Views have numbers, from 0 in the order of opening, that stay theirs when others are closed.
    // Of the open ones, ascending:
    std::vector<std::size_t> OpenViews() const;

    // Null for a number that no open view has.
    Host::ViewPtr View(std::size_t number) const;

    // Closes an open view. Does not wait.
    void Close(std::size_t number);

    // What the panel holds for an open view. Throws std::runtime_error when the panel lacks a
    // container.
    PanelView ReadView(std::size_t number) const;

    // The name under which the user opened the view.
    const std::string& NameOf(std::size_t number) const { return views_.at(number).name; }

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

    // What was amiss with the files since the last call, one line each, naming the file.
    std::vector<std::string> TakeWarnings();

    // Ends the panel. Throws std::runtime_error when service objects were lost.
    void Finish();

    Host& TheHost() noexcept { return host_; }

private:
    struct OpenedView {
        std::string name;
        std::shared_ptr<Documents::Document> content;
        Host::ViewPtr view;  // null: closed
        std::size_t warningsTaken = 0;
    };

    void ThrowFailures();

    const SessionOptions options_;
    Host host_;
    std::vector<OpenedView> views_;
};

}  // namespace Workbench
