// The interface adapters: what a host gets for each outcome of a member function.
#include "HostFixture.h"

#include "service-common/WideText.h"
#include "ui-engine/UIWnd.SO.h"
#include "ui-engine/internal/CppUIDocumentPanelModelBase.h"
#include "ui-engine/internal/CppUIHandlerBase.h"
#include "ui-engine/internal/CppUIInplacePluginBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <typeinfo>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;
using SODetails::ServiceObjectCppTheConcrete;
using SODetails::ServiceObjectTraits;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::StartsWith;

const HtmlElementHandle kElement = reinterpret_cast<HtmlElementHandle>(0x1000);
using Body = std::function<ResultCode()>;

struct ProbeHandler : SOImpl::CppUIHandlerBase<ProbeHandler, ServiceObjectTraits> {
    UIElement ElementAttachedTo() const { return {kElement, nullptr}; }
    std::uint32_t SubscribedEvents() const { return body() == 0 ? 259u : 0u; }
    ResultCode Attached(UIWnd&, const UIElement&) { return body(); }
    ResultCode Detached() { return body(); }
    ResultCode HandleKey(HtmlElementHandle element, UIKeyEvent* event)
    {
        seenElement = element;
        seenEvent = event;
        return body();
    }

    Body body = [] { return kResultOk; };
    HtmlElementHandle seenElement = nullptr;
    UIKeyEvent* seenEvent = nullptr;
};

struct ProbePlugin : SOImpl::CppUIInplacePluginBase<ProbePlugin, ServiceObjectTraits> {
    ResultCode Handshake() { return body(); }
    ResultCode RegisterResources() { return body(); }
    ResultCode InitBegin(UIWnd*, ServiceObject&) { return body(); }
    ResultCode InitHtml() { return body(); }
    ResultCode InitSubscription() { return body(); }
    BasicServiceObjectPtr<UIHandler> InitHandler()
    {
        body();
        return BasicServiceObjectPtr<UIHandler>::Retain(handler);
    }
    ResultCode InitComplete() { return body(); }
    ResultCode CreateControl() { return body(); }
    BasicServiceObjectPtr<UIDocumentPanelModel> GetUIModel() { return nullptr; }
    ResultCode Cleanup() { return body(); }

    Body body = [] { return kResultOk; };
    UIHandler* handler = nullptr;
};

struct ProbeModel : SOImpl::CppUIDocumentPanelModelBase<ProbeModel, ServiceObjectTraits> {
    ResultCode SetDocumentsCollection(UIDocumentsCollection*) { return body(); }
    Body body = [] { return kResultOk; };
};

Body Throwing(ResultCode code)
{
    return [code]() -> ResultCode {
        throw ServiceObjectException({code, L"inner", "inner", "inner", 1});
    };
}

class Adapter : public Fakes::HostFixture {
protected:
    // Expects the record of a failed thunk ("UIHandler::HandleKey"), and takes it.
    static void ExpectRecord(const std::string& name, ResultCode code)
    {
        const auto record = TakeError();
        ASSERT_TRUE(record) << name;
        EXPECT_EQ(record->code, code);
        EXPECT_EQ(record->message, FromAscii(name + "() failed, code: " + std::to_string(code)));
        const std::size_t colons = name.find("::");
        EXPECT_THAT(record->function,
                    AllOf(StartsWith("SOImpl::Cpp" + name.substr(0, colons) + "Base<class "),
                          EndsWith(",struct SODetails::ServiceObjectTraits>::" +
                                   name.substr(colons + 2) + "Impl::staticF")));
        EXPECT_NE(record->file.find(name.substr(0, colons) + ".SO.h"), std::string::npos);
        EXPECT_GT(record->line, 0u);
    }

    // Calls a method of that full name by its name, and expects the code and its record.
    template <class... Args>
    static void ExpectCode(ResultCode code, ServiceObject* object, const std::string& name,
                           Args... arguments)
    {
        const std::string method = name.substr(name.find("::") + 2);
        EXPECT_EQ(object->CallMethodByName(object, method.c_str(), arguments...), code) << name;
        if (!IsExpectedResult(code)) {
            ExpectRecord(name, code);
        }
        EXPECT_FALSE(TakeError()) << name;
    }

