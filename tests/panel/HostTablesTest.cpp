// Hosts that offer less than the panel can use: whatever a table lacks is skipped, nothing that the
// panel holds is lost, and the module leaves the process.
#include "PanelFixture.h"

#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"
#include "services/ResourceStore.h"

#include <cstdint>

namespace PanelTests {
namespace {

using namespace Workbench;

// A service object of the host whose table ends early.
class ShortTable {
public:
    // `methods`: how many are left. `isCut` becomes false when the object has no more than that.
    ShortTable(ServiceObject* object, std::uint32_t methods)
        : object_(object), whole_(object->methodTableSize)
    {
        const std::uint32_t size = methods * std::uint32_t{kMethodEntrySize};
        isCut = size < whole_;
        object_->methodTableSize = std::min(size, whole_);
    }
    ~ShortTable() { object_->methodTableSize = whole_; }
    ShortTable(const ShortTable&) = delete;
    ShortTable& operator=(const ShortTable&) = delete;

    bool isCut = false;

private:
    ServiceObject* const object_;
    const std::uint32_t whole_;
};

ServiceObject* ServiceNamed(const char* name)
{
    BasicServiceObjectPtr<ServiceObject> object;
    ServiceProviderGetServiceObject(AtomService::Resolve(name), object.Receive());
    return object.Get();  // the provider holds it
}

// All that a reader may do in a panel, and what a host does around it. Some of it fails where the
// host lacks what it takes.
void UseThePanel(Host& host, const ViewPtr& view)
{
    const auto perhaps = [&](const std::function<void()>& step) {
        try {
            step();
        } catch (const std::runtime_error&) {
        } catch (const ServiceObjectException&) {
        }
        EXPECT_TRUE(host.RunUntilIdle(std::chrono::seconds(20)));
    };
    perhaps([&] { host.StartPanel(); });
    perhaps([&] { host.HandOverDocuments(); });
    auto* const document = view->View().Document();
    const auto container = [&] {
        return FindContainer(*host.Panel().Document(), ContainerKey(view->View().AsInterface()));
    };
    for (const std::uint32_t key : {kKeyEnd, kKeyUpArrow, kKeyEnter, kKeyDelete}) {
        perhaps([&] { host.Panel().PressKey(container(), key); });
    }
    perhaps([&] { document->Publish(document->Content().ChangeContents(0, 0, u"changed")); });
    perhaps([&] { document->Publish(document->Content().AddAnnotation(1, "Ink", u"")); });
    perhaps([&] { document->Publish(document->Content().DeletePage(2)); });
    perhaps([&] { host.SwitchLanguage("de"); });
    perhaps([&] { host.CloseView(view); });
}

TEST(HostTables, MayEndAfterAnyMethod)
{
    struct Row {
        const char* name;
        std::function<ServiceObject*(const Host&, const ViewPtr&)> object;
    };
    const auto service = [](const char* name) {
        return [name](const Host&, const ViewPtr&) { return ServiceNamed(name); };
    };
    const Row rows[] = {
        {"UIEngine", service("UIEngine")},
        {"UIService", service("UIService")},
        {"LocaleManager", service("LocaleManager")},
        {"BLService", service("BLService")},
        {"PDModelService", service("PDModelService")},
        {"UIWnd", [](const Host& host, const ViewPtr&) { return host.Window(); }},
        {"UIHtmlEngine", [](const Host& host, const ViewPtr&) { return host.Engine(); }},
        {"UIMainFrame",
         [](const Host& host, const ViewPtr&) { return host.MainFrame().AsInterface(); }},
        {"UIDocumentsCollection",
         [](const Host& host, const ViewPtr&) { return host.Collection().AsInterface(); }},
        {"UIDocumentView", [](const Host&, const ViewPtr& view) { return view->AsInterface(); }},
        {"BLDocumentView",
         [](const Host&, const ViewPtr& view) { return view->View().AsInterface(); }},
        {"BLDocument",
         [](const Host&, const ViewPtr& view) { return view->View().Document()->AsInterface(); }},
    };
    const auto recordsBefore = Documents::CountLiveRecords();
    for (const Row& row : rows) {
        bool cut = true;
        for (std::uint32_t methods = 0; cut; ++methods) {
            SCOPED_TRACE(testing::Message() << row.name << " with " << methods << " methods");
            Host host{HostOptions{}};
            ViewPtr view = host.OpenView(MakeDocument(FivePages()));
            {
                const ShortTable table(row.object(host, view), methods);
                cut = table.isCut;
                UseThePanel(host, view);
            }
            view.Reset();
            host.State().failures.Take();
            EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
            EXPECT_EQ(ResourceStore::Instance().Modules().size(), 0u);
        }
    }
    EXPECT_EQ(Documents::CountLiveRecords(), recordsBefore);
}

}  // namespace
}  // namespace PanelTests
