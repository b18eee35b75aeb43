#include "services/HostObject.h"

#include "documents/MemoryDocument.h"
#include "platform/Threads.h"
#include "services/Host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::IsEmpty;
using namespace Workbench;

// The slots of an interface's catalogue that an object leaves null, events and methods alike.
template <class I>
std::vector<std::string> MissingEntries(I* object)
{
    EXPECT_EQ(object->interfaceId, HashInterfaceName(I::kName));
    std::vector<std::string> missing;
    I::Catalogue::ForEach([&]<class Entry>() {
        for (unsigned i = 0; i < Entry::kSlotCount; ++i) {
            if (SODetails::RawMethodEntry(object, Entry::kSlot + i) == nullptr) {
                missing.push_back(Entry::kName);
            }
        }
    });
    return missing;
}

TEST(HostObjects, OfferEverythingThatTheirInterfacesDeclare)
{
    const auto state = std::make_shared<HostState>();
    const auto locale = LocaleManagerObject::Make("nowhere");
    const auto panel = std::make_shared<HtmlPanel>(state, locale);
    const auto engine = UIHtmlEngineObject::Make(panel);
    const auto frame = UIMainFrameObject::Make(state);
    const auto collection = UIDocumentsCollectionObject::Make(state);
    const auto document =
        BLDocumentObject::Make(state, Documents::MemoryDocument::Make("memory", {}));
    const auto view = BLDocumentViewObject::Make(state, document);
    const auto uiView = UIDocumentViewObject::Make(view);

    EXPECT_THAT(MissingEntries(UIEngineObject::Make()->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(UIResourcesObject::Make()->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(UIServiceObject::Make(state, frame)->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(
                    UIThreadObject::Make(state, UiThreadLoop::Holding::kMayBeHeld)->AsInterface()),
                IsEmpty());
    EXPECT_THAT(MissingEntries(UIWndObject::Make(panel, engine->AsInterface())->AsInterface()),
                IsEmpty());
    EXPECT_THAT(MissingEntries(engine->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(frame->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(UIDocumentFrameObject::Make(collection)->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(collection->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(uiView->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(UIDocumentViewSbSObject::Make(uiView, nullptr)->AsInterface()),
                IsEmpty());
    EXPECT_THAT(MissingEntries(view->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(document->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(BLSelectionObject::Make(kSelectionEmpty)->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(BLServiceObject::Make()->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(BLAnnotNavigatorObject::Make()->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(locale->AsInterface()), IsEmpty());
    EXPECT_THAT(MissingEntries(PDModelServiceObject::Make()->AsInterface()), IsEmpty());
}

TEST(UIService, KnowsOnlyTheUiThread)
{
    const auto state = std::make_shared<HostState>();
    const auto service = UIServiceObject::Make(state, UIMainFrameObject::Make(state));
    BasicServiceObjectPtr<UIThread> thread;
    EXPECT_TRUE(CallMethod<UIService::GetThreadObject>(service->AsInterface(),
                                                       state->loop.ThreadId(), thread.Receive())
                    .Succeeded());
    int runs = 0;
    const auto count = [](void* record) { ++*static_cast<int*>(record); };
    EXPECT_EQ(CallMethodUnchecked<UIThread::PostCall>(thread.Get(), count, &runs).code, kResultOk);
    EXPECT_EQ(CallMethodUnchecked<UIThread::PostCall>(thread.Get(), nullptr, &runs).code,
              kResultNullArgument);
    state->loop.End();
    EXPECT_EQ(CallMethodUnchecked<UIThread::PostCall>(thread.Get(), count, &runs).code,
              kResultDeclined);
    state->loop.RunWaiting();
    EXPECT_EQ(runs, 1);

    std::thread([&] {
        EXPECT_EQ(CallMethodUnchecked<UIService::GetThreadObject>(
                      service->AsInterface(), Platform::CurrentThreadId(), thread.Receive())
                      .code,
                  kResultNotFound);
    }).join();
    EXPECT_FALSE(thread);
    ClearThreadLastError();
}

}  // namespace
