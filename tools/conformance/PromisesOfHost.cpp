#include "Promises.h"

#include "Host.h"
#include "HostInterfaces.h"
#include "PlatformLibraries.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace Conformance {

namespace {

constexpr std::uint32_t kEnter = 13;
constexpr std::uint32_t kHostFailure = 5;
constexpr ErrorWords kHostError{0x1234, u"the host cannot", "Host::Function", "Host.h", 77};

constexpr unsigned kGetInteractionFlags = 2;  // of the view
constexpr unsigned kGoTo = 3;
constexpr unsigned kCreateRegistration = 4;  // of the UI engine

void ExpectNoViolation(Finding& finding, const Host& host)
{
    for (const std::string& violation : host.Seen().Violations()) {
        finding.Fail(violation);
    }
}

void StartWithView(Host& host)
{
    host.StartPanel();
    host.HandOverDocuments();
    host.OpenView();
}

// --- Events -------------------------------------------------------------------------------------

// The events of one list, as they were subscribed among others.
template <class Wanted>
void ExpectEvents(Finding& finding, const Host& host, const char* which, const Wanted& wanted)
{
    std::vector<SubscribedEvent> events = host.SubscribedEvents();
    std::erase_if(events, [&](const SubscribedEvent& event) {
        return std::find(wanted.begin(), wanted.end(), event) == wanted.end();
    });
    finding.Want(std::equal(events.begin(), events.end(), wanted.begin(), wanted.end()),
                 std::string("the events of the ") + which +
                     " are not subscribed once each and in order");
}

constexpr std::size_t kPanelEventCount = 1 + kCollectionEvents.size();

void ProveCatalogue(Finding& finding, Host& host)
{
    const auto expectCount = [&](const char* when, std::size_t wanted) {
        finding.Equal(std::string("subscriptions ") + when, host.SubscribedEvents().size(), wanted);
    };
    host.StartPanel();
    expectCount("before there are documents", 0);
    host.HandOverDocuments();
    expectCount("before there is a view", kPanelEventCount);
    ExpectEvents(finding, host, "documents", kCollectionEvents);
    finding.Want(host.SubscribedEvents().front() == kFrameEvent,
                 "the main frame is not subscribed to first");
    host.OpenView();
    expectCount("with a view", kPanelEventCount + kViewEvents.size() + kContainerEvents.size());
    ExpectEvents(finding, host, "active view", kViewEvents);
    ExpectEvents(finding, host, "container", kContainerEvents);
}

std::size_t CountLive(const Host& host)
{
    const auto all = host.Seen().Subscriptions();
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [](const auto& each) { return !each.ended; }));
}

void ProveEndings(Finding& finding, Host& host)
{
    StartWithView(host);
    host.CloseView();
    finding.Equal("subscriptions after the view closed", CountLive(host), kPanelEventCount);
    host.ThePage().DetachBelow(host.ThePage().Body());
    finding.Equal("subscriptions after Detached", CountLive(host), 0u);
    ExpectNoViolation(finding, host);
}

Element& ItemOf(Host& host)
{
    Element* const item = host.ThePage().Find("li[annot-name");
    if (item == nullptr) {
        throw std::runtime_error("the list has no item");
    }
    item->state = 0;
    return *item;
}

// A callable gets the arguments that the event's catalogue promises, by what it does with them.
void ProveDelivery(Finding& finding, Host& host)
{
    StartWithView(host);
    host.Fire("BLDocumentView", 51, &host.Of("BLSelection"));
    finding.Equal("holders of a selection that was told", host.Of("BLSelection").weak.holders, 2u);
    const Element& item = ItemOf(host);
    host.Fire("BLDocumentView", 99, 0xFFFFFFFFu, TheAnnotation());
    finding.Equal("the item's state without a page", item.state, 0u);
    host.Fire("BLDocumentView", 99, 0u, TheAnnotation());
    finding.Equal("the item's state when it has the focus", item.state & kCurrent, kCurrent);
    const auto pagesAcquired = [&] { return host.Of("BLDocument").calls[1].load(); };
    const std::uint32_t before = pagesAcquired();
    host.Fire("BLDocument", 78, 3u, 0u, TheAnnotation());
    host.Fire("BLDocument", 78, 5u, 0u, TheAnnotation());
    finding.Equal("pages acquired for what is no change", pagesAcquired(), before);
    host.Fire("BLDocument", 78, 4u, 0u, TheAnnotation());
    finding.Want(pagesAcquired() > before, "a change of an annotation is not followed");
}

