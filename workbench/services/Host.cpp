#include "services/Host.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "services/ModuleBoundary.h"
#include "services/PanelElements.h"
#include "services/ResourceStore.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace Workbench {

namespace {

constexpr const char16_t* kPanelPage = u"document-panel-comments/panel.htm";

template <class T>
void ListService(const BasicServiceObjectPtr<T>& object)
{
    VxHostRegisterService(T::InterfaceType::kName, object->AsInterface());
}

template <class M, class... Args>
void CallModule(typename M::Interface* object, Args... arguments)
{
    const OnSide module(Side::kModule);
    CallMethod<M>(object, arguments...);
}

template <class T>
BasicServiceObjectPtr<ServiceObject> Header(const BasicServiceObjectPtr<T>& object)
{
    return BasicServiceObjectPtr<ServiceObject>::Retain(object->AsInterface());
}

}  // namespace

std::filesystem::path DefaultModule()
{
#if defined(_WIN32)
    return ProgramFolder() / "ui-document-panel-comments.dll";
#else
    return ProgramFolder() / "ui-document-panel-comments.so";
#endif
}

std::filesystem::path DefaultLocales()
{
    return ProgramFolder() / "locales";
}

Host::Host(HostOptions options)
    : options_(std::move(options)),
      state_(std::make_shared<HostState>()),
      locale_(LocaleManagerObject::Make(options_.locales)),
      mainFrame_(UIMainFrameObject::Make(state_)),
      collection_(UIDocumentsCollectionObject::Make(state_)),
      uiService_(UIServiceObject::Make(state_, mainFrame_)),
      panel_(std::make_shared<HtmlPanel>(state_, locale_)),
      engine_(UIHtmlEngineObject::Make(panel_)),
      window_(UIWndObject::Make(panel_, engine_->AsInterface()))
{
    locale_->SwitchTo(options_.language);
    panel_->SetInterfaces(Window(), Engine());
    window_->Provide(UIDocumentsCollection::kName, Header(collection_));
    window_->Provide(UIMainFrame::kName, Header(mainFrame_));

    VxHostRestartSingletonStorage();
    ListService(UIEngineObject::Make());
    ListService(uiService_);
    ListService(BLServiceObject::Make());
    ListService(PDModelServiceObject::Make());
    ListService(locale_);
}

Host::~Host()
{
    ShutDown();
}

void Host::StartPanel()
{
    library_ = std::make_unique<ModuleLibrary>(options_.module);
    CreatePlugin();
    state_->moduleErrors.Watch(options_.logsModuleErrors ? plugin_.Get() : nullptr);

    CallModule<UIInplacePlugin::Handshake>(plugin_.Get());
    CallModule<UIInplacePlugin::RegisterResources>(plugin_.Get());
    const UIInitBeginArguments begin{Window(), uiService_->AsInterface()};
    CallModule<UIInplacePlugin::InitBegin>(plugin_.Get(), &begin);
    const UIInitHtmlArguments html{Window(), Engine()};
    CallModule<UIInplacePlugin::InitHtml>(plugin_.Get(), &html);
    LoadPanelDocument();
    CallModule<UIInplacePlugin::InitSubscription>(plugin_.Get());
    const UIInitHandlerArguments handler{handler_.Receive()};
    CallModule<UIInplacePlugin::InitHandler>(plugin_.Get(), &handler);
    AttachPanelHandler();
    CallModule<UIInplacePlugin::InitComplete>(plugin_.Get());
    panel_->CallHandlers<UIHandler::OnInplacePluginsInitialized>();
    CallModule<UIInplacePlugin::CreateControl>(plugin_.Get());
    const UIGetUIModelArguments model{model_.Receive()};
    CallModule<UIInplacePlugin::GetUIModel>(plugin_.Get(), &model);
    if (!model_) {
        throw std::runtime_error("the panel has no model");
    }
    panel_->CallHandlers<UIHandler::OnInitComplete>();
}

void Host::CreatePlugin()
{
    for (const std::string& name : library_->ObjectNames()) {
        BasicServiceObjectPtr<ServiceObject> object = library_->Create(name);
        if (CheckServiceObject(object.Get(), UIInplacePlugin::kName) == kResultOk) {
            plugin_ = BasicServiceObjectPtr<UIInplacePlugin>::Adopt(
                static_cast<UIInplacePlugin*>(object.Detach()));
            return;
        }
    }
    throw std::runtime_error(options_.module.string() + " offers no in-place plug-in");
}

void Host::LoadPanelDocument()
{
    const Platform::ResourceBytes page = ResourceStore::Instance().Find(kPanelPage);
    if (page.data == nullptr) {
        throw std::runtime_error(options_.module.string() + " has no page for its panel");
    }
    panel_->LoadDocument({reinterpret_cast<const char*>(page.data), page.size});
}

