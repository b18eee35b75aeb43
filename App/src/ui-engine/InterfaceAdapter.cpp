#include "ui-engine/internal/InterfaceAdapter.h"

#include <boost/core/demangle.hpp>

namespace SODetails {

std::string ThunkName(const char* interfaceName, const char* typeName, const char* methodName)
{
    return std::string("SOImpl::Cpp") + interfaceName + "Base<class " +
           boost::core::demangle(typeName) +
           ",struct SODetails::ServiceObjectTraits>::" + methodName + "Impl::staticF";
}

}  // namespace SODetails
