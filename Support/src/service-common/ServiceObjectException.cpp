#include "service-common/ServiceObjectException.h"

#include "service-common/WideText.h"

std::string ServiceObjectException::Narrowed(const std::wstring& message)
{
    return ToUtf8(message);
}
