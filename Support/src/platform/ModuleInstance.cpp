#include "platform/ModuleInstance.h"

namespace Platform {
namespace {

ModuleInstance g_instance = nullptr;

}  // namespace

ModuleInstance CurrentModuleInstance() noexcept
{
    return g_instance;
}

void SetCurrentModuleInstance(ModuleInstance instance) noexcept
{
    g_instance = instance;
}

}  // namespace Platform