    template <class T>
    using Owned = BasicServiceObjectPtr<T>;
    Owned<ProbeHandler> handler_ = ServiceObjectCppTheConcrete<ProbeHandler>::Create();
    Owned<ProbePlugin> plugin_ = ServiceObjectCppTheConcrete<ProbePlugin>::Create();
    Owned<ProbeModel> model_ = ServiceObjectCppTheConcrete<ProbeModel>::Create();
};

TEST_F(Adapter, HandlerThunksContainEveryException)
{
    struct Row {
        const char* name;
        Body body;
        ResultCode code;
        bool recorded;
    };
    const Row rows[] = {
        {"0", [] { return 0u; }, 0, false},
        {"1", [] { return 1u; }, 1, false},
        {"10", [] { return 10u; }, 10, false},
        {"3", [] { return 3u; }, 3, true},
        {"0x10005", [] { return 0x10005u; }, 0x10005, true},
        {"throws 2", Throwing(2), 2, true},
        {"throws 8", Throwing(8), 8, true},
        {"throws 0x40009", Throwing(0x40009), 0x40009, true},
        // A failure must not read as an outcome that nobody looks at.
        {"throws 0", Throwing(0), 6, true},
        {"throws 1", Throwing(1), 6, true},
        {"throws 10", Throwing(10), 6, true},
        {"runtime_error", []() -> ResultCode { throw std::runtime_error("x"); }, 6, true},
        {"bad_alloc", []() -> ResultCode { throw std::bad_alloc(); }, 6, true},
        {"int", []() -> ResultCode { throw 7; }, 6, true},
    };
    UIKeyEvent event{};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        handler_->body = row.body;
        const CallResult result =
            CallMethodUnchecked<UIHandler::HandleKey>(handler_->AsInterface(), kElement, &event);
        EXPECT_EQ(result.code, row.code);
        EXPECT_EQ(handler_->seenElement, kElement);
        EXPECT_EQ(handler_->seenEvent, &event);
        if (row.recorded) {
            ExpectRecord("UIHandler::HandleKey", row.code);
        }
        EXPECT_FALSE(TakeError());
    }
    // Thunks with a body of their own contain as well.
    handler_->body = Throwing(2);
    std::uint32_t mask = 0;
    ExpectCode(2, handler_->AsInterface(), "UIHandler::GetSubscribedEvents", &mask);
}

TEST_F(Adapter, PluginAndModelThunksLetExceptionsPassUnrecorded)
{
    ServiceObject* plugin = plugin_->AsInterface();
    ServiceObject* model = model_->AsInterface();
    for (const ResultCode code : {0u, 1u, 10u, 5u}) {
        plugin_->body = model_->body = [code] { return code; };
        ExpectCode(code, plugin, "UIInplacePlugin::Handshake");
        ExpectCode(code, plugin, "UIInplacePlugin::Cleanup");
        ExpectCode(code, model, "UIDocumentPanelModel::SetDocumentsCollection", nullptr);
        plugin_->body = model_->body = Throwing(code);
        EXPECT_EQ(ThrownBy([&] {
                      CallMethod<UIInplacePlugin::RegisterResources>(plugin_->AsInterface());
                  })->Code(),
                  code);
        EXPECT_TRUE(
            ThrownBy([&] { model->CallMethodByName(model, "SetDocumentsCollection", nullptr); }));
        EXPECT_FALSE(TakeError());
    }
}

TEST_F(Adapter, MissingArgumentsGiveThreeUnderTheMethodsName)
{
    Fake<UIWnd> window;
    const UIElement element{kElement, nullptr};
    ServiceObject* handler = handler_->AsInterface();
    ExpectCode(3, handler, "UIHandler::GetElementAttachedTo", nullptr);
    ExpectCode(3, handler, "UIHandler::GetSubscribedEvents", nullptr);
    ExpectCode(3, handler, "UIHandler::GetHandlerName", nullptr);
    ExpectCode(3, handler, "UIHandler::Attached", nullptr, &element);
    ExpectCode(3, handler, "UIHandler::Attached", window.Get(), nullptr);
    ExpectCode(3, handler, "UIHandler::HandleKey", kElement, nullptr);

    ServiceObject* plugin = plugin_->AsInterface();
    const UIInitBeginArguments noContext{window.Get(), nullptr};
    const UIInitHtmlArguments noFirst{nullptr, &element};
    const UIInitHtmlArguments noSecond{&element, nullptr};
    const void* noOutput[] = {nullptr};
    ExpectCode(3, plugin, "UIInplacePlugin::InitBegin", nullptr);
    ExpectCode(3, plugin, "UIInplacePlugin::InitBegin", &noContext);
    ExpectCode(3, plugin, "UIInplacePlugin::InitHtml", nullptr);
    ExpectCode(3, plugin, "UIInplacePlugin::InitHtml", &noFirst);
    ExpectCode(3, plugin, "UIInplacePlugin::InitHtml", &noSecond);
    for (const char* name : {"UIInplacePlugin::InitHandler", "UIInplacePlugin::GetUIModel"}) {
        ExpectCode(3, plugin, name, nullptr);
        ExpectCode(3, plugin, name, &noOutput);
    }
}

