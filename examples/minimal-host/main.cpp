// A minimal host of the Comments panel: opens a document with three comments, prints the list that
// the panel makes of them, clicks a comment, deletes it and ends. Read it from top to bottom: the
// steps stand in the order in which a host is built. Methods that it does not offer are optional.
#include "LoadedModule.h"
#include "Page.h"

#include "pdf-library/PDFunctionTable.h"
#include "pdf-library/PDModelService.SO.h"
#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "platform/EmbeddedResources.h"
#include "service-common/SingletonStaticData.h"
#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLService.SO.h"
#include "ui-engine/LocaleManager.SO.h"
#include "ui-engine/ModuleExports.h"
#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/UIInplacePlugin.SO.h"
#include "ui-engine/UIMainFrame.SO.h"
#include "ui-engine/UIService.SO.h"
#include "ui/UIDocumentPanelModel.SO.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <mutex>
#include <stdexcept>

void Require(bool condition, const std::string& otherwise)
{
    if (!condition) throw std::runtime_error(otherwise);
}

// --- 1. The UI thread, on which the panel lives. Its worker asks and posts beside it -------------
std::mutex g_mutex;  // of all that both threads use
std::condition_variable g_posted;
std::deque<std::pair<UIThread::Runner, void*>> g_calls;
BasicServiceObjectPtr<UIInplacePlugin> g_plugin;  // the panel, from step 4 on

// Runs what is posted until no list is being made. The loop of a real host runs to its end.
void RunCalls()
{
    const auto isLoading = [] {
        const auto preloaders = Select(g_page.front(), "div.picture[preloader]");
        return std::any_of(preloaders.begin(), preloaders.end(),
                           [](const Element* each) { return each->visibility == u"visible"; });
    };
    for (std::unique_lock lock(g_mutex); !g_calls.empty() || isLoading(); lock.lock()) {
        g_posted.wait_for(lock, std::chrono::seconds(10), [] { return !g_calls.empty(); });
        Require(!g_calls.empty(), "the list never came");
        const auto [run, record] = g_calls.front();
        g_calls.pop_front();
        lock.unlock();
        run(record);
    }
    // What the panel could not do in a call is its last error on this thread, which is thrown here.
    if (g_plugin) CheckServiceCall(g_plugin.Get(), kResultUnexpected);
}

// --- 2. Services, which the module asks for by name ----------------------------------------------
Platform::ModuleInstance g_instance;  // of the module whose files the engine finds

void OfferServices()
{
    Offer<UIThread::PostCall>([](UIThread::Runner run, void* record) {
        const std::lock_guard lock(g_mutex);
        g_calls.emplace_back(run, record);
        g_posted.notify_one();
    });
    OfferObject<UIService::GetThreadObject, UIThread>();
    OfferObject<UIService::GetMainFrame, UIMainFrame>();
    Offer<UIEngine::CreateRegistration>([](auto instance, UIResourceRegistration** registration) {
        g_instance = instance;
        g_object<UIResourceRegistration>->HandOut(registration);
    });
    OfferObject<UIEngine::GetResources, UIResources>();
    Offer<UIResources::GetResource>([](const char16_t* path, UIResource** resource) {
        std::string name;  // a file is named by its path in upper case
        for (; *path != 0; ++path) name += static_cast<char>(std::toupper(*path));
        const auto file = Platform::FindEmbeddedResource(g_instance, "UI-DATA", name.c_str());
        const auto found = PlainHostObject<UIResource>::Make();
        found->Offer<UIResource::GetData>([file](const std::uint8_t** data, std::uint32_t* size) {
            *data = file.data;
            *size = file.size;
        });
        found->HandOut(resource);
    });
    OfferObject<BLService::GetAnnotNavigator, BLAnnotNavigator>();
    OfferObject<BLAnnotNavigator::BuildHighlight, BLSelection>();  // an object of the host's choice
    // Without a method of "LocaleManager" the panel's texts are their keys.
    for (ServiceObject* service : std::initializer_list<ServiceObject*>{
             g_object<UIService>->Get(), g_object<UIEngine>->Get(), g_object<LocaleManager>->Get(),
             g_object<BLService>->Get(), g_object<PDModelService>->Get()}) {
        VxHostRegisterService(service->interfaceName, service);
    }
}

// --- 3. Documents: the PDF library, one document of two pages, and one view of it ----------------
struct _PDAnnotRec {  // never changes, as both threads read it
    const char* subtype;
    std::u16string_view contents;
    _PDRect rectangle;
};
struct _PDPageRec {  // a page as it was when it was acquired
    std::vector<_PDAnnotRec*> annotations;
};
_PDAnnotRec g_text{"Text", u"Is this figure right?", {50, 700, 70, 720}};
_PDAnnotRec g_highlight{"Highlight", u"It costs 25 \u20AC.", {100, 400, 300, 420}};
_PDAnnotRec g_square{"Square", u"", {200, 100, 400, 300}};
std::vector<_PDPageRec> g_pages = {{{&g_text, &g_highlight}}, {{&g_square}}};
std::deque<_PDPageRec> g_acquired;  // what is handed out lives as long as the program
std::atomic<int> g_recordsHeld = 0;

