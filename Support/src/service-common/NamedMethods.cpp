#include "service-common/NamedMethods.h"

#include "service-common/Atom.h"

#include <cstring>

namespace SODetails {
namespace {

NamedMethod* g_firstNamedMethod = nullptr;

}  // namespace

void RegisterNamedMethod(NamedMethod& method, const char* name)
{
    method.id = CalculateSequenceHash(name, std::strlen(name));
    method.next = g_firstNamedMethod;
    g_firstNamedMethod = &method;
}

ResultCode CallNamedMethod(ServiceObject* self, std::uint32_t typeId, const char* name,
                           ArgumentReader& arguments)
{
    if (name == nullptr) {
        return kResultNullArgument;
    }
    const std::uint32_t id = CalculateSequenceHash(name, std::strlen(name));
    for (const NamedMethod* method = g_firstNamedMethod; method != nullptr; method = method->next) {
        if (method->id == id && method->typeId == typeId) {
            return method->thunk(self, arguments);
        }
    }
    return kResultNotFound;
}

}  // namespace SODetails