// An event on another thread is posted once, and acted on when the host runs the call.
void ProveForeignThread(Finding& finding, Host& host)
{
    StartWithView(host);
    const Element& item = ItemOf(host);
    const unsigned before = host.postedCalls;
    std::thread([&] { host.Fire("BLDocumentView", 99, 0u, TheAnnotation()); }).join();
    finding.Equal("calls posted", host.postedCalls - before, 1u);
    finding.Equal("the item's state before the call runs", item.state, 0u);
    host.Run();
    finding.Equal("the item's state then", item.state & kCurrent, kCurrent);
}

void ProveRefusedSubscriptions(Finding& finding, Host& host)
{
    host.Seen().refuses = true;
    StartWithView(host);
    finding.Want(host.Of("UIMainFrame").calls[25] == 1, "nothing was subscribed");
    host.ShutDown();
    finding.Equal("calls of an unsubscribe entry", host.Of("UIMainFrame").calls[26].load(), 0u);
    ExpectNoViolation(finding, host);
}

// View and document die before their subscriptions: nothing of theirs is called any more.
void ProveDeadSources(Finding& finding, Host& host)
{
    StartWithView(host);
    host.LetDie("BLDocument");
    host.LetDie("BLDocumentView");
    finding.Equal("references of the dead view", host.Of("BLDocumentView").references.load(), 0u);
    finding.Equal("references of the dead document", host.Of("BLDocument").references.load(), 0u);
    host.ShutDown();
    ExpectNoViolation(finding, host);
}

// --- Posted calls -------------------------------------------------------------------------------

// The runner leaves alone what is no record of the module's.
void ProveRunner(Finding& finding, Host& host)
{
    host.StartPanel();
    host.HandOverDocuments();
    finding.Want(host.runner != nullptr, "nothing was posted");
    if (host.runner == nullptr) {
        return;
    }
    struct Stray {
        PostedRecord head;
        char rest[32];
    } stray{{{'I', 'N', 'I', 'X'}, kPostedSize}, {}};
    const Stray before = stray;
    host.runner(nullptr);
    host.runner(&stray);
    finding.Want(std::memcmp(&stray, &before, sizeof stray) == 0, "a stray record was changed");
    ExpectNoViolation(finding, host);
}

// --- The check rule -----------------------------------------------------------------------------

// Lets the view fail a call that Enter makes, and says whether the step went on.
bool GoesOnAfter(Host& host, std::uint32_t code, const ErrorWords* error, std::uint32_t& result)
{
    HostObject& view = host.Of("BLDocumentView");
    view.failingSlot = kGetInteractionFlags;
    view.failure = code;
    view.error = error;
    const std::uint32_t before = view.calls[kGoTo];
    result = host.PressKey(kEnter);
    view.failure = 0;
    return view.calls[kGoTo] != before;
}

void ProveRecordBecomesCode(Finding& finding, Host& host)
{
    StartWithView(host);
    HostObject& view = host.Of("BLDocumentView");
    HostObject& errorObject = host.Of("Highlight");
    view.errorObject = &errorObject;
    std::uint32_t result = 0;
    finding.Want(!GoesOnAfter(host, kHostFailure, &kHostError, result), "the step went on");
    finding.Equal("the result", result, 0x1234u);
    finding.Equal("the message", LastError(host.ContainerHandler()).Message(),
                  "UIHandler::HandleKey() failed, code: 4660");
    finding.Equal("references of the error object", errorObject.references.load(), 1u);
}

void ProveExpectedCodes(Finding& finding, Host& host)
{
    StartWithView(host);
    std::uint32_t result = 0;
    for (const std::uint32_t code : {1u, 10u}) {
        finding.Want(GoesOnAfter(host, code, &kHostError, result), "the step ended");
        finding.Equal("the result", result, 1u);
    }
    finding.Equal("records asked for", host.Of("BLDocumentView").errorsAsked.load(), 0u);
}

void ProveFailuresWithoutRecord(Finding& finding, Host& host)
{
    StartWithView(host);
    std::uint32_t result = 0;
    finding.Want(GoesOnAfter(host, kHostFailure, nullptr, result), "the step ended");
    finding.Equal("the result", result, 1u);
    finding.Equal("records asked for", host.Of("BLDocumentView").errorsAsked.load(), 1u);
    host.Of("BLDocumentView").common[4] = nullptr;
    finding.Want(GoesOnAfter(host, kHostFailure, &kHostError, result),
                 "the step ended without an entry to ask");
    finding.Equal("the result without an entry to ask", result, 1u);
}

