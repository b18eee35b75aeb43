#include "Host.h"

#include "PdfLibrary.h"
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

// --- Entries -------------------------------------------------------------------------------------

template <Peer Which>
std::uint32_t HandOutPeer(HostObject& self, HostObject** object)
{
    return self.host->HandOut(Which, object);
}

std::uint32_t CreateRegistration(HostObject& self, void* instance, HostObject** registration)
{
    self.host->instance = instance;
    return self.host->HandOut(Peer::kUIResourceRegistration, registration);
}

std::uint32_t Register(HostObject& self, HostObject*)
{
    ++self.host->registrations;
    return kResultOk;
}

std::uint32_t GetResource(HostObject& self, const char16_t* path, HostObject** resource)
{
    return self.host->HandOutResource(path, resource);
}

std::uint32_t GetThreadObject(HostObject& self, std::uint32_t, HostObject** thread)
{
    return self.host->HandOut(Peer::kUIThread, thread);
}

std::uint32_t PostCall(HostObject& self, void (*run)(void* record), void* record)
{
    return self.host->Post(run, record);
}

using ViewCollector = void (*)(void* context, HostObject* view);

std::uint32_t EnumerateViews(HostObject& self, ViewCollector collector, void* context)
{
    if (self.host->viewIsOpen) {
        collector(context, &self.host->Of(Peer::kUIDocumentView));
    }
    return kResultOk;
}

std::uint32_t HandOutNone(HostObject&, HostObject** object)
{
    *object = nullptr;
    return kResultOk;
}

std::uint32_t AnswerFlag(HostObject&, bool* flag)
{
    *flag = false;
    return kResultOk;
}

std::uint32_t AnswerNumber(HostObject&, std::uint32_t* number)
{
    *number = 0;
    return kResultOk;
}

std::uint32_t AnswerViewNumber(HostObject&, std::uint64_t* number)
{
    *number = 1;
    return kResultOk;
}

std::uint32_t TakePointer(HostObject&, const void*)
{
    return kResultOk;
}

std::uint32_t TakeNumber(HostObject&, std::uint32_t)
{
    return kResultOk;
}

std::uint32_t FocusAnnotation(HostObject&, std::uint32_t, void*)
{
    return kResultOk;
}

std::uint32_t IsPermitted(HostObject&, std::uint32_t, std::uint32_t, std::uint32_t, bool* permitted)
{
    *permitted = true;
    return kResultOk;
}

std::uint32_t GetPageScale(HostObject&, std::uint32_t, double* scale)
{
    *scale = 1;
    return kResultOk;
}

std::uint32_t GetPageRotation(HostObject&, std::uint32_t, std::uint32_t* degrees)
{
    *degrees = 0;
    return kResultOk;
}

std::uint32_t GetPageCount(HostObject&, std::int32_t* count)
{
    *count = 1;
    return kResultOk;
}

std::uint32_t AcquirePageAt(HostObject&, std::uint32_t index, void** page)
{
    *page = index == 0 ? AcquirePage() : nullptr;
    return index == 0 ? kResultOk : kResultOutOfRange;
}

std::uint32_t ExecuteCommand(HostObject&, std::uint32_t command, const void*)
{
    return command == AtomOf("Annot_Delete") ? kResultOk : kResultNotFound;
}

std::uint32_t BuildHighlight(HostObject& self, const void*, HostObject** highlight)
{
    return self.host->HandOut(Peer::kHighlight, highlight);
}

std::uint32_t GetString(HostObject&, const char16_t** text, const char16_t* key)
{
    *text = key;
    return kResultOk;
}

std::uint32_t GetSectionString(HostObject&, const char16_t** text, const char16_t*,
                               const char16_t* key)
{
    *text = key;
    return kResultOk;
}

std::uint32_t GetFunctionTable(HostObject&, const void** table)
{
    *table = PdfFunctionTable();
    return kResultOk;
}

void FillCollection(HostObject& object)
{
    Fill<1, HandOutNone>(object);
    Fill<2, EnumerateViews>(object);
    Fill<22, HandOutNone>(object);
    FillEvent<8>(object);
    FillEvent<11>(object);
    FillEvent<14>(object);
    FillEvent<17>(object);
    FillEvent<24>(object);
    FillEvent<27>(object);
    FillEvent<30>(object);
    FillEvent<33>(object);
}

