#include "driver/Session.h"

#include "driver/ConsistencyCheck.h"
#include "driver/PanelReport.h"

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string_view>
#include <utility>

namespace Workbench {

Session::Session(SessionOptions options, DocumentNumber firstNumber)
    : options_(std::move(options)), host_(options_.host), documents_(host_, firstNumber)
{
}

DocumentFile Session::Read(const std::string& name) const
{
    constexpr std::string_view kMemory = "memory:";
    if (name.starts_with(kMemory)) {
        return MakeMemoryDocument(name.substr(kMemory.size()), options_.listAll);
    }
    return ReadFile(name);
}

DocumentFile Session::ReadFile(const std::string& file) const
{
    DocumentFile document =
        ReadDocument(file, {options_.password, options_.listAll, options_.forListing});
    document.name = file;
    return document;
}

void Session::Start(std::vector<DocumentFile> documents)
{
    host_.StartPanel();
    for (DocumentFile& document : documents) {
        documents_.Open(std::move(document));
    }
    host_.HandOverDocuments();
    Settle();
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

void Session::ReadView(const OpenDocument& document, PanelSink& sink) const
{
    if (!ReadPanelView(*host_.Panel().Document(), ContainerKey(document.view->View().AsInterface()),
                       sink)) {
        throw std::runtime_error(document.name + ": the panel has no container for its view");
    }
}

PanelView Session::ReadView(const OpenDocument& document) const
{
    PanelView view;
    PanelViewCollector collector(view);
    ReadView(document, collector);
    return view;
}

TextBlocks Session::Report(bool withViews) const
{
    TextBlocks text;
    text.End() += "{\"views\":[";
    for (const auto& document : documents_.All()) {
        text.End() += document == documents_.All().front() ? "" : ",";
        JsonReport report(text, document->name);
        ReadView(*document, report);
        report.Finish(withViews ? &document->view->View() : nullptr);
    }
    text.End() += "]}\n";
    return text;
}

nlohmann::ordered_json Session::CheckConsistency()
{
    std::vector<std::string> keys;
    for (const auto& document : documents_.All()) {
        keys.push_back(ContainerKey(document->view->View().AsInterface()));
    }
    if (const auto containers = ContainerKeys(*host_.Panel().Document()); containers != keys) {
        return {{"consistent", false}, {"view", nullptr}, {"panel", containers}, {"fresh", keys}};
    }
    for (const auto& document : documents_.All()) {
        if (const auto difference =
                CompareWithFreshList(host_, document->view, options_.waitLimit)) {
            return {{"consistent", false},
                    {"view", document->number},
                    {"file", document->name},
                    {"panel", difference->left},
                    {"fresh", difference->right}};
        }
    }
    return {{"consistent", true}};
}

void Session::Finish()
{
    documents_.ReleaseAll();
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
