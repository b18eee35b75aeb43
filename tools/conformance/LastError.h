// The calling thread's last error in the module, read through one of its objects.
#pragma once

#include "ModuleObject.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace Conformance {

class LastError {
public:
    explicit LastError(const ModuleObject& object)
    {
        std::memset(&words, 0x5A, sizeof words);
        result = object.CallAt(kGetLastErrorInfoAt, &words, &errorObject);
    }

    // In ASCII; "(none)" without an error.
    std::string Message() const
    {
        std::string narrow = result == 0 ? "" : "(none)";
        const char16_t* unit = result == 0 ? words.message : nullptr;
        for (; unit != nullptr && *unit != 0; ++unit) {
            narrow += static_cast<char>(*unit);
        }
        return narrow;
    }

    ErrorWords words;
    void* errorObject = nullptr;
    std::uint32_t result;
};

}  // namespace Conformance