void FillView(HostObject& object)
{
    Fill<0, HandOutPeer<Peer::kBLDocument>>(object);
    Fill<1, AnswerFlag>(object);
    Fill<2, AnswerNumber>(object);
    Fill<3, TakePointer>(object);
    Fill<4, FocusAnnotation>(object);
    Fill<5, IsPermitted>(object);
    Fill<8, TakeNumber>(object);
    Fill<9, TakeNumber>(object);
    Fill<10, GetPageScale>(object);
    Fill<11, GetPageRotation>(object);
    Fill<12, TakePointer>(object);
    Fill<13, AnswerViewNumber>(object);
    FillEvent<6>(object);
    FillEvent<20>(object);
    FillEvent<25>(object);
    FillEvent<28>(object);
    FillEvent<42>(object);
    FillEvent<51>(object);
    FillEvent<54>(object);
    FillEvent<94>(object);
    FillEvent<99>(object);
    FillEvent<126>(object);
    FillEvent<182>(object);
    FillEvent<185>(object);
    FillEvent<188>(object);
    FillEvent<199>(object);
}

void FillDocument(HostObject& object)
{
    Fill<0, GetPageCount>(object);
    Fill<1, AcquirePageAt>(object);
    Fill<2, ExecuteCommand>(object);
    FillEvent<39>(object);
    FillEvent<78>(object);
}

std::uint32_t GetData(HostObject& self, const char** data, std::uint32_t* size)
{
    const std::string_view bytes = self.host->BytesOf(self);
    *data = bytes.data();
    *size = static_cast<std::uint32_t>(bytes.size());
    return kResultOk;
}

struct PeerRow {
    Peer peer;
    const char* name;
    unsigned methods;
    void (*fill)(HostObject& object);
    bool isService = false;
};

constexpr PeerRow kPeers[] = {
    {Peer::kUIEngine, "UIEngine", 8,
     [](HostObject& object) {
         Fill<0, HandOutPeer<Peer::kUIResources>>(object);
         Fill<4, CreateRegistration>(object);
         Fill<7, Register>(object);
     },
     true},
    {Peer::kUIResources, "UIResources", 1,
     [](HostObject& object) { Fill<0, GetResource>(object); }},
    {Peer::kUIResource, "UIResource", 1, [](HostObject& object) { Fill<0, GetData>(object); }},
    {Peer::kUIResourceRegistration, "UIResourceRegistration", 1, [](HostObject&) {}},
    {Peer::kUIService, "UIService", 13,
     [](HostObject& object) {
         Fill<5, HandOutPeer<Peer::kUIMainFrame>>(object);
         Fill<12, GetThreadObject>(object);
     },
     true},
    {Peer::kUIThread, "UIThread", 2, [](HostObject& object) { Fill<1, PostCall>(object); }},
    {Peer::kUIWnd, "UIWnd", 33, FillWindow},
    {Peer::kUIHtmlEngine, "UIHtmlEngine", 19, FillEngine},
    {Peer::kUIMainFrame, "UIMainFrame", 27, [](HostObject& object) { FillEvent<25>(object); }},
    {Peer::kUIDocumentsCollection, "UIDocumentsCollection", 35, FillCollection},
    {Peer::kUIDocumentView, "UIDocumentView", 3,
     [](HostObject& object) { Fill<2, HandOutPeer<Peer::kBLDocumentView>>(object); }},
    {Peer::kBLDocumentView, "BLDocumentView", 201, FillView},
    {Peer::kBLDocument, "BLDocument", 80, FillDocument},
    {Peer::kBLService, "BLService", 1,
     [](HostObject& object) { Fill<0, HandOutPeer<Peer::kBLAnnotNavigator>>(object); }, true},
    {Peer::kBLAnnotNavigator, "BLAnnotNavigator", 1,
     [](HostObject& object) { Fill<0, BuildHighlight>(object); }},
    {Peer::kBLSelection, "BLSelection", 1, [](HostObject&) {}},
    {Peer::kLocaleManager, "LocaleManager", 10,
     [](HostObject& object) {
         Fill<8, GetString>(object);
         Fill<9, GetSectionString>(object);
     },
     true},
    {Peer::kPDModelService, "PDModelService", 1,
     [](HostObject& object) { Fill<0, GetFunctionTable>(object); }, true},
    {Peer::kHighlight, "Highlight", 1, [](HostObject&) {}},
    {Peer::kContext, "HostContext", 1, [](HostObject&) {}},
};

const PeerRow& RowOf(Peer peer)
{
    return *std::find_if(std::begin(kPeers), std::end(kPeers),
                         [peer](const PeerRow& row) { return row.peer == peer; });
}

}  // namespace

Host::Host(ModuleLibrary& library) : library_(library)
{
    VxHostRestartSingletonStorage();
    for (const PeerRow& row : kPeers) {
        auto& object = objects_[static_cast<std::size_t>(row.peer)];
        object = std::make_unique<HostObject>();
        object->Init(*this, witness_, row.peer, row.name, row.methods);
        row.fill(*object);
        if (row.isService) {
            VxHostRegisterService(row.name, object.get());
        }
    }
    page_ = std::make_unique<Page>(Of(Peer::kUIWnd), Of(Peer::kUIHtmlEngine));
}

