// The module-wide list behind CallMethodByName: method thunks by the hash of their names. Entries
// are made on the UI thread when the first object of a class is made, and never removed.
// [ui-thread]
#pragma once

#include "service-common/ServiceObject.h"

#include <cstdarg>
#include <cstdint>
#include <type_traits>

namespace SODetails {

// The arguments of a CallMethodByName call, read one after another.
class ArgumentReader {
public:
    // Takes a copy of the list; the caller may end its own at once.
    explicit ArgumentReader(std::va_list& list) { va_copy(list_, list); }
    ~ArgumentReader() { va_end(list_); }
    ArgumentReader(const ArgumentReader&) = delete;
    ArgumentReader& operator=(const ArgumentReader&) = delete;

    // The next argument, read in the type that it was promoted to on its way.
    template <class T>
    T Next()
    {
        if constexpr (std::is_same_v<T, float>) {
            return static_cast<float>(va_arg(list_, double));
        } else if constexpr (std::is_enum_v<T>) {
            return static_cast<T>(Next<std::underlying_type_t<T>>());
        } else if constexpr (std::is_integral_v<T> && sizeof(T) < sizeof(int)) {
            return static_cast<T>(va_arg(list_, int));
        } else {
            return va_arg(list_, T);
        }
    }

private:
    std::va_list list_;
};

using NamedMethodThunk = ResultCode (*)(ServiceObject* self, ArgumentReader& arguments);

struct NamedMethod {
    NamedMethod* next;
    std::uint32_t id;      // CalculateSequenceHash of the method name
    std::uint32_t typeId;  // of the class whose objects the thunk serves
    NamedMethodThunk thunk;
};

// Puts `method` at the head of the list and sets its id. The storage is the caller's and static.
void RegisterNamedMethod(NamedMethod& method, const char* name);

// Calls the thunk that a class registered under `name`: 3 for a null name, 8 when there is none.
ResultCode CallNamedMethod(ServiceObject* self, std::uint32_t typeId, const char* name,
                           ArgumentReader& arguments);

}  // namespace SODetails