std::string MessageOfRegisterResources(const ModuleObject& plugin)
{
    try {
        plugin.Call(PluginSlot::kRegisterResources);
        return "(nothing was thrown)";
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

// Failures of the engine reach the host through RegisterResources, and the next call tries again.
void ProveExceptions(Finding& finding, Host& host)
{
    ModuleObject plugin = host.CreatePlugin();
    HostObject& engine = host.Of("UIEngine");
    VxHostUnregisterService("UIEngine");
    finding.Equal("what a host without an engine gets", MessageOfRegisterResources(plugin),
                  "Fail to query UIEngine service object: corresponding service is not supported "
                  "by the service provider.\n");
    VxHostRegisterService("UIEngine", &engine);
    engine.failingSlot = kCreateRegistration;
    engine.failure = kHostFailure;
    engine.error = &kHostError;
    finding.Equal("what a failing engine's host gets", MessageOfRegisterResources(plugin),
                  "the host cannot");
    engine.failure = 0;
    finding.Equal("the next call", plugin.Call(PluginSlot::kRegisterResources), 0u);
    finding.Equal("registrations", engine.calls[7].load(), 1u);
    plugin.ReleaseAndForget();
}

void ProveMissingService(Finding& finding, Host& host)
{
    StartWithView(host);
    VxHostUnregisterService("BLService");
    finding.Equal("Enter without BLService", host.PressKey(kEnter), 2u);
}

// --- Balance ------------------------------------------------------------------------------------

constexpr const char* kBalances[] = {"balance.references",    "balance.weak-records",
                                     "balance.subscriptions", "balance.element-uses",
                                     "balance.pdf-records",   "balance.module-objects"};

void ProveBalance(Report& report, const std::string& module)
{
    ModuleLibrary library(module);
    Host host(library);
    report.Prove("balance.calls", [&](Finding& finding) {
        host.Live();
        library.Unload();
        ExpectNoViolation(finding, host);
        for (const Attachment& attachment : host.ThePage().Attachments()) {
            finding.Equal("Attached", attachment.attachedResult, 0u);
            finding.Equal("Detached", attachment.detachedResult, 0u);
        }
        finding.Equal("attached handlers", host.ThePage().Attachments().size(), 2u);
    });
    for (const char* promise : kBalances) {
        report.Prove(promise, [&](Finding& finding) {
            for (const Remainder& remainder : host.Remainders()) {
                finding.Want(remainder.promise != promise, remainder.text);
            }
        });
    }
}

// --- Host tables --------------------------------------------------------------------------------

// An interface of the host: its methods, and the subscribe entries of its events.
struct TableRow {
    const char* name;
    std::vector<unsigned> methods;
    std::vector<unsigned> events{};
    bool isAskedOnce = false;  // in the life of a loaded module
};

const TableRow kTables[] = {
    {"UIEngine", {0, 4, 7}, {}, true},
    {"UIService", {5, 12}},
    {"UIWnd", {4, 32}},
    {"UIHtmlEngine", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}},
    {"UIMainFrame", {}, {25}},
    {"UIDocumentsCollection", {1, 2, 22}, {8, 11, 14, 17, 24, 27, 30, 33}},
    {"UIDocumentView", {2}},
    {"BLDocumentView",
     {0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13},
     {6, 20, 25, 28, 42, 51, 54, 94, 99, 126, 182, 185, 188, 199}},
    {"BLDocument", {0, 1, 2}, {39, 78}},
    {"BLService", {0}},
    {"LocaleManager", {8, 9}},
    {"PDModelService", {0}, {}, true},
};

// Every multiple of an entry's size, and the sizes around the bound of each method.
std::vector<std::uint32_t> CutSizes(const TableRow& row, std::uint32_t whole)
{
    std::vector<std::uint32_t> sizes;
    for (std::uint32_t size = 0; size < whole; size += 8) {
        sizes.push_back(size);
    }
    for (const unsigned slot : row.methods) {
        sizes.push_back(8 * slot + 1);
        if (slot != 0) {
            sizes.push_back(8 * slot - 1);
        }
    }
    return sizes;
}

// Whether a slot is only called where higher ones exist. Without its thread's object the panel has
// no task that asks for the main frame; one method of the HTML engine leads to the next.
bool StandsOnHigherSlots(std::string_view name, unsigned slot)
{
    return (name == "UIService" && slot == 5) || name == "UIHtmlEngine";
}

class TableProof {
public:
    TableProof(const std::string& module, const TableRow& row, std::vector<Remainder>& left)
        : module_(module), row_(row), left_(left)
    {
    }

    void Cut(Finding& finding)
    {
        std::uint32_t whole = 0;
        const Calls full = Live(finding, [&](HostObject& object) { whole = object.tableSize; });
        for (const std::uint32_t size : CutSizes(row_, whole)) {
            const Calls calls = Live(finding, [&](HostObject& object) { object.tableSize = size; });
            const std::string with = " with a table of " + std::to_string(size) + " bytes";
            const std::uint32_t last = size / 8;
            const bool isCalled = size % 8 == 1 && full[last] != 0;
            finding.Want(!isCalled || calls[last] != 0 || StandsOnHigherSlots(row_.name, last),
                         "slot " + std::to_string(last) + " was not called" + with);
            for (const unsigned event : row_.events) {
                finding.Equal("subscriptions at slot " + std::to_string(event) + with, calls[event],
                              full[event]);
            }
        }
    }

    void LeaveGaps(Finding& finding)
    {
        for (const auto& slots : {row_.methods, row_.events}) {
            for (const unsigned slot : slots) {
                Live(finding, [&](HostObject& object) { object.entries[slot] = nullptr; });
            }
        }
    }

private:
    using Calls = std::vector<std::uint32_t>;

    // A life with a changed object of the host: how often each slot of it was called.
    Calls Live(Finding& finding, const std::function<void(HostObject&)>& change)
    {
        if (library_ == nullptr || row_.isAskedOnce) {
            library_.reset();
            library_ = std::make_unique<ModuleLibrary>(module_);
        }
        Host host(*library_);
        HostObject& object = host.Of(row_.name);
        change(object);
        host.Live();
        const std::vector<Remainder> remainders = host.Remainders();
        left_.insert(left_.end(), remainders.begin(), remainders.end());
        for (const std::string& violation : host.Seen().Violations()) {
            if (violation.starts_with(row_.name)) {
                finding.Fail(violation);
            } else {
                left_.push_back({"balance.calls", violation});
            }
        }
        return {std::begin(object.calls), std::end(object.calls)};
    }

    const std::string& module_;
    const TableRow& row_;
    std::vector<Remainder>& left_;
    std::unique_ptr<ModuleLibrary> library_;
};

}  // namespace