Host::~Host()
{
    ShutDown();
}

// --- For the entries
// -------------------------------------------------------------------------------

std::uint32_t Host::HandOut(Peer peer, HostObject** object)
{
    *object = Of(peer).Retained();
    return kResultOk;
}

std::uint32_t Host::HandOutNamed(std::uint32_t atom, HostObject** object)
{
    for (const Peer peer : {Peer::kUIMainFrame, Peer::kUIDocumentsCollection}) {
        if (atom == AtomOf(Of(peer).interfaceName)) {
            return HandOut(peer, object);
        }
    }
    return kResultNotFound;
}

std::uint32_t Host::HandOutResource(const char16_t* path, HostObject** object)
{
    const std::lock_guard lock(mutex_);
    auto& resource = resources_[path];
    if (resource == nullptr) {
        std::string name;
        for (const char16_t* unit = path; *unit != 0; ++unit) {
            name += static_cast<char>(*unit >= u'a' && *unit <= u'z' ? *unit - u'a' + u'A' : *unit);
        }
        resource = std::make_unique<Resource>();
        resource->bytes = FindEmbeddedFile(instance, "UI-DATA", name.c_str());
        const PeerRow& row = RowOf(Peer::kUIResource);
        resource->object.Init(*this, witness_, row.peer, row.name, row.methods);
        row.fill(resource->object);
    }
    *object = resource->bytes.empty() ? nullptr : resource->object.Retained();
    return kResultOk;
}

std::string_view Host::BytesOf(const HostObject& resource)
{
    const std::lock_guard lock(mutex_);
    for (const auto& [path, each] : resources_) {
        if (&each->object == &resource) {
            return each->bytes;
        }
    }
    return {};
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

// --- Steps of a life
// -------------------------------------------------------------------------------

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
    const void* const begin[] = {&Of(Peer::kUIWnd), &Of(Peer::kContext)};
    plugin.Call(PluginSlot::kInitBegin, &begin);
    const void* const html[] = {&Of(Peer::kUIWnd), &Of(Peer::kUIHtmlEngine)};
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
    model.Call(ModelSlot::kSetCollection, &Of(Peer::kUIDocumentsCollection));
    Run();
}

void Host::OpenView()
{
    viewIsOpen = true;
    HostObject* const view = &Of(Peer::kUIDocumentView);
    Fire(Peer::kUIDocumentsCollection, 8, view);
    Fire(Peer::kUIDocumentsCollection, 11, view);
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
        Fire(Peer::kBLDocument, 78, std::uint32_t{4}, std::uint32_t{0}, TheAnnotation());
        Fire(Peer::kBLDocumentView, 99, std::uint32_t{0}, TheAnnotation());
        Fire(Peer::kBLDocumentView, 51, &Of(Peer::kBLSelection));
        Fire(Peer::kBLDocumentView, 42, std::uint32_t{0}, 1.5f);
        Fire(Peer::kBLDocumentView, 182, true);
        Fire(Peer::kBLDocument, 39, std::uint32_t{0}, &range);
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
    HostObject* const view = &Of(Peer::kUIDocumentView);
    Fire(Peer::kUIDocumentsCollection, 14, view);
    viewIsOpen = false;
    Fire(Peer::kUIDocumentsCollection, 17, view);
    Run();
}

void Host::LetDie(Peer peer)
{
    Of(peer).ownReferences = 0;
    Of(peer).Release();
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

// --- What was seen
// ---------------------------------------------------------------------------------

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
        events.push_back({each.source->peer, each.slot});
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
    const auto expectObject = [&](const HostObject& object) {
        const std::string name = object.interfaceName;
        expect("balance.references", "count of " + name, object.references.load(),
               object.ownReferences);
        expect("balance.weak-records", "holders of " + name, object.weak.holders.load(), 1u);
    };
    for (const auto& object : objects_) {
        expectObject(*object);
    }
    for (const auto& [path, resource] : resources_) {
        expectObject(resource->object);
    }
    for (const auto& each : witness_.Subscriptions()) {
        expect("balance.subscriptions",
               std::string(each.source->interfaceName) + " slot " + std::to_string(each.slot) +
                   " ended",
               each.ended || each.source->references == 0, true);
    }
    const HostObject& engine = *objects_[static_cast<std::size_t>(Peer::kUIHtmlEngine)];
    if (engine.tableSize > 8 && engine.entries[1] != nullptr) {  // it can end uses
        expect("balance.element-uses", "uses left", page_->UsesLeft(), 0);
    }
    expect("balance.pdf-records", "references left", CountPdfReferences(), 0);
    return left;
}

}  // namespace Conformance