// clang-format off
template <class Record, int kStep>
void Count(Record* record) { if (record != nullptr) g_recordsHeld += kStep; }

ResultCode CountAnnots(_PDPageRec* page, std::uint32_t* count)
{
    return *count = static_cast<std::uint32_t>(page->annotations.size()), kResultOk;
}
ResultCode AnnotAt(_PDPageRec* page, std::uint32_t position, _PDAnnotRec** annotation)
{
    const bool exists = position < page->annotations.size();
    Count<_PDAnnotRec, 1>(*annotation = exists ? page->annotations[position] : nullptr);
    return exists ? kResultOk : kResultOutOfRange;
}
ResultCode Contents(_PDAnnotRec* annotation, PDTextSink sink, void* context)
{
    const std::u16string_view text = annotation->contents;
    return sink(context, text.data(), static_cast<std::uint32_t>(text.size())), kResultOk;
}
ResultCode IsEqual(_PDAnnotRec* a, _PDAnnotRec* b, bool* is) { return *is = a == b, kResultOk; }
ResultCode IsListed(_PDAnnotRec*, bool* listed) { return *listed = true, kResultOk; }
ResultCode Subtype(_PDAnnotRec* a, Atom* out) { return VxGetAtomFromString(a->subtype, out); }
ResultCode NoText(_PDAnnotRec*, PDTextSink, void*) { return kResultOk; }
ResultCode NoDate(_PDAnnotRec*, _PDDateRec* date) { return *date = {}, kResultOk; }
ResultCode Rectangle(_PDAnnotRec* a, _PDRect* out) { return *out = a->rectangle, kResultOk; }

const PDFunctionTable kPdfLibrary = {
    sizeof(PDFunctionTable), 1,
    Count<_PDPageRec, 1>, Count<_PDPageRec, -1>, Count<_PDAnnotRec, 1>, Count<_PDAnnotRec, -1>,
    CountAnnots, AnnotAt, IsEqual, IsListed, Subtype, Contents, NoText, NoText, NoDate, NoDate,
    Rectangle};
// clang-format on

void OfferDocuments()
{
    Offer<PDModelService::GetFunctionTable>([](auto** table) { *table = &kPdfLibrary; });
    Offer<BLDocument::GetPageCount>([](auto* count) { *count = std::int32_t(g_pages.size()); });
    Offer<BLDocument::AcquirePage>([](std::uint32_t index, _PDPageRec** page) {
        const std::lock_guard lock(g_mutex);
        *page = index < g_pages.size() ? &g_acquired.emplace_back(g_pages[index]) : nullptr;
        return Count<_PDPageRec, 1>(*page), *page == nullptr ? kResultOutOfRange : kResultOk;
    });
    Offer<BLDocument::ExecuteCommand>([](Atom command, const void* arguments) {
        if (command != AtomService::Resolve("Annot_Delete")) return kResultNotFound;
        const auto& which = *static_cast<const BLAnnotCommandArguments*>(arguments);
        std::unique_lock lock(g_mutex);
        auto& all = g_pages[which.pageIndex].annotations;
        all.erase(std::find(all.begin(), all.end(), which.annotation));
        lock.unlock();
        std::cout << "Host: deletes the " << which.annotation->subtype << '\n';
        g_object<BLDocument>->Fire<BLDocument::OnAnnotChanged>(  // whoever changes a document
            PDAnnotOperation::kRemoved, which.pageIndex, which.annotation);
        return kResultOk;
    });
    OfferObject<BLDocumentView::GetDocument, BLDocument>();
    Offer<BLDocumentView::GoTo>([](const BLGoToRequest* request) {
        std::cout << "Host: shows page " << request->pageIndex + 1 << " at ("
                  << request->target.left << ", " << request->target.bottom << ")\n";
    });
    Offer<BLDocumentView::FocusAnnotation>([](std::uint32_t page, _PDAnnotRec* annotation) {
        std::cout << "Host: focuses the " << annotation->subtype << '\n';
        g_object<BLDocumentView>->Fire<BLDocumentView::OnInputHandleFocusAnnot>(page, annotation);
    });
    OfferObject<UIDocumentView::GetDocumentView, BLDocumentView>();
}

// --- 4. The panel: a plug-in, its handler for the page and its model for the documents -----------
constexpr const char* kPanelPage = "DOCUMENT-PANEL-COMMENTS/PANEL.HTM";
BasicServiceObjectPtr<UIDocumentPanelModel> g_model;

