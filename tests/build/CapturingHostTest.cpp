// A host that exports functions of the module's names, as any program may that is a module's host
// and a module itself. On Linux a library's calls of its own exports would reach the program's.
#include "services/Host.h"
#include "services/ResourceStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#if defined(_WIN32)
#define HOST_EXPORT
#else
#define HOST_EXPORT [[gnu::visibility("default")]]
#endif

extern "C" {

int g_captured = 0;

#define CAPTURE(name)                                                                              \
    HOST_EXPORT ResultCode name()                                                                  \
    {                                                                                              \
        ++g_captured;                                                                              \
        return kResultUnexpected;                                                                  \
    }
CAPTURE(ReflectServiceObjectInfo)
CAPTURE(CreateServiceObject)
CAPTURE(RegisterResources)
#if !defined(_WIN32)
HOST_EXPORT extern const Platform::EmbeddedResourceTable UiDataEmbeddedResources;
const Platform::EmbeddedResourceTable UiDataEmbeddedResources{};
#endif
}

namespace {

TEST(CapturingHost, GetsNoCallThatIsTheModulesOwn)
{
    Workbench::Host host{Workbench::HostOptions{}};
    host.StartPanel();
    EXPECT_EQ(g_captured, 0);
    EXPECT_NE(Workbench::ResourceStore::Instance().Find(u"document-panel-comments/panel.htm").data,
              nullptr);
    EXPECT_THAT(host.ShutDown(), testing::IsEmpty());
}

}  // namespace
