#include "ui-engine/PluginGate.h"

#include "platform/LibraryExport.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/UnicodeText.h"

#include <algorithm>
#include <exception>
#include <string_view>

namespace {

void Write(std::string_view message, char* text, std::size_t textSize) noexcept
{
    if (textSize == 0) {
        return;
    }
    std::size_t length = 0;
    while (length < message.size()) {
        const std::size_t next = UnicodeText::FirstCharacter(message.substr(length)).length;
        if (length + next >= textSize) {
            break;
        }
        length += next;
    }
    *std::copy_n(message.begin(), length, text) = '\0';
}

template <class Call>
ResultCode CallThrough(Call&& call, char* text, std::size_t textSize) noexcept
{
    Write({}, text, textSize);
    try {
        return call();
    } catch (const ServiceObjectException& failure) {
        Write(failure.what(), text, textSize);
        return IsExpectedResult(failure.Code()) ? kResultUnexpected : failure.Code();
    } catch (const std::exception& failure) {
        Write(failure.what(), text, textSize);
    } catch (...) {  // NOLINT(bugprone-empty-catch): nothing is known of it
    }
    return kResultUnexpected;
}

// With the argument block, for a slot that takes one.
template <class M, class... Block>
ResultCode CallSlot(UIInplacePlugin* plugin, ResultCode (*)(UIInplacePlugin*, Block...),
                    [[maybe_unused]] const void* arguments)
{
    const CallResult result = CallMethodUnchecked<M>(plugin, static_cast<Block>(arguments)...);
    return result.called ? result.code : kResultNotFound;
}

}  // namespace

extern "C" {

LIBRARY_EXPORT ResultCode PluginGateCall(UIInplacePlugin* plugin, std::uint32_t slot,
                                         const void* arguments, char* text, std::size_t textSize)
{
    return CallThrough(
        [&]() -> ResultCode {
            if (plugin == nullptr) {
                return kResultNullArgument;
            }
            ResultCode code = kResultNotFound;
            UIInplacePlugin::Catalogue::ForEach([&]<class M>() {
                if (M::kSlot == slot) {
                    code = CallSlot<M>(plugin, typename M::Function{}, arguments);
                }
            });
            return code;
        },
        text, textSize);
}

LIBRARY_EXPORT ResultCode PluginGateRegisterResources(RegisterResourcesExport registerResources,
                                                      UIEngine* engine, char* text,
                                                      std::size_t textSize)
{
    return CallThrough(
        [&] {
            return registerResources == nullptr ? kResultNullArgument : registerResources(engine);
        },
        text, textSize);
}

}  // extern "C"