TEST_F(Adapter, OutputsReachTheHostAndObjectsAreItsOwn)
{
    UIHandler* handler = handler_->AsInterface();
    UIElement element{};
    CallMethod<UIHandler::GetElementAttachedTo>(handler, &element);
    EXPECT_EQ(element.handle, kElement);
    std::uint32_t mask = 0;
    CallMethod<UIHandler::GetSubscribedEvents>(handler, &mask);
    EXPECT_EQ(mask, 259u);
    const char* name = nullptr;
    const char* again = nullptr;
    CallMethod<UIHandler::GetHandlerName>(handler, &name);
    CallMethod<UIHandler::GetHandlerName>(handler, &again);
    EXPECT_STREQ(name, typeid(ProbeHandler).name());
    EXPECT_EQ(name, again);

    Fake<UIHandler> handedOut;
    plugin_->handler = handedOut.Get();
    UIHandler* received = nullptr;
    const UIInitHandlerArguments arguments{&received};
    EXPECT_EQ(CallMethod<UIInplacePlugin::InitHandler>(plugin_->AsInterface(), &arguments).code,
              kResultOk);
    EXPECT_EQ(received, handedOut.Get());
    EXPECT_EQ(handedOut->References(), 2u);
    received->Release(received);
    UIDocumentPanelModel* model = reinterpret_cast<UIDocumentPanelModel*>(received);
    const UIGetUIModelArguments modelArguments{&model};
    CallMethod<UIInplacePlugin::GetUIModel>(plugin_->AsInterface(), &modelArguments);
    EXPECT_EQ(model, nullptr);
}

TEST_F(Adapter, SlotsThatAClassLeavesAloneDeclineWithoutARecord)
{
    for (const char* name :
         {"HandleMouse", "HandleFocus", "HandleTimer", "HandleSize", "HandleScroll", "HandleDraw",
          "HandleMethodCall", "HandleScriptCall", "HandleEvent", "HandleDataArrived",
          "HandleGesture", "HandleExchange", "OnDocumentComplete", "OnInplacePluginsInitialized",
          "OnInitComplete", "OnLocaleChanged"}) {
        ExpectCode(1, handler_->AsInterface(), std::string("UIHandler::") + name, kElement,
                   nullptr);
    }
    for (const char* name :
         {"GetConcreteModel", "ShellDropTarget_OnDragEnter", "ShellDropTarget_OnDragOver",
          "ShellDropTarget_OnDragLeave", "ShellDropTarget_OnDrop"}) {
        ExpectCode(1, model_->AsInterface(), std::string("UIDocumentPanelModel::") + name, nullptr);
    }
}

TEST_F(Adapter, MethodsAreCalledByNameWithTheirArgumentsOnTheirOwnClass)
{
    ServiceObject* handler = handler_->AsInterface();
    ServiceObject* model = model_->AsInterface();
    UIKeyEvent event{};
    EXPECT_EQ(handler->CallMethodByName(handler, "HandleKey", kElement, &event), kResultOk);
    EXPECT_EQ(handler_->seenElement, kElement);
    EXPECT_EQ(handler_->seenEvent, &event);
    EXPECT_EQ(model->CallMethodByName(model, "HandleKey", kElement, &event), kResultNotFound);
    EXPECT_EQ(handler->CallMethodByName(handler, "handlekey", kElement, &event), kResultNotFound);
    EXPECT_EQ(handler->CallMethodByName(handler, ""), kResultNotFound);
    EXPECT_EQ(handler->CallMethodByName(handler, nullptr), kResultNullArgument);

    handler_->body = Throwing(9);
    EXPECT_EQ(handler->CallMethodByName(handler, "HandleKey", kElement, &event), 9u);
    ExpectRecord("UIHandler::HandleKey", 9);
}

}  // namespace
