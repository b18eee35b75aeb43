#include "service-common/ServiceObject.h"

#include "service-common/Atom.h"

#include <cstring>

std::uint32_t HashInterfaceName(const char* interfaceName)
{
    return CalculateSequenceHash(interfaceName, std::strlen(interfaceName));
}

ResultCode CheckServiceObject(const ServiceObject* object, const char* interfaceName)
{
    if (object == nullptr) {
        return kResultNullPointer;
    }
    if (object->interfaceId == 0 || object->interfaceId != HashInterfaceName(interfaceName)) {
        return kResultWrongInterface;
    }
    if (object->methodTableSize >= kImplausibleMethodTableSize) {
        return kResultDamagedTable;
    }
    const auto* tag =
        reinterpret_cast<const char*>(object) + kMethodTableOffset + object->methodTableSize;
    return std::memcmp(tag, kEndOfTableTag, sizeof kEndOfTableTag) == 0 ? kResultOk
                                                                        : kResultDamagedTable;
}