void StartPanel(CreateServiceObjectExport create)
{
    ServiceObject* object = nullptr;
    if (create != nullptr) create(AtomService::Resolve("CommentsPanelInplacePlugin"), &object);
    Require(object != nullptr, "the library is no module of a panel");
    UIInplacePlugin* const plugin = static_cast<UIInplacePlugin*>(object);
    g_plugin = BasicServiceObjectPtr<UIInplacePlugin>::Adopt(plugin);

    CallMethod<UIInplacePlugin::Handshake>(plugin);
    CallMethod<UIInplacePlugin::RegisterResources>(plugin);
    const UIInitBeginArguments begin{g_object<UIWnd>->Get(), g_object<UIService>->Get()};
    CallMethod<UIInplacePlugin::InitBegin>(plugin, &begin);
    const UIInitHtmlArguments html{g_object<UIWnd>->Get(), g_object<UIHtmlEngine>->Get()};
    CallMethod<UIInplacePlugin::InitHtml>(plugin, &html);
    CallMethod<UIInplacePlugin::InitSubscription>(plugin);
    BasicServiceObjectPtr<UIHandler> handler;
    const UIInitHandlerArguments initHandler{handler.Receive()};
    CallMethod<UIInplacePlugin::InitHandler>(plugin, &initHandler);
    LoadPage(Platform::FindEmbeddedResource(g_instance, "UI-DATA", kPanelPage));
    CallMethod<UIHtmlEngine::AttachHandler>(g_object<UIHtmlEngine>->Get(),
                                            First(g_page.front(), "body"), handler.Get());
    CallMethod<UIInplacePlugin::InitComplete>(plugin);
    CallMethod<UIInplacePlugin::CreateControl>(plugin);
    const UIGetUIModelArguments getModel{g_model.Receive()};
    CallMethod<UIInplacePlugin::GetUIModel>(plugin, &getModel);
    CallMethod<UIDocumentPanelModel::SetDocumentsCollection>(
        g_model.Get(), g_object<UIDocumentsCollection>->Get());
    RunCalls();
}

// --- 5. Events: a document comes and goes --------------------------------------------------------
template <class... Events>
void TellOfView()
{
    (g_object<UIDocumentsCollection>->template Fire<Events>(g_object<UIDocumentView>->Get()), ...);
    RunCalls();
}

// --- 6. What the user sees and clicks ------------------------------------------------------------
void PrintList(const char* title)
{
    std::cout << title << '\n';
    for (const Element& each : g_page) {
        if (Matches(each, "div.icon")) std::cout << "  " << each.text << '\n';
        if (!Matches(each, "li[annot-name]")) continue;
        const Element* const contents = First(each, "p");
        std::cout << (Matches(each, ":current") ? "  > " : "    ")
                  << (contents == nullptr ? each.text
                                          : First(each, "h3")->text + ": " + contents->text)
                  << '\n';
    }
}

// A click goes to the handlers of the element and of those around it, from inside to outside.
void Click(const char* selector)
{
    Element* const target = First(g_page.front(), selector);
    Require(target != nullptr && (target->state & kStateDisabled) == 0,
            std::string(selector) + " cannot be clicked");
    UIBehaviourEvent event{target, kBehaviourClick, 0};
    for (Element* each = target; each != nullptr; each = each->parent) {
        if (each->handler) CallMethod<UIHandler::HandleEvent>(each->handler.Get(), each, &event);
    }
    RunCalls();
}

// --- 7. The end: the panel gives everything back -------------------------------------------------
void EndPanel()
{
    Remove(*First(g_page.front(), "body"));  // detaches the handlers
    CallMethod<UIInplacePlugin::Cleanup>(g_plugin.Get());
    g_model.Reset();
    g_plugin.Reset();
    RunCalls();                        // calls that were posted hold objects,
    VxHostTearDownSingletonStorage();  // and so does what all modules share
    VxHostUnregisterAllServices();
    for (const auto& [object, countListeners] : Objects()) {
        Require(object->GetRefCount(object) == 1 && countListeners() == 0,
                std::string(object->interfaceName) + " is still in use");
    }
    Require(g_usesHeld == 0 && g_recordsHeld == 0, "elements or annotations are still in use");
}

int main(int argc, char** argv)
{
    try {
        const char* const path = argc > 1 ? argv[1] : COMMENTS_PANEL_MODULE;
        const auto module = LoadModule(path);
        Require(module != nullptr, std::string(path) + " cannot be loaded");
        OfferServices();
        OfferDocuments();
        OfferPage();
        StartPanel(
            reinterpret_cast<CreateServiceObjectExport>(FindExport(module, "CreateServiceObject")));
        using Collection = UIDocumentsCollection;
        TellOfView<Collection::OnDocumentViewCreated, Collection::OnDocumentViewActivated>();
        PrintList("The panel lists:");
        Click("li[annot-name=\"1_0\"]");
        PrintList("After a click on the third comment:");
        Click("#delete");
        PrintList("After a click on its button Delete:");
        TellOfView<Collection::OnDocumentViewDeactivated, Collection::OnDocumentViewDestroyed>();
        EndPanel();
        Require(UnloadModule(module), "the module cannot be unloaded");
        std::cout << "The panel has given everything back.\n";
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "minimal-host: " << error.what() << '\n';
        std::_Exit(EXIT_FAILURE);  // the panel may be at work: nothing is destroyed under it
    }
}
