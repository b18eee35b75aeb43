#include "documents/DeepStructures.h"

#include <pthread.h>

#include <qpdf/Buffer.hh>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDF.hh>

#include <cstdint>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Documents {

namespace {

// Address below which a quarter of the calling thread's stack is left; 0 when it is not known.
std::uintptr_t FindStackReserve()
{
    pthread_attr_t attributes;
    if (::pthread_getattr_np(::pthread_self(), &attributes) != 0) {
        return 0;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool isKnown = ::pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    ::pthread_attr_destroy(&attributes);
    return isKnown ? reinterpret_cast<std::uintptr_t>(lowest) + size / 4 : 0;
}

void RequireStack()
{
    thread_local const std::uintptr_t reserve = FindStackReserve();
#if defined(__SANITIZE_ADDRESS__)  // which may keep locals in memory of its own
    const void* const here = __builtin_frame_address(0);
#else
    const char local = 0;
    const void* const here = &local;
#endif
    if (reinterpret_cast<std::uintptr_t>(here) < reserve) {
        throw std::runtime_error("objects refer to each other too deeply to be read");
    }
}

// QPDF reads each object through its source, at whatever depth; it takes an exception as damage of
// the innermost object.
class StackSavingSource final : public BufferInputSource {
public:
    using BufferInputSource::BufferInputSource;

    size_t read(char* bytes, size_t length) override
    {
        RequireStack();
        return BufferInputSource::read(bytes, length);
    }
};

// The node that QPDF begins with: a catalogue may name one in the middle of the tree.
QPDFObjectHandle TopOf(QPDFObjectHandle node)
{
    std::set<QPDFObjGen> seen;
    while (node.isDictionary() && node.hasKey("/Parent") && seen.insert(node.getObjGen()).second) {
        node = node.getKey("/Parent");
    }
    return node;
}

}  // namespace

std::shared_ptr<InputSource> MakeStackSavingSource(const std::string& description,
                                                   std::string_view bytes)
{
    // The source only reads, but its buffer's constructor takes bytes that may be changed.
    auto* const begin =
        const_cast<unsigned char*>(  // NOLINT(cppcoreguidelines-pro-type-const-cast)
            reinterpret_cast<const unsigned char*>(bytes.data()));
    auto buffer = std::make_unique<Buffer>(begin, bytes.size());
    auto source = std::make_shared<StackSavingSource>(description, buffer.get(), true);
    static_cast<void>(buffer.release());  // the source's
    return source;
}

void CheckPageTree(QPDF& file)
{
    struct Node {
        QPDFObjectHandle object;
        std::size_t level;
    };
    std::vector<Node> open{{TopOf(file.getRoot().getKey("/Pages")), 1}};
    std::set<QPDFObjGen> seen;
    while (!open.empty()) {
        auto [node, level] = std::move(open.back());
        open.pop_back();
        QPDFObjectHandle kids =
            node.isDictionary() ? node.getKey("/Kids") : QPDFObjectHandle::newNull();
        if (!kids.isArray() || (node.isIndirect() && !seen.insert(node.getObjGen()).second)) {
            continue;
        }
        if (level > kMostPageLevels) {
            throw TooDeep("its page tree has more than " + std::to_string(kMostPageLevels) +
                          " levels; a program that writes the file anew makes it flat");
        }
        // In QPDF's order, which meets a node that is reached twice at the same level.
        for (int kid = kids.getArrayNItems(); kid-- > 0;) {
            open.push_back({kids.getArrayItem(kid), level + 1});
        }
    }
}

}  // namespace Documents
