// The module's four classes as a host finds them in memory, byte by byte.
#include "HostFixture.h"

#include "CommentsContainerHandler.h"
#include "CommentsPanelHandler.h"
#include "CommentsPanelInplacePlugin.h"
#include "CommentsPanelModel.h"

#include "ui-engine/UIService.SO.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

using Fakes::Fake;
using SODetails::ServiceObjectCppTheConcrete;

template <class T>
T ReadAt(const ServiceObject* object, std::size_t offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const std::byte*>(object) + offset, sizeof value);
    return value;
}

std::string TagAt(const ServiceObject* object, std::size_t offset)
{
    return std::string(reinterpret_cast<const char*>(object) + offset, 4);
}

std::uint32_t Hash(const std::string& text)
{
    return CalculateSequenceHash(text.data(), text.size());
}

class LiveObject : public Fakes::HostFixture {
protected:
    struct Row {
        const char* interfaceName;
        std::uint32_t tableSize;
        const char* typeName;
        std::size_t objectSize;
        BasicServiceObjectPtr<ServiceObject> object;
    };

    LiveObject()
    {
        service_.On<UIService::GetThreadObject>([this](std::uint32_t, UIThread** thread) {
            *thread = thread_.HandOut();
            return kResultOk;
        });
        Provide(service_);
        const auto handler = ServiceObjectCppTheConcrete<CommentsPanelHandler>::Create();
        Add(ServiceObjectCppTheConcrete<CommentsPanelInplacePlugin>::Create(), "UIInplacePlugin",
            80);
        Add(handler, "UIHandler", 176);
        Add(ServiceObjectCppTheConcrete<CommentsContainerHandler>::Create(*view_.Get()),
            "UIHandler", 176);
        Add(ServiceObjectCppTheConcrete<CommentsPanelModel>::Create(handler),
            "UIDocumentPanelModel", 48);
    }

    template <class T>
    void Add(const BasicServiceObjectPtr<T>& object, const char* interfaceName,
             std::uint32_t tableSize)
    {
        rows_.push_back({interfaceName, tableSize, typeid(T).name(),
                         sizeof(ServiceObjectCppTheConcrete<T>),
                         BasicServiceObjectPtr<ServiceObject>::Retain(object->AsInterface())});
    }

    Fake<UIService> service_;
    Fake<UIThread> thread_;
    Fake<BLDocumentView> view_;
    std::vector<Row> rows_;
};

TEST_F(LiveObject, BeginsWithDescriptorEntriesMethodsAndTypeId)
{
    for (const Row& row : rows_) {
        SCOPED_TRACE(row.typeName);
        const ServiceObject* object = row.object.Get();
        EXPECT_EQ(ReadAt<std::uint32_t>(object, 0), Hash(row.interfaceName));
        EXPECT_EQ(ReadAt<std::uint32_t>(object, 4), row.tableSize);
        EXPECT_STREQ(ReadAt<const char*>(object, 8), row.interfaceName);
        for (std::size_t offset = 16; offset < 64 + row.tableSize; offset += 8) {
            EXPECT_NE(ReadAt<std::uint64_t>(object, offset), 0u) << offset;
        }
        EXPECT_EQ(TagAt(object, 64 + row.tableSize), "EOFT");
        EXPECT_EQ(ReadAt<std::uint32_t>(object, 68 + row.tableSize), Hash(row.typeName));
        EXPECT_EQ(CheckServiceObject(object, row.interfaceName), kResultOk);
    }
}

TEST_F(LiveObject, EndsWithCountWeakReferenceAndTag)
{
    for (const Row& row : rows_) {
        SCOPED_TRACE(row.typeName);
        ServiceObject* object = row.object.Get();
        const std::size_t weakOffset = row.objectSize - 16;
        EXPECT_EQ(TagAt(object, weakOffset + 8), "EOSO");
        // The count stands right before the pointer, or before 4 bytes of padding.
        const auto count = ReadAt<std::uint32_t (*)(ServiceObject*)>(object, 32)(object);
        std::size_t countOffset = 0;
        EXPECT_EQ(count, 1u);
        EXPECT_EQ(ReadAt<std::uint32_t (*)(ServiceObject*)>(object, 16)(object), count + 1);
        for (const std::size_t offset : {weakOffset - 4, weakOffset - 8}) {
            if (ReadAt<std::uint32_t>(object, offset) == count + 1) {
                countOffset = offset;
            }
        }
        ASSERT_NE(countOffset, 0u);
        EXPECT_EQ(ReadAt<std::uint32_t (*)(ServiceObject*)>(object, 24)(object), count);
        EXPECT_EQ(ReadAt<std::uint32_t>(object, countOffset), count);

        // The model has asked the handler for its record already.
        const bool fresh = row.typeName != typeid(CommentsPanelHandler).name();
        const auto* before = ReadAt<WeakReferenceRecord*>(object, weakOffset);
        EXPECT_EQ(before == nullptr, fresh);
        WeakReferenceRecord* record = nullptr;
        ASSERT_EQ(object->GetWeakReference(object, &record), kResultOk);
        EXPECT_EQ(ReadAt<WeakReferenceRecord*>(object, weakOffset), record);
        EXPECT_EQ(record->holderCount.load(), fresh ? 2u : 3u);
        EXPECT_EQ(record->object.load(), object);
        record->functions.ReleaseHolder(record);
    }
}

}  // namespace
