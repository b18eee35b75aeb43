// The plug-in from loading to unloading, called as a host calls it, in order and out of order.
#include "PanelFixture.h"

#include "platform-libraries/ServiceProviderHost.h"
#include "platform/Threads.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"
#include "services/ModuleLibrary.h"
#include "services/ResourceStore.h"
#include "ui-engine/PluginGate.h"

#include <cstring>
#include <thread>

namespace PanelTests {
namespace {

using namespace Workbench;

// A plug-in of the module that no panel of the host stands around.
class Lifecycle : public PanelTest {
protected:
    void SetUp() override
    {
        library = std::make_unique<ModuleLibrary>(DefaultModule());
        BasicServiceObjectPtr<ServiceObject> object = library->Create("CommentsPanelInplacePlugin");
        ASSERT_EQ(CheckServiceObject(object.Get(), UIInplacePlugin::kName), kResultOk);
        plugin = BasicServiceObjectPtr<UIInplacePlugin>::Adopt(
            static_cast<UIInplacePlugin*>(object.Detach()));
    }
    void TearDown() override
    {
        plugin.Reset();
        PanelTest::TearDown();
        const auto modules = ResourceStore::Instance().Modules();
        if (library->Unload()) {
            for (const Platform::ModuleInstance module : modules) {
                ResourceStore::Instance().Forget(module);
            }
        }
    }

    template <class M, class... Args>
    ResultCode Call(Args... arguments)
    {
        return CallMethodUnchecked<M>(plugin.Get(), arguments...).code;
    }
    BasicServiceObjectPtr<UIHandler> InitHandler()
    {
        BasicServiceObjectPtr<UIHandler> handler;
        const UIInitHandlerArguments arguments{handler.Receive()};
        EXPECT_EQ(Call<UIInplacePlugin::InitHandler>(&arguments), kResultOk);
        EXPECT_EQ(CheckServiceObject(handler.Get(), UIHandler::kName), kResultOk);
        return handler;
    }
    BasicServiceObjectPtr<UIDocumentPanelModel> GetUIModel()
    {
        BasicServiceObjectPtr<UIDocumentPanelModel> model;
        const UIGetUIModelArguments arguments{model.Receive()};
        EXPECT_EQ(Call<UIInplacePlugin::GetUIModel>(&arguments), kResultOk);
        EXPECT_EQ(CheckServiceObject(model.Get(), UIDocumentPanelModel::kName), kResultOk);
        return model;
    }
    // Calls that the model posts when it is given the documents; they are run.
    std::size_t CallsPostedBy(UIDocumentPanelModel* model, UIDocumentsCollection* collection)
    {
        EXPECT_EQ(
            CallMethodUnchecked<UIDocumentPanelModel::SetDocumentsCollection>(model, collection)
                .code,
            kResultOk);
        const std::size_t posted = host.State().loop.WaitingCount();
        host.State().loop.RunWaiting();
        return posted;
    }

    // The plug-in's own members, behind its ten methods, by their offsets.
    enum Offset {
        kHostContext = 152,
        kWindow = 160,
        kHandler = 168,
        kModel = 176,
        kEndOfObject = 200
    };
    const char* MemberAt(Offset offset) const
    {
        return reinterpret_cast<const char*>(plugin.Get()) + offset;
    }
    const void* Member(Offset offset) const
    {
        const void* pointer = nullptr;
        std::memcpy(&pointer, MemberAt(offset), sizeof pointer);
        return pointer;
    }

