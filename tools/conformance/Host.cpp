#include "Host.h"

#include "HostInterfaces.h"
#include "PlatformLibraries.h"

#include <algorithm>
#include <chrono>
#include <exception>

namespace Conformance {

namespace {

constexpr std::uint32_t kKeyDown = 1;
constexpr std::uint32_t kKeys[] = {35, 38, 40, 33, 34, 36, 13, 46};

struct KeyEvent {
    Element* target;
    std::uint32_t kind, key, modifiers, handled;
};

struct BehaviourEvent {
    Element* target;
    std::uint32_t kind, handled;
};

struct PageRange {
    std::uint32_t count, reserved;
    const std::uint32_t* pages;
};

}  // namespace

Host::Host(ModuleLibrary& library) : library_(library)
{
    VxHostRestartSingletonStorage();
    for (const HostInterface& each : HostInterfaces()) {
        auto& object = objects_[each.name];
        object = std::make_unique<HostObject>();
        object->Init(*this, witness_, each.name, each.methods);
        each.fill(*object);
        if (each.isService) {
            VxHostRegisterService(each.name, object.get());
        }
    }
    page_ = std::make_unique<Page>(Of("UIWnd"), Of("UIHtmlEngine"));
}

Host::~Host()
{
    ShutDown();
}

// --- For the entries ----------------------------------------------------------------------------

// A resource is an object of its own, found by its file's name.
HostObject* Host::HandOutResource(const char16_t* path)
{
    const std::lock_guard lock(mutex_);
    std::string name;
    for (; *path != 0; ++path) {
        name += static_cast<char>(*path >= u'a' && *path <= u'z' ? *path - u'a' + u'A' : *path);
    }
    if (FindEmbeddedFile(library_.instance, "UI-DATA", name.c_str()).empty()) {
        return nullptr;
    }
    const auto [entry, isNew] = resources_.try_emplace(name);
    if (isNew) {
        entry->second = std::make_unique<HostObject>();
        entry->second->Init(*this, witness_, entry->first.c_str(), 1);
        entry->second->Method<0>([](HostObject& self, const char** data, std::uint32_t* size) {
            const std::string_view bytes =
                FindEmbeddedFile(self.host->Library().instance, "UI-DATA", self.interfaceName);
            *data = bytes.data();
            *size = static_cast<std::uint32_t>(bytes.size());
        });
    }
    return entry->second->Retained();
}

std::uint32_t Host::Post(void (*run)(void* record), void* record)
{
    const std::lock_guard lock(mutex_);
    if (!takesCalls_) {
        return kResultDamagedTable;
    }
    PostedRecord seen;
    std::memcpy(&seen, record, sizeof seen);
    if (std::string(seen.tag, 4) != kPostedTag || seen.size != kPostedSize) {
        witness_.Violation("a posted record begins with " + std::string(seen.tag, 4) + ", " +
                           std::to_string(seen.size));
    }
    ++postedCalls;
    runner = run;
    queue_.push_back({run, record});
    posted_.notify_all();
    return kResultOk;
}

// --- Steps of a life ----------------------------------------------------------------------------

// Waits for the next call while a list is being loaded.
bool Host::NextCall(PostedCall& call)
{
    const bool isLoading = takesCalls_ && page_->IsLoading();
    std::unique_lock lock(mutex_);
    if (isLoading &&
        !posted_.wait_for(lock, std::chrono::seconds(20), [this] { return !queue_.empty(); })) {
        witness_.Violation("a list did not arrive within 20 seconds");
    }
    if (queue_.empty()) {
        return false;
    }
    call = queue_.front();
    queue_.pop_front();
    return true;
}

void Host::Run()
{
    for (PostedCall call{}; NextCall(call);) {
        call.run(call.record);
    }
}

ModuleObject Host::CreatePlugin() const
{
    void* object = nullptr;
    library_.Create(AtomOf(kPublicObject), &object);
    return ModuleObject(object);
}

ModuleObject AskPlugin(const ModuleObject& plugin, unsigned slot)
{
    void* object = nullptr;
    void** const block[] = {&object};
    plugin.Call(slot, &block);
    return ModuleObject(object);
}

void Host::StartPanel()
{
    plugin = CreatePlugin();
    plugin.Call(PluginSlot::kHandshake);
    try {
        plugin.Call(PluginSlot::kRegisterResources);
    } catch (const std::exception&) {
        // A host whose engine fails has a panel without resources.
    }
    const void* const begin[] = {&Of("UIWnd"), &Of("HostContext")};
    plugin.Call(PluginSlot::kInitBegin, &begin);
    const void* const html[] = {&Of("UIWnd"), &Of("UIHtmlEngine")};
    plugin.Call(PluginSlot::kInitHtml, &html);
    plugin.Call(PluginSlot::kInitSubscription);
    handler = AskPlugin(plugin, PluginSlot::kInitHandler);
    page_->Attach(page_->Body(), handler);
    plugin.Call(PluginSlot::kInitComplete);
    plugin.Call(PluginSlot::kCreateControl);
    model = AskPlugin(plugin, PluginSlot::kGetUIModel);
    Run();
}

void Host::HandOverDocuments()
{
    model.Call(ModelSlot::kSetCollection, &Of("UIDocumentsCollection"));
    Run();
}

void Host::OpenView()
{
    viewIsOpen = true;
    HostObject* const view = &Of("UIDocumentView");
    Fire("UIDocumentsCollection", 8, view);
    Fire("UIDocumentsCollection", 11, view);
    Run();
}

std::uint32_t Host::PressKey(std::uint32_t key)
{
    KeyEvent event{page_->Find("div.results-container"), kKeyDown, key, 0, 0};
    return ContainerHandler().Call(HandlerSlot::kHandleKey, event.target, &event);
}

void Host::UseView()
{
    if (!ContainerHandler()) {
        return;
    }
    for (const std::uint32_t key : kKeys) {
        PressKey(key);
    }
    for (const char* target : {"#expand-all", "#move-top", "li[annot-name"}) {
        BehaviourEvent event{page_->Find(target), 0, 0};
        ContainerHandler().Call(HandlerSlot::kHandleEvent, event.target, &event);
    }
    const std::uint32_t pages[] = {0};
    const PageRange range{1, 0, pages};
    const auto change = [&] {
        Fire("BLDocument", 78, std::uint32_t{4}, std::uint32_t{0}, TheAnnotation());
        Fire("BLDocumentView", 99, std::uint32_t{0}, TheAnnotation());
        Fire("BLDocumentView", 51, &Of("BLSelection"));
        Fire("BLDocumentView", 42, std::uint32_t{0}, 1.5f);
        Fire("BLDocumentView", 182, true);
        Fire("BLDocument", 39, std::uint32_t{0}, &range);
    };
    change();
    Run();
    std::thread(change).join();
    Run();
    ContainerHandler().Call(HandlerSlot::kLocaleChanged);
    Run();
}

void Host::CloseView()
{
    HostObject* const view = &Of("UIDocumentView");
    Fire("UIDocumentsCollection", 14, view);
    viewIsOpen = false;
    Fire("UIDocumentsCollection", 17, view);
    Run();
}

void Host::LetDie(std::string_view name)
{
    Of(name).ownReferences = 0;
    Of(name).Release();
    witness_.FreeCallablesOf(&Of(name));
}

void Host::Live()
{
    StartPanel();
    HandOverDocuments();
    OpenView();
    UseView();
    CloseView();
    ShutDown();
}

void Host::ReleasePanelObjects()
{
    page_->DetachBelow(page_->Body());
    const auto released = [this](const char* name, std::uint32_t left) {
        if (left != 0) {
            released_.push_back(
                {"balance.module-objects",
                 std::string(name) + " keeps " + std::to_string(left) + " references, wanted 0"});
        }
    };
    for (const Attachment& attachment : page_->Attachments()) {
        if (attachment.element != page_->Body()) {
            released("a container's handler", attachment.referencesLeft);
        }
    }
    if (plugin) {
        plugin.Call(PluginSlot::kCleanup);
    }
    released("the panel handler", handler.ReleaseAndForget());
    released("the model", model.ReleaseAndForget());
    released("the plug-in", plugin.ReleaseAndForget());
}

void Host::ShutDown()
{
    if (std::exchange(isShutDown_, true)) {
        return;
    }
    Run();
    ReleasePanelObjects();
    {
        const std::lock_guard lock(mutex_);
        takesCalls_ = false;
    }
    Run();
    VxHostTearDownSingletonStorage();
    VxHostUnregisterAllServices();
}

// --- What was seen ------------------------------------------------------------------------------

ModuleObject Host::ContainerHandler()
{
    for (const Attachment& attachment : page_->Attachments()) {
        if (attachment.isAttached && attachment.element != page_->Body()) {
            return attachment.handler;
        }
    }
    return {};
}

std::vector<SubscribedEvent> Host::SubscribedEvents() const
{
    std::vector<SubscribedEvent> events;
    for (const auto& each : witness_.Subscriptions()) {
        events.push_back({each.source->interfaceName, each.slot});
    }
    return events;
}

std::vector<Remainder> Host::Remainders() const
{
    std::vector<Remainder> left = released_;
    const auto expect = [&left](const char* promise, const std::string& what, auto seen,
                                auto wanted) {
        if (seen != wanted) {
            left.push_back({promise, what + " is " + std::to_string(seen) + ", wanted " +
                                         std::to_string(wanted)});
        }
    };
    for (const Objects& objects : {std::cref(objects_), std::cref(resources_)}) {
        for (const auto& [name, object] : objects) {
            expect("balance.references", "count of " + name, object->references.load(),
                   object->ownReferences);
            expect("balance.weak-records", "holders of " + name, object->weak.holders.load(), 1u);
        }
    }
    for (const auto& each : witness_.Subscriptions()) {
        expect("balance.subscriptions",
               std::string(each.source->interfaceName) + " slot " + std::to_string(each.slot) +
                   " ended",
               each.ended || each.source->references == 0, true);
    }
    const HostObject& engine = *objects_.at("UIHtmlEngine");
    if (engine.tableSize > 8 && engine.entries[1] != nullptr) {  // it can end uses
        expect("balance.element-uses", "uses left", page_->UsesLeft(), 0u);
    }
    expect("balance.pdf-records", "references left", CountPdfReferences(), 0);
    return left;
}

}  // namespace Conformance
