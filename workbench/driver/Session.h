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
    bool listAll = false;    // list every annotation, whatever its subtype and flags
    std::string password;    // for files that need one
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

    // Makes a document in memory: "COMMENTS:PAGES" or "COMMENTS:PAGES:SEED", filled with the
    // population that benchmarks use. Throws OpenError.
    NamedDocument MakeMemoryDocument(const std::string& description) const;

    // Starts the panel, opens a view of each document, hands them over, and returns when their
    // lists are there. Every opening activates its view, so the last one is active at the end.
    // Throws std::runtime_error.
    void Start(const std::vector<NamedDocument>& documents);

    // Opens one more view and activates it. Does not wait.
    void Open(const NamedDocument& document);

    // Runs the loop until the panel is idle. Throws std::runtime_error after the limit, and when a
    // posted call or an event has failed meanwhile.
    void Settle();

    // What the panel holds for each open view, in the order of opening. Throws std::runtime_error
    // when the panel lacks a container.
    std::vector<PanelView> ReadViews() const;

    // The name under which the user opened the view with that number.
    const std::string& NameOf(std::size_t view) const { return views_.at(view).name; }

    // {"views": [...]}, as for --json.
    nlohmann::ordered_json Report() const;

    // What was amiss with the files, one line each, naming the file.
    std::vector<std::string> Warnings() const;

    // Ends the panel. Throws std::runtime_error when service objects were lost.
    void Finish();

    Host& TheHost() noexcept { return host_; }

private:
    struct OpenedView {
        std::string name;
        std::shared_ptr<Documents::Document> content;
        Host::ViewPtr view;
    };

    void ThrowFailures();

    const SessionOptions options_;
    Host host_;
    std::vector<OpenedView> views_;
};

}  // namespace Workbench
