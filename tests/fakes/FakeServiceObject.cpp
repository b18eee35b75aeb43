#include "FakeServiceObject.h"

#include "service-common/WideText.h"

#include <cstring>

namespace Fakes {
namespace {

std::atomic<int> g_living = 0;

}  // namespace

FakeObject::FakeObject(const char* interfaceName, unsigned methodCount)
{
    ++g_living;
    ServiceObject& header = memory_.header;
    header.interfaceId = HashInterfaceName(interfaceName);
    header.interfaceName = interfaceName;
    header.AddRef = [](ServiceObject* self) { return Of(self).referenceCount_.fetch_add(1) + 1; };
    header.Release = [](ServiceObject* self) {
        return SODetails::ReleaseReference(Of(self).Counted());
    };
    header.GetRefCount = [](ServiceObject* self) { return Of(self).referenceCount_.load(); };
    header.GetWeakReference = [](ServiceObject* self, WeakReferenceRecord** record) {
        return SODetails::HandOutWeakReference(Of(self).Counted(), record);
    };
    header.GetLastErrorInfo = &GetLastErrorInfoEntry;
    memory_.owner = this;
    CutTable(static_cast<std::uint32_t>(methodCount * kMethodEntrySize));
}

FakeObject::~FakeObject()
{
    --g_living;
}

FakeObject& FakeObject::Of(ServiceObject* header) noexcept
{
    return *reinterpret_cast<Memory*>(header)->owner;
}

int FakeObject::Living() noexcept
{
    return g_living.load();
}

void FakeObject::CutTable(std::uint32_t bytes) noexcept
{
    memory_.header.methodTableSize = bytes;
    if (taggedSlot_) {
        memory_.entries[*taggedSlot_] = nullptr;
        taggedSlot_.reset();
    }
    // Entries beyond the table stay where they were: whoever calls one is found out.
    const auto slot = static_cast<unsigned>(bytes / kMethodEntrySize);
    if (bytes % kMethodEntrySize == 0 && memory_.entries[slot] == nullptr) {
        std::memcpy(&memory_.entries[slot], kEndOfTableTag, sizeof kEndOfTableTag);
        taggedSlot_ = slot;
    }
}

void FakeObject::Bind(unsigned slot, std::shared_ptr<void> state, MethodEntry entry)
{
    bound_[slot] = std::move(state);
    SetEntry(slot, entry);
}

SODetails::ReferenceCounted FakeObject::Counted() noexcept
{
    return {Header(), referenceCount_, weakReference_,
            [](ServiceObject* header) { std::default_delete<FakeObject>()(&Of(header)); }};
}

ResultCode FakeObject::GetLastErrorInfoEntry(ServiceObject* self, ErrorInfo* record,
                                             ServiceObject** errorObject)
{
    FakeObject& object = Of(self);
    ++object.errorRequests;
    if (!object.error) {
        return kResultNotFound;
    }
    const ErrorRecord& error = *object.error;
    object.errorMessage_ = ToUtf16(error.message);
    *record = {error.code, object.errorMessage_.c_str(), error.function.c_str(), error.file.c_str(),
               error.line};
    *errorObject = BasicServiceObjectPtr<ServiceObject>(object.errorObject).Detach();
    return kResultOk;
}

}  // namespace Fakes