void Host::AttachPanelHandler()
{
    if (!handler_) {
        throw std::runtime_error("the panel has no handler");
    }
    HtmlEngine::ElementHandle body = HtmlEngine::kNoElement;
    panel_->Document()->SelectFirst(panel_->Document()->Root(), "body", body);
    const ResultCode code = panel_->AttachHandler(body, handler_.Get());
    CheckServiceCall(handler_.Get(), code);
    if (!IsExpectedResult(code)) {
        throw std::runtime_error("the panel's handler fails to attach with code " +
                                 std::to_string(code));
    }
    panel_->CallHandlers<UIHandler::OnDocumentComplete>();
}

void Host::HandOverDocuments()
{
    CallModule<UIDocumentPanelModel::SetDocumentsCollection>(model_.Get(),
                                                             collection_->AsInterface());
}

Host::ViewPtr Host::OpenView(std::shared_ptr<Documents::Document> content)
{
    content->ForceReadOnly(forcedReadOnly_);
    content->ForceAnnotationDeletionPermitted(forcedDeletionPermitted_);
    const auto view =
        BLDocumentViewObject::Make(state_, BLDocumentObject::Make(state_, std::move(content)));
    view->Connect();
    ViewPtr opened = UIDocumentViewObject::Make(view);
    collection_->Add(opened);
    collection_->Activate(opened);
    return opened;
}

Host::ViewPtr Host::OpenBeside(const ViewPtr& view)
{
    ViewPtr beside = UIDocumentViewObject::Make(BLDocumentViewObject::Make(
        state_, BasicServiceObjectPtr<BLDocumentObject>::Retain(view->View().Document())));
    uiService_->HandOutUnheld(true);
    collection_->Add(beside);
    state_->loop.RunWaiting();  // attaches its handler, which asks for the thread's object
    uiService_->HandOutUnheld(false);
    return beside;
}

void Host::CloseView(const ViewPtr& view)
{
    collection_->Close(view);
}

void Host::SwitchLanguage(const std::string& language)
{
    locale_->SwitchTo(language);
    panel_->OnLocaleChanged();
}

void Host::ForceDeletionPermitted(std::optional<bool> permitted)
{
    forcedDeletionPermitted_ = permitted;
    for (const ViewPtr& view : Views()) {
        view->View().Document()->Content().ForceAnnotationDeletionPermitted(permitted);
    }
}

std::size_t Host::LoadingCount() const
{
    return panel_->Document() == nullptr ? 0 : CountLoading(*panel_->Document());
}

bool Host::IsIdle() const
{
    // In this order: the foreign thread posts before it becomes idle.
    if (!state_->foreignThread.IsIdle() || state_->loop.WaitingCount() != 0) {
        return false;
    }
    return LoadingCount() <= state_->loop.HeldCount();
}

bool Host::RunUntilIdle(std::chrono::seconds limit)
{
    return state_->loop.RunUntil([this] { return IsIdle(); },
                                 std::chrono::steady_clock::now() + limit);
}

void Host::EndPanel()
{
    state_->foreignThread.Stop();
    state_->loop.Hold(false);
    state_->loop.RunWaiting();
    panel_->Close();
    handler_.Reset();
    if (plugin_) {
        const OnSide module(Side::kModule);
        CallMethodUnchecked<UIInplacePlugin::Cleanup>(plugin_.Get());
    }
    model_.Reset();
    state_->moduleErrors.Watch(nullptr);
    plugin_.Reset();
    // What a module still posts is not taken any more; what it has posted still holds its objects.
    state_->loop.End();
    state_->loop.RunWaiting();
}

void Host::ReleaseServices()
{
    VxHostTearDownSingletonStorage();
    VxHostUnregisterAllServices();
    window_->Provide(UIDocumentsCollection::kName, nullptr);
    window_->Provide(UIMainFrame::kName, nullptr);
    panel_->SetInterfaces(nullptr, nullptr);
    window_.Reset();
    engine_.Reset();
    panel_.reset();
    uiService_.Reset();
    collection_.Reset();
    mainFrame_.Reset();
    locale_.Reset();
}

std::vector<std::string> Host::ShutDown()
{
    if (std::exchange(isShutDown_, true)) {
        return {};
    }
    const std::vector<Platform::ModuleInstance> modules = ResourceStore::Instance().Modules();
    EndPanel();
    ReleaseServices();
    if (library_ != nullptr && library_->Unload()) {
        for (const Platform::ModuleInstance module : modules) {
            ResourceStore::Instance().Forget(module);
        }
    }
    return DescribeLiveObjects();
}

}  // namespace Workbench
