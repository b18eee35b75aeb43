// Part of each library, which brings the compiler's runtime along: when it is unloaded, what that
// runtime took at its start, for exceptions without memory, is freed.

#include <cstddef>  // which tells the runtime

#if defined(__GLIBCXX__)

namespace __gnu_cxx {
void __freeres();
}

namespace {

struct LinkedRuntime {
    ~LinkedRuntime() { __gnu_cxx::__freeres(); }
};
const LinkedRuntime g_linkedRuntime;

}  // namespace

#endif
