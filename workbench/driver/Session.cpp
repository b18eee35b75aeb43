#include "driver/Session.h"

#include "documents/Population.h"
#include "driver/PanelReport.h"

#if defined(WORKBENCH_READS_PDF)
#include "documents/QpdfDocument.h"
#endif

#include <charconv>
#include <string_view>
#include <utility>

namespace Workbench {

namespace {

// Numbers between colons; empty when there is anything else.
std::vector<std::uint32_t> NumbersIn(std::string_view text)
{
    std::vector<std::uint32_t> numbers;
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    for (;;) {
        std::uint32_t number = 0;
        const auto [rest, error] = std::from_chars(position, end, number);
        if (error != std::errc()) {
            return {};
        }
        numbers.push_back(number);
        if (rest == end) {
            return numbers;
        }
        if (*rest != ':') {
            return {};
        }
        position = rest + 1;
    }
}

}  // namespace

Session::Session(SessionOptions options) : options_(std::move(options)), host_(options_.host) {}

NamedDocument Session::ReadFile(const std::string& file) const
{
#if defined(WORKBENCH_READS_PDF)
    const Documents::OpenResult opened =
        Documents::QpdfDocument::Open(file, {options_.password, options_.listAll});
    if (opened.document == nullptr) {
        throw OpenError(opened.message);
    }
    return {file, opened.document};
#else
    throw OpenError(file + ": this build of the workbench reads no PDF files");
#endif
}

NamedDocument Session::MakeMemoryDocument(const std::string& description) const
{
    const std::vector<std::uint32_t> numbers = NumbersIn(description);
    if (numbers.size() < 2 || numbers.size() > 3 || numbers[1] == 0) {
        throw OpenError("\"" + description +
                        "\" is no document in memory: COMMENTS:PAGES or COMMENTS:PAGES:SEED");
    }
    Documents::MemoryOptions options;
    options.listAll = options_.listAll;
    return {"memory:" + description,
            Documents::MakePopulationDocument({numbers[0], numbers[1]},
                                              numbers.size() == 3 ? numbers[2] : 1, options)};
}

void Session::Start(const std::vector<NamedDocument>& documents)
{
    host_.StartPanel();
    for (const NamedDocument& document : documents) {
        Open(document);
    }
    host_.HandOverDocuments();
    Settle();
}

void Session::Open(const NamedDocument& document)
{
    views_.push_back({document.name, document.content, host_.OpenView(document.content)});
}

void Session::ThrowFailures()
{
    const std::vector<Failure> failures = host_.State().failures.Take();
    if (!failures.empty()) {
        throw std::runtime_error("the panel failed: " + Describe(failures.front()));
    }
}

void Session::Settle()
{
    if (!host_.RunUntilIdle(options_.waitLimit)) {
        throw std::runtime_error("the panel is still busy after " +
                                 std::to_string(options_.waitLimit.count()) + " seconds (" +
                                 std::to_string(host_.LoadingCount()) + " lists are loading)");
    }
    ThrowFailures();
}

std::vector<PanelView> Session::ReadViews() const
{
    std::vector<PanelView> result;
    for (const OpenedView& opened : views_) {
        auto view = ReadPanelView(*host_.Panel().Page(),
                                  ContainerKey(opened.view->View().AsInterface()));
        if (!view) {
            throw std::runtime_error(opened.name + ": the panel has no container for its view");
        }
        result.push_back(std::move(*view));
    }
    return result;
}

nlohmann::ordered_json Session::Report() const
{
    nlohmann::ordered_json views = nlohmann::ordered_json::array();
    const std::vector<PanelView> read = ReadViews();
    for (std::size_t i = 0; i < read.size(); ++i) {
        views.push_back(ToJson(read[i], views_[i].name));
    }
    return {{"views", std::move(views)}};
}

std::vector<std::string> Session::Warnings() const
{
    std::vector<std::string> lines;
    for (const OpenedView& opened : views_) {
        for (std::string& warning : opened.content->Warnings()) {
            lines.push_back(std::move(warning));
        }
    }
    return lines;
}

void Session::Finish()
{
    views_.clear();
    const std::vector<std::string> lost = host_.ShutDown();
    if (!lost.empty()) {
        std::string all;
        for (const std::string& line : lost) {
            all += (all.empty() ? "" : ", ") + line;
        }
        throw std::runtime_error("service objects were lost: " + all);
    }
    ThrowFailures();
}

}  // namespace Workbench
