#include "driver/Session.h"

#include "documents/Population.h"
#include "driver/ConsistencyCheck.h"
#include "driver/PanelReport.h"

#if defined(WORKBENCH_READS_PDF)
#include "documents/QpdfDocument.h"
#endif

#include <charconv>
#include <cstddef>
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

NamedDocument Session::Read(const std::string& name) const
{
    constexpr std::string_view kMemory = "memory:";
    return name.starts_with(kMemory) ? MakeMemoryDocument(name.substr(kMemory.size()))
                                     : ReadFile(name);
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
    views_.push_back({document.name, document.content, host_.OpenView(document.content), 0});
}

std::vector<std::string> Session::TakeFailures()
{
    std::vector<std::string> texts;
    for (const Failure& failure : host_.State().failures.Take()) {
        texts.push_back(Describe(failure));
    }
    return texts;
}

void Session::ThrowFailures()
{
    const std::vector<std::string> failures = TakeFailures();
    if (!failures.empty()) {
        throw std::runtime_error("the panel failed: " + failures.front());
    }
}

void Session::AwaitIdle()
{
    if (!host_.RunUntilIdle(options_.waitLimit)) {
        throw std::runtime_error("the panel is still busy after " +
                                 std::to_string(options_.waitLimit.count()) + " seconds (" +
                                 std::to_string(host_.LoadingCount()) + " lists are loading)");
    }
}

void Session::Settle()
{
    AwaitIdle();
    ThrowFailures();
}

std::vector<std::size_t> Session::OpenViews() const
{
    std::vector<std::size_t> numbers;
    for (std::size_t number = 0; number < views_.size(); ++number) {
        if (views_[number].view) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

Host::ViewPtr Session::View(std::size_t number) const
{
    return number < views_.size() ? views_[number].view : nullptr;
}

void Session::Close(std::size_t number)
{
    host_.CloseView(std::exchange(views_.at(number).view, nullptr));
}

PanelView Session::ReadView(std::size_t number) const
{
    const OpenedView& opened = views_.at(number);
    auto view =
        ReadPanelView(*host_.Panel().Page(), ContainerKey(opened.view->View().AsInterface()));
    if (!view) {
        throw std::runtime_error(opened.name + ": the panel has no container for its view");
    }
    return *std::move(view);
}

nlohmann::ordered_json Session::Report() const
{
    nlohmann::ordered_json views = nlohmann::ordered_json::array();
    for (const std::size_t number : OpenViews()) {
        views.push_back(ToJson(ReadView(number), NameOf(number)));
    }
    return {{"views", std::move(views)}};
}

nlohmann::ordered_json Session::ReportWithViews() const
{
    nlohmann::ordered_json report = Report();
    const std::vector<std::size_t> numbers = OpenViews();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        report["views"][i]["view"] = ToJson(View(numbers[i])->View());
    }
    return report;
}

nlohmann::ordered_json Session::CheckConsistency()
{
    std::vector<std::string> keys;
    for (const std::size_t number : OpenViews()) {
        keys.push_back(ContainerKey(View(number)->View().AsInterface()));
    }
    if (const auto containers = ContainerKeys(*host_.Panel().Page()); containers != keys) {
        return {{"consistent", false}, {"view", nullptr}, {"panel", containers}, {"fresh", keys}};
    }
    for (const std::size_t number : OpenViews()) {
        if (const auto difference = CompareWithFreshList(host_, View(number), options_.waitLimit)) {
            return {{"consistent", false},
                    {"view", number},
                    {"file", NameOf(number)},
                    {"panel", difference->left},
                    {"fresh", difference->right}};
        }
    }
    return {{"consistent", true}};
}

std::vector<std::string> Session::TakeWarnings()
{
    std::vector<std::string> lines;
    for (OpenedView& opened : views_) {
        const std::vector<std::string> warnings = opened.content->Warnings();
        const auto taken =
            static_cast<std::ptrdiff_t>(std::exchange(opened.warningsTaken, warnings.size()));
        lines.insert(lines.end(), warnings.begin() + taken, warnings.end());
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
