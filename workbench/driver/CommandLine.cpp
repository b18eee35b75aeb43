#include "driver/CommandLine.h"

#include "driver/PanelReport.h"
#include "driver/Session.h"

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace Workbench {

namespace {

struct ProgramOptions {
    bool json = false;
    bool text = false;
    std::vector<std::string> files;
    std::vector<std::string> memoryDocuments;
    std::string module;
    std::string locales;
    std::uint32_t waitSeconds = 300;
    SessionOptions session;
};

void Declare(CLI::App& app, ProgramOptions& options)
{
    CLI::Option* const json =
        app.add_flag("--json", options.json, "Print what the panel shows as JSON");
    app.add_flag("--text", options.text, "Print what the panel shows as text")->excludes(json);
    app.add_option("FILE", options.files, "PDF files, each opened in a view of its own");
    app.add_option("--memory", options.memoryDocuments,
                   "Open a generated document instead: COMMENTS:PAGES[:SEED]")
        ->allow_extra_args(false);
    app.add_flag("--list-all", options.session.listAll,
                 "List every annotation, whatever its subtype and flags");
    app.add_option("--password", options.session.password, "Password of encrypted files");
    app.add_option("--locale", options.session.host.language,
                   "Language of the panel: en, de, ru, ar, he");
    app.add_option("--module", options.module, "Library of the panel, in place of the one built");
    app.add_option("--locales", options.locales, "Folder of the languages' files");
    app.add_option("--wait", options.waitSeconds, "Seconds after which a busy panel is given up");
}

std::string OneLine(std::string text)
{
    for (char& c : text) {
        c = c == '\n' || c == '\r' ? ' ' : c;
    }
    return text;
}

std::string Listing(const ProgramOptions& options, std::ostream& errors)
{
    Session session(options.session);
    std::vector<NamedDocument> documents;
    for (const std::string& file : options.files) {
        documents.push_back(session.ReadFile(file));
    }
    for (const std::string& description : options.memoryDocuments) {
        documents.push_back(session.MakeMemoryDocument(description));
    }
    session.Start(documents);

    std::string listing;
    if (options.json) {
        listing = ToLine(session.Report()) + "\n";
    } else {
        const std::vector<PanelView> views = session.ReadViews();
        for (std::size_t i = 0; i < views.size(); ++i) {
            listing += ToText(views[i], session.NameOf(i));
        }
    }
    for (const std::string& warning : session.Warnings()) {
        errors << "warning: " << OneLine(warning) << "\n";
    }
    documents.clear();
    session.Finish();
    return listing;
}

}  // namespace

int RunProgram(int argumentCount, const char* const* arguments, std::ostream& output,
               std::ostream& errors)
{
    ProgramOptions options;
    CLI::App app("Shows the comments panel of PDF files.", "workbench");
    Declare(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help, output, errors);
    } catch (const CLI::ParseError& error) {
        errors << "workbench: " << OneLine(error.what()) << " (see --help)\n";
        return kExitFailed;
    }
    if (!options.json && !options.text) {
        errors << "workbench: there is no browser workbench yet; use --json or --text\n";
        return kExitFailed;
    }
    if (options.files.empty() && options.memoryDocuments.empty()) {
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
    try {
        output << Listing(options, errors) << std::flush;
        return kExitDone;
    } catch (const OpenError& error) {
        errors << "workbench: " << OneLine(error.what()) << "\n";
        return kExitNoDocument;
    } catch (const std::exception& error) {
        errors << "workbench: " << OneLine(error.what()) << "\n";
        return kExitFailed;
    }
}

}  // namespace Workbench
