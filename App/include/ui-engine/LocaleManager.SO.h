// Interface `LocaleManager`: the host's locale service, listed by the service provider as
// "LocaleManager". Implemented by the host. [any-thread]
#pragma once

#include "service-common/ServiceMethod.h"

struct LocaleManager : ServiceObject {
    static constexpr const char* kName = "LocaleManager";
    static constexpr const char* kHeader = "include/ui-engine/LocaleManager.SO.h";

    // The text of `key` in the user's language (UTF-16, zero-terminated), or null when there is
    // none. Stays valid for the life of the process, also when the language changes.
    SO_METHOD(LocaleManager, GetString, 8, const char16_t** text, const char16_t* key);
    // The same for a key of a section, such as the labels of the tooltip.
    SO_METHOD(LocaleManager, GetSectionString, 9, const char16_t** text, const char16_t* section,
              const char16_t* key);

    using Catalogue = SODetails::MethodCatalogue<GetString, GetSectionString>;
};