void ProveHostRules(Report& report, const std::string& module)
{
    struct Row {
        const char* promise;
        void (*prove)(Finding&, Host&);
    };
    constexpr Row kRows[] = {
        {"events.catalogue", ProveCatalogue},
        {"events.endings", ProveEndings},
        {"events.delivery", ProveDelivery},
        {"events.foreign-thread", ProveForeignThread},
        {"events.refused", ProveRefusedSubscriptions},
        {"events.dead-sources", ProveDeadSources},
        {"posting.runner", ProveRunner},
        {"check.record-becomes-code", ProveRecordBecomesCode},
        {"check.expected-codes", ProveExpectedCodes},
        {"check.no-record", ProveFailuresWithoutRecord},
        {"check.exceptions", ProveExceptions},
        {"check.missing-service", ProveMissingService},
    };
    for (const Row& row : kRows) {
        report.Prove(row.promise, [&](Finding& finding) {
            ModuleLibrary library(module);
            Host host(library);
            row.prove(finding, host);
            host.ShutDown();
        });
    }
    ProveBalance(report, module);
}

void ProveHostTables(Report& report, const std::string& module)
{
    std::vector<Remainder> left;
    for (const TableRow& row : kTables) {
        TableProof proof(module, row, left);
        report.Prove(std::string("tables.cut.") + row.name,
                     [&](Finding& finding) { proof.Cut(finding); });
        report.Prove(std::string("tables.gaps.") + row.name,
                     [&](Finding& finding) { proof.LeaveGaps(finding); });
    }
    report.Prove("balance.changed-tables", [&](Finding& finding) {
        for (const Remainder& remainder : left) {
            finding.Fail(remainder.promise + ": " + remainder.text);
        }
    });
}

}  // namespace Conformance