    std::unique_ptr<ModuleLibrary> library;
    BasicServiceObjectPtr<UIInplacePlugin> plugin;
};

TEST_F(Lifecycle, EveryStepAnswersAsTheInterfaceSays)
{
    UIWnd* const window = host.Window();
    const UIInitBeginArguments begin{window, window};
    const UIInitHtmlArguments html{window, window};
    const UIGetUIModelArguments noModel{nullptr};

    EXPECT_EQ(Call<UIInplacePlugin::Handshake>(), 0u);
    EXPECT_EQ(Call<UIInplacePlugin::RegisterResources>(), 0u);
    EXPECT_EQ(Call<UIInplacePlugin::InitBegin>(&begin), 0u);
    EXPECT_EQ(Call<UIInplacePlugin::InitHtml>(&html), 1u);
    EXPECT_EQ(Call<UIInplacePlugin::InitSubscription>(), 1u);
    InitHandler();
    EXPECT_EQ(Call<UIInplacePlugin::InitComplete>(), 0u);
    EXPECT_EQ(Call<UIInplacePlugin::CreateControl>(), 1u);
    GetUIModel();
    EXPECT_EQ(Call<UIInplacePlugin::Cleanup>(), 0u);
    EXPECT_EQ(Call<UIInplacePlugin::Cleanup>(), 0u);

    EXPECT_EQ(Call<UIInplacePlugin::GetUIModel>(&noModel), 3u);
    EXPECT_EQ(TakeError(plugin.Get()), "UIInplacePlugin::GetUIModel() failed, code: 3");
}

TEST_F(Lifecycle, ResourcesAreThereOnceTheyAreRegistered)
{
    constexpr const char16_t* kPanelPage = u"document-panel-comments/panel.htm";
    EXPECT_EQ(ResourceStore::Instance().Find(kPanelPage).data, nullptr);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Call<UIInplacePlugin::RegisterResources>(), 0u);
        EXPECT_NE(ResourceStore::Instance().Find(kPanelPage).data, nullptr);
        EXPECT_EQ(ResourceStore::Instance().Modules().size(), 1u);
    }
}

TEST_F(Lifecycle, AMissingEngineReachesTheHostAsAnException)
{
    VxHostRefuseService("UIEngine", kResultFactoryFailed, 0);
    try {
        Call<UIInplacePlugin::RegisterResources>();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const ServiceObjectException& failure) {
        EXPECT_EQ(failure.Code(), kResultFactoryFailed);
    }
    char text[24] = "before";
    const auto callThroughGate = [&](std::uint32_t slot) {
        return PluginGateCall(plugin.Get(), slot, nullptr, text, sizeof text);
    };
    EXPECT_EQ(callThroughGate(UIInplacePlugin::RegisterResources::kSlot), kResultFactoryFailed);
    EXPECT_STREQ(text, "Fail to query UIEngine ") << "cut to the room there is";
    EXPECT_EQ(callThroughGate(UIInplacePlugin::InitBegin::kSlot), 3u);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(callThroughGate(UIInplacePlugin::Cleanup::kSlot + 1), 8u);
    VxHostRegisterService("UIEngine", nullptr);
    EXPECT_EQ(Call<UIInplacePlugin::RegisterResources>(), 0u) << "no engine, no failure";
    EXPECT_EQ(callThroughGate(UIInplacePlugin::RegisterResources::kSlot), 0u);
}

TEST_F(Lifecycle, AnInvalidWindowIsIgnoredWithoutAFailure)
{
    using Table = SODetails::ServiceObjectTable<UIWnd>;
    const auto broken = [&](auto&& breakIt) {
        Table table;
        std::memcpy(&table, static_cast<void*>(host.Window()), sizeof table);
        breakIt(table);
        return table;
    };
    struct Row {
        const char* name;
        Table table;
    };
    Row rows[] = {
        {"sound", broken([](Table&) {})},
        {"another interface", broken([](Table& table) { ++table.header.interfaceId; })},
    };
    for (Row& row : rows) {
        SCOPED_TRACE(row.name);
        const UIInitBeginArguments begin{&row.table.header, host.Window()};
        EXPECT_EQ(Call<UIInplacePlugin::InitBegin>(&begin), 0u);
        EXPECT_EQ(Member(kHostContext), host.Window());
        EXPECT_EQ(Member(kWindow), &row == rows ? &row.table.header : nullptr);
        EXPECT_EQ(Call<UIInplacePlugin::Cleanup>(), 0u);
    }
    const UIInitBeginArguments noWindow{nullptr, host.Window()};
    EXPECT_EQ(Call<UIInplacePlugin::InitBegin>(&noWindow), 0u);
}

