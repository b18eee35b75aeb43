#include "Promises.h"

#include "Host.h"

#include <algorithm>
#include <array>
#include <random>

namespace Conformance {

namespace {

void ExpectNothingLeft(Finding& finding, const Host& host)
{
    for (const Remainder& remainder : host.Remainders()) {
        finding.Fail(remainder.text);
    }
}

// A plug-in that is driven in some order, and what the host holds of it.
class Driven {
public:
    Driven(Finding& finding, Host& host)
        : finding_(finding), host_(host), plugin_(host.CreatePlugin())
    {
    }
    ~Driven()
    {
        for (ModuleObject& object : held_) {
            object.ReleaseAndForget();
        }
        finding_.Equal("the last Release of the plug-in", plugin_.ReleaseAndForget(), 0);
    }
    Driven(const Driven&) = delete;
    Driven& operator=(const Driven&) = delete;

    void Call(unsigned slot)
    {
        using namespace PluginSlot;
        if (slot == kInitHandler || slot == kGetUIModel) {
            Ask(slot);
            return;
        }
        const void* const block[] = {&host_.Of("UIWnd"), &host_.Of("HostContext")};
        const bool declines =
            slot == kInitHtml || slot == kInitSubscription || slot == kCreateControl;
        finding_.Equal(kPluginMethods[slot], plugin_.Call(slot, &block), declines ? 1u : 0u);
        if (slot == kCleanup) {
            pair_ = {};
        }
    }

private:
    // The same object on every call until Cleanup, and a fresh one after it.
    void Ask(unsigned slot)
    {
        const ModuleObject object = AskPlugin(plugin_, slot);
        ModuleObject& known = pair_[slot == PluginSlot::kInitHandler ? 0 : 1];
        if (!object || (known && object != known)) {
            finding_.Fail(std::string(kPluginMethods[slot]) + " handed out another object");
        }
        if (!known && std::find(held_.begin(), held_.end(), object) != held_.end()) {
            finding_.Fail(std::string(kPluginMethods[slot]) + " handed out what Cleanup dropped");
        }
        known = object;
        held_.push_back(object);
    }

    Finding& finding_;
    Host& host_;
    ModuleObject plugin_;
    std::array<ModuleObject, 2> pair_;
    std::vector<ModuleObject> held_;
};

void ProvePermutations(Finding& finding, Host& host)
{
    using namespace PluginSlot;
    std::array order{kRegisterResources, kInitBegin, kInitHandler, kGetUIModel, kCleanup};
    std::sort(order.begin(), order.end());
    do {
        Driven driven(finding, host);
        for (const unsigned slot : order) {
            driven.Call(slot);
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

void ProveRandomOrders(Finding& finding, Host& host)
{
    for (unsigned seed = 1; seed <= 100; ++seed) {
        std::mt19937 random(seed);
        Driven driven(finding, host);
        for (unsigned step = 0; step < 40; ++step) {
            driven.Call(static_cast<unsigned>(random() % kPluginMethods.size()));
        }
    }
}

// Cleanup gives up handler and model, may come twice, and leaves an empty plug-in.
void ProveCleanup(Finding& finding, Host& host)
{
    ModuleObject plugin = host.CreatePlugin();
    ModuleObject handler = AskPlugin(plugin, PluginSlot::kInitHandler);
    ModuleObject model = AskPlugin(plugin, PluginSlot::kGetUIModel);
    for (const char* which : {"Cleanup", "the second Cleanup"}) {
        finding.Equal(which, plugin.Call(PluginSlot::kCleanup), 0);
        finding.Equal("the handler's count then", handler.Count(), 1);
        finding.Equal("the model's count then", model.Count(), 1);
    }
    ModuleObject fresh = AskPlugin(plugin, PluginSlot::kInitHandler);
    finding.Want(fresh && fresh != handler, "InitHandler after Cleanup makes no fresh handler");
    for (ModuleObject* object : {&fresh, &handler, &model, &plugin}) {
        finding.Equal("references left", object->ReleaseAndForget(), object == &fresh ? 1u : 0u);
    }
}

// The model finds its handler: its call is posted while the handler lives, and only then.
void ProveModelFirst(Finding& finding, Host& host)
{
    ModuleObject plugin = host.CreatePlugin();
    ModuleObject model = AskPlugin(plugin, PluginSlot::kGetUIModel);
    ModuleObject handler = AskPlugin(plugin, PluginSlot::kInitHandler);
    const auto handOver = [&](unsigned wanted, const char* when) {
        const unsigned before = host.postedCalls;
        finding.Equal("SetDocumentsCollection",
                      model.Call(ModelSlot::kSetCollection, &host.Of("UIDocumentsCollection")), 0);
        finding.Equal(std::string("calls posted ") + when, host.postedCalls - before, wanted);
        host.Run();
    };
    handOver(1, "while the handler lives");
    handler.Call(HandlerSlot::kDetached);
    plugin.Call(PluginSlot::kCleanup);
    finding.Equal("references left of the handler", handler.ReleaseAndForget(), 0);
    handOver(0, "after the handler died");
    model.ReleaseAndForget();
    plugin.ReleaseAndForget();
}

// A window that is none is ignored: the module calls nothing of it, and takes no reference.
void ProveInvalidWindows(Finding& finding, Host& host)
{
    ModuleObject plugin = host.CreatePlugin();
    HostObject& window = host.Of("UIWnd");
    const std::uint32_t id = window.interfaceId;
    const std::uint32_t size = window.tableSize;
    const auto begin = [&](const char* which) {
        const void* const block[] = {&window, &host.Of("HostContext")};
        finding.Equal(which, plugin.Call(PluginSlot::kInitBegin, &block), 0);
    };
    begin("a valid window");
    window.interfaceId = 0;
    begin("a window without an interface id");
    window.interfaceId = id;
    window.tableSize = 377;
    begin("a window with a table too large");
    window.tableSize = size - 8;
    begin("a window without an end tag");
    window.tableSize = size;
    plugin.ReleaseAndForget();
}

}  // namespace

void ProveOrders(Report& report, const std::string& module)
{
    struct Row {
        const char* promise;
        void (*prove)(Finding&, Host&);
    };
    constexpr Row kRows[] = {
        {"orders.permutations", ProvePermutations},
        {"orders.random", ProveRandomOrders},
        {"orders.cleanup", ProveCleanup},
        {"orders.model-first", ProveModelFirst},
        {"orders.invalid-windows", ProveInvalidWindows},
    };
    for (const Row& row : kRows) {
        report.Prove(row.promise, [&](Finding& finding) {
            ModuleLibrary library(module);
            Host host(library);
            row.prove(finding, host);
            host.ShutDown();
            library.Unload();
            ExpectNothingLeft(finding, host);
        });
    }
}

}  // namespace Conformance
