#include "ui-engine/LocalizedStrings.h"

#include "service-common/ServiceProvider.h"
#include "service-common/SingletonStaticData.h"
#include "service-common/WideText.h"
#include "ui-engine/LocaleManager.SO.h"

#include <atomic>

namespace {

// The process-wide slot that all modules share: the address of the locale service, with one
// reference, once it has been obtained.
constexpr const char* kSlotName = "LocaleManagerHolder";
constexpr std::uint32_t kSlotDataId = 0x4C4F4331;

void ReleaseHeldService(void* data)
{
    auto* service = *static_cast<LocaleManager**>(data);
    if (service != nullptr) {
        service->Release(service);
    }
}

void EnsureSlot()
{
    static_cast<void>(
        SODetails::CreateSingletonSlot(kSlotName, kSlotDataId, sizeof(void*), &ReleaseHeldService));
}

// The service, borrowed: the slot holds it for the life of the process.
LocaleManager* LocaleService()
{
    EnsureSlot();
    auto& held = *static_cast<LocaleManager**>(SODetails::GetSingletonSlot(kSlotName, kSlotDataId));
    const std::atomic_ref<LocaleManager*> slot(held);
    LocaleManager* service = slot.load();
    if (service != nullptr) {
        return service;
    }
    auto obtained = SP::QueryServiceObject<LocaleManager>();
    if (slot.compare_exchange_strong(service, obtained.Get())) {
        service = obtained.Detach();  // the reference is the slot's now
    }
    return service;
}

std::wstring TextOrKey(const char16_t* text, std::wstring_view key)
{
    return text == nullptr ? std::wstring(key) : FromUtf16(text);
}

}  // namespace

std::wstring LocalizedString(std::wstring_view key)
{
    const char16_t* text = nullptr;
    CallMethod<LocaleManager::GetString>(LocaleService(), &text, ToUtf16(key).c_str());
    return TextOrKey(text, key);
}

std::wstring LocalizedString(std::wstring_view section, std::wstring_view key)
{
    const char16_t* text = nullptr;
    CallMethod<LocaleManager::GetSectionString>(LocaleService(), &text, ToUtf16(section).c_str(),
                                                ToUtf16(key).c_str());
    return TextOrKey(text, key);
}