TEST_F(Lifecycle, HandlerAndModelAreOnePairUntilCleanup)
{
    EXPECT_EQ(Member(kHandler), nullptr);
    const auto model = GetUIModel();  // before InitHandler: makes both
    EXPECT_NE(Member(kHandler), nullptr);
    const auto handler = InitHandler();
    EXPECT_EQ(Member(kHandler), handler.Get());
    EXPECT_EQ(Member(kModel), model.Get());
    EXPECT_EQ(std::memcmp(MemberAt(kEndOfObject), "EOSO", 4), 0);
    EXPECT_EQ(GetUIModel(), model);
    EXPECT_EQ(InitHandler(), handler);
    EXPECT_EQ(handler->GetRefCount(handler.Get()), 2u) << "the plug-in's and this";
    EXPECT_EQ(model->GetRefCount(model.Get()), 2u);

    Call<UIInplacePlugin::Cleanup>();
    EXPECT_EQ(Member(kHandler), nullptr);
    EXPECT_EQ(Member(kModel), nullptr);
    EXPECT_EQ(handler->GetRefCount(handler.Get()), 1u);
    EXPECT_EQ(model->GetRefCount(model.Get()), 1u);
    const auto nextHandler = InitHandler();
    EXPECT_NE(nextHandler, handler);
    EXPECT_NE(GetUIModel(), model);
}

TEST_F(Lifecycle, AModelWithoutItsHandlerDoesNothing)
{
    UIDocumentsCollection* const collection = host.Collection().AsInterface();
    const auto model = GetUIModel();
    TakeError(plugin.Get());
    EXPECT_EQ(CallsPostedBy(model.Get(), nullptr), 0u);
    EXPECT_EQ(CallsPostedBy(model.Get(), collection), 1u);
    const std::uint32_t held = collection->GetRefCount(collection);

    Call<UIInplacePlugin::Cleanup>();
    EXPECT_EQ(collection->GetRefCount(collection), held - 1) << "the handler's";
    EXPECT_EQ(CallsPostedBy(model.Get(), collection), 0u);
    EXPECT_EQ(collection->GetRefCount(collection), held - 1);

    using Model = UIDocumentPanelModel;
    BasicServiceObjectPtr<ServiceObject> none;
    EXPECT_EQ(CallMethodUnchecked<Model::GetConcreteModel>(model.Get(), none.Receive()).code, 1u);
    EXPECT_EQ(TakeError(plugin.Get()), "") << "declining is no error";
}

TEST_F(Lifecycle, WhatComesBeforeThePanelHasItsElementIsNotLost)
{
    struct Row {
        const char* name;
        void (*arrange)(ServiceObject* service);  // while the handler is made
        std::size_t posted;                       // 0: and while it is given the documents
    };
    const auto noService = [](ServiceObject*) { VxHostUnregisterService("UIService"); };
    const auto noThread = [](ServiceObject* service) { service->methodTableSize = 96; };
    const Row rows[] = {
        {"a sound host", [](ServiceObject*) {}, 1},
        {"no service", noService, 1},
        {"no service until it is attached", noService, 0},
        {"no thread object", noThread, 1},
        {"no thread object until it is attached", noThread, 0},
    };
    const ViewPtr view = host.OpenView(MakeDocument(FivePages()));
    const auto child = UIDocumentsCollectionObject::Make(state);
    const auto inChild = UIDocumentViewObject::Make(BLDocumentViewObject::Make(
        state, BLDocumentObject::Make(state, MakeDocument({{Comment("Ink")}}))));
    child->Add(inChild);
    Call<UIInplacePlugin::RegisterResources>();
    const auto page = ResourceStore::Instance().Find(u"document-panel-comments/panel.htm");
    BasicServiceObjectPtr<ServiceObject> service;
    ServiceProviderGetServiceObject(AtomService::Resolve("UIService"), service.Receive());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::uint32_t whole = service->methodTableSize;
        row.arrange(service.Get());
        const auto handler = InitHandler();
        const auto mend = [&] {
            service->methodTableSize = whole;
            VxHostRegisterService("UIService", service.Get());
        };
        if (row.posted != 0) {
            mend();
        }
        EXPECT_EQ(CallsPostedBy(GetUIModel().Get(), host.Collection().AsInterface()), row.posted);
        mend();
        host.MainFrame().AnnounceChildFrame(*UIDocumentFrameObject::Make(child).Get());
        host.Panel().LoadDocument({reinterpret_cast<const char*>(page.data), page.size});
        ElementHandle body = kNoElement;
        host.Panel().Document()->SelectFirst(host.Panel().Document()->Root(), "body", body);
        host.Panel().AttachHandler(body, handler.Get());
        Settle();
        EXPECT_EQ(OutlineOf(view), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
        if (row.posted != 0) {  // else nobody heard of the frame
            EXPECT_EQ(OutlineOf(inChild), "0:0_0* [ECRD]");
        }
        host.Panel().LoadDocument("");
        Call<UIInplacePlugin::Cleanup>();
    }
}

