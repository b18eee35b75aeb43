#include "driver/CommandLine.h"

#include "actions/ActionRefused.h"
#include "driver/MemoryReserve.h"
#include "driver/PanelReport.h"
#include "driver/Script.h"
#include "driver/Session.h"
#include "services/PanelElements.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <new>
#include <ostream>
#include <string>
#include <vector>

namespace Workbench {

namespace {

constexpr const char* kFile = "FILE";
constexpr const char* kMemory = "--memory";
constexpr const char* kInput = "-";

struct ProgramOptions {
    bool json = false;
    bool text = false;
    std::string script;  // a file, "-" for the input; empty: none
    std::vector<std::string> files;
    std::vector<std::string> memoryDocuments;
    std::vector<bool> isFile;  // for files and documents in memory as they were named
    std::string module;
    std::string locales;
    std::uint32_t waitSeconds = 300;
    std::uint16_t port = 0;
    SessionOptions session;
};

void Declare(CLI::App& app, ProgramOptions& options)
{
    CLI::Option* const json =
        app.add_flag("--json", options.json, "Print what the panel shows as JSON");
    CLI::Option* const text =
        app.add_flag("--text", options.text, "Print what the panel shows as text")->excludes(json);
    app.add_option("--script", options.script, "Carry out the steps in a file; - reads the input")
        ->excludes(json)
        ->excludes(text);
    app.add_option(kFile, options.files, "PDF files, each opened in a view of its own");
    app.add_option(kMemory, options.memoryDocuments,
                   "Open a generated document instead: COMMENTS:PAGES[:SEED]")
        ->allow_extra_args(false);
    app.add_flag("--list-all", options.session.listAll,
                 "List every annotation, whatever its subtype and flags");
    app.add_option("--password", options.session.password, "Password of encrypted files");
    app.add_option("--locale", options.session.host.language, "Language of the panel, such as de");
    app.add_option("--port", options.port,
                   "Port of the page in the browser; a free one if not given")
        ->excludes(json);
    app.add_option("--module", options.module, "Library of the panel, in place of the one built");
    app.add_option("--locales", options.locales, "Folder of the languages' files");
    app.add_option("--wait", options.waitSeconds, "Seconds after which a busy panel is given up");
}

std::vector<DocumentFile> ReadDocuments(const ProgramOptions& options, const Session& session)
{
    std::vector<DocumentFile> documents;
    auto file = options.files.begin();
    auto description = options.memoryDocuments.begin();
    for (const bool isFile : options.isFile) {
        documents.push_back(isFile ? session.ReadFile(*file++)
                                   : MakeMemoryDocument(*description++, options.session.listAll));
    }
    return documents;
}

void PrintWarnings(Session& session, std::ostream& errors)
{
    for (const std::string& warning : session.Documents().TakeWarnings()) {
        errors << "warning: " << OneLine(warning) << "\n";
    }
}

// A panel that could not render a list leaves it empty, without the words for an empty one.
void RequireLists(Session& session)
{
    const HtmlEngine::Document& panel = *session.TheHost().Panel().Document();
    for (const auto& document : session.Documents().All()) {
        const std::string key = ContainerKey(document->view->View().AsInterface());
        if (panel.ChildCount(FindList(panel, FindContainer(panel, key))) == 0) {
            throw std::runtime_error(document->name + ": the panel could not list the comments");
        }
    }
}

// The whole listing: nothing is printed of one that fails before its end.
TextBlocks Listing(const ProgramOptions& options, std::ostream& errors)
{
    Session session(options.session);
    session.Start(ReadDocuments(options, session));
    RequireMemory();
    RequireLists(session);

    TextBlocks listing;
    if (options.json) {
        listing = session.Report(false);
    } else {
        for (const auto& document : session.Documents().All()) {
            TextReport report(listing, document->name);
            session.ReadView(*document, report);
        }
    }
    PrintWarnings(session, errors);
    session.Finish();
    return listing;
}

void CarryOut(const ProgramOptions& options, std::istream& input, std::ostream& output,
              std::ostream& errors)
{
    std::ifstream file;
    if (options.script != kInput) {
        file.open(options.script);
        if (!file) {
            throw std::runtime_error(options.script + " cannot be read");
        }
    }
    Session session(options.session);
    session.Start(ReadDocuments(options, session));
    RequireMemory();
    PrintWarnings(session, errors);
    RunScript(session, options.script == kInput ? input : file, output, errors);
    session.Finish();
}

}  // namespace

int RunProgram(int argumentCount, const char* const* arguments, std::istream& input,
               std::ostream& output, std::ostream& errors, const Browse& browse)
{
    ProgramOptions options;
    CLI::App app("Shows the comments panel of PDF files, in the browser unless told otherwise.",
                 "workbench");
    Declare(app, options);
    app.set_version_flag("--version", std::string("workbench ") + COMMENTS_PANEL_VERSION);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::Success& answer) {  // help or version
        return app.exit(answer, output, errors);
    } catch (const CLI::ParseError& error) {
        errors << "workbench: " << OneLine(error.what()) << " (see --help)\n";
        return kExitFailed;
    }
    for (const CLI::Option* option : app.parse_order()) {
        if (option->get_name() == kFile || option->get_name() == kMemory) {
            options.isFile.push_back(option->get_name() == kFile);
        }
    }
    const bool browses = !options.json && !options.text && options.script.empty();
    if (browses && !browse) {
        errors << "workbench: this build shows nothing in the browser; use --json, --text or "
                  "--script\n";
        return kExitFailed;
    }
    if (!browses && options.files.empty() && options.memoryDocuments.empty()) {
        errors << "workbench: no file is given (see --help)\n";
        return kExitFailed;
    }
    if (!options.module.empty()) {
        options.session.host.module = options.module;
    }
    if (!options.locales.empty()) {
        options.session.host.locales = options.locales;
    }
    options.session.waitLimit = std::chrono::seconds(options.waitSeconds);
    options.session.forListing = !browses && options.script.empty();
    const MemoryReserve reserve;
    try {
        if (browses) {
            return browse({options.session, options.files, options.memoryDocuments, options.port},
                          output, errors);
        }
        ShareHeap();
        if (options.script.empty()) {
            output << Listing(options, errors);
            Flush(output);
        } else {
            CarryOut(options, input, output, errors);
        }
        return kExitDone;
    } catch (const StepError& error) {
        errors << "workbench: " << OneLine(error.what()) << "\n";
        return kExitBadStep;
    } catch (const ActionRefused& error) {
        errors << "workbench: " << OneLine(error.what()) << "\n";
        return kExitNoDocument;
    } catch (const std::bad_alloc&) {
        errors << "workbench: not enough memory\n";
        return kExitFailed;
    } catch (const std::exception& error) {
        errors << "workbench: " << OneLine(error.what()) << "\n";
        return kExitFailed;
    }
}

}  // namespace Workbench