// A view whose event lasts until the handler that hears of it has been released for the last time.
class LastingView : public HostObject<LastingView, UIDocumentView> {
public:
    explicit LastingView(UIHandler* handler) : handler_(handler)
    {
        Offer<UIDocumentView::GetDocumentView, &LastingView::GetDocumentView>();
    }
    Platform::AutoResetEvent isAsked;

private:
    ResultCode GetDocumentView(BLDocumentView** view)
    {
        isAsked.Signal();
        while (handler_->GetRefCount(handler_) != 0) {
            std::this_thread::yield();  // it is there until the event has ended
        }
        HandOut(view_, view);
        return kResultOk;
    }

    UIHandler* const handler_;
    const BasicServiceObjectPtr<BLDocumentViewObject> view_ =
        BLDocumentViewObject::Make(nullptr, nullptr);
};

TEST_F(Lifecycle, AnEventOfAnotherThreadDoesNotReviveADyingHandler)
{
    auto handler = InitHandler();
    CallsPostedBy(GetUIModel().Get(), host.Collection().AsInterface());
    Call<UIInplacePlugin::Cleanup>();
    ASSERT_EQ(handler->GetRefCount(handler.Get()), 1u);
    const auto view = LastingView::Make(handler.Get());
    std::jthread firing([&] {
        host.State().Fire(host.Collection().Event<UIDocumentsCollection::OnDocumentViewCreated>(),
                          view->AsInterface());
    });
    view->isAsked.Wait();
    handler.Reset();
    firing.join();
    host.State().loop.RunWaiting();  // finds nothing of the handler
}

TEST_F(PanelTest, HandlersTellTheHostWhatTheyAre)
{
    host.StartPanel();
    TakeError();
    UIHandler* const handler = host.PanelHandler();
    std::uint32_t events = 0;
    UIElement element{};
    const char* name = nullptr;
    CallMethod<UIHandler::GetSubscribedEvents>(handler, &events);
    CallMethod<UIHandler::GetElementAttachedTo>(handler, &element);
    CallMethod<UIHandler::GetHandlerName>(handler, &name);
    EXPECT_EQ(events, 256u);
    EXPECT_EQ(host.Panel().Document()->TagName(ElementOf(element.handle)), "body");
    EXPECT_EQ(element.engine, host.Engine());
    EXPECT_THAT(name, testing::HasSubstr("CommentsPanelHandler"));
    EXPECT_EQ(CallMethodUnchecked<UIHandler::OnLocaleChanged>(handler).code, 1u);
    UIBehaviourEvent* const noEvent = nullptr;
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleEvent>(handler, element.handle, noEvent).code,
              1u)
        << "of no event does the panel itself take notice";
}

TEST(Module, LeavesTheProcessHoweverOftenItIsLoaded)
{
    const auto recordsBefore = Documents::CountLiveRecords();
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        Host host{HostOptions{}};
        host.StartPanel();
        EXPECT_EQ(ResourceStore::Instance().Modules().size(), 1u);
        ViewPtr view = host.OpenView(MakeDocument(FivePages()));
        host.HandOverDocuments();
        ASSERT_TRUE(host.RunUntilIdle());
        const auto list =
            ReadPanelView(*host.Panel().Document(), ContainerKey(view->View().AsInterface()));
        ASSERT_TRUE(list.has_value());
        EXPECT_EQ(Outline(*list), "0:0_0*,0_1 2:2_0 3:3_0,3_1 [ECRDB]");
        EXPECT_EQ(host.State().failures.Take().size(), 0u);
        // An item rendered and an error recorded on this thread must not keep the library.
        const UIInitBeginArguments nothing{};
        CallMethodUnchecked<UIInplacePlugin::InitBegin>(host.Plugin(), &nothing);
        auto* const document = view->View().Document();
        EXPECT_EQ(document->Publish(document->Content().ChangeContents(0, 0, u"changed")), "");
        view.Reset();
        EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
        ASSERT_EQ(ResourceStore::Instance().Modules().size(), 0u);
    }
    EXPECT_EQ(Documents::CountLiveRecords().annotations, recordsBefore.annotations);
}

}  // namespace
}  // namespace PanelTests
