// Puts the attributes of one tag, as they come, into the form in which the tree keeps them: classes
// of `class` and of pointed names first and once each, then the others, and the states that they
// imply. Owns the references of what it has collected. UI thread.
#pragma once

#include "html-engine/internal/Tree.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

class AttributeCollector {
public:
    explicit AttributeCollector(Tree& tree) : tree_(tree) {}
    AttributeCollector(const AttributeCollector&) = delete;
    AttributeCollector& operator=(const AttributeCollector&) = delete;
    ~AttributeCollector() { Clear(); }

    // Adds one that is not there yet. `written` is the name before it was brought to lower case:
    // classes keep theirs.
    void Add(std::string_view name, std::string_view written, std::string_view value);

    // What was collected, in serialisation order; valid until the next call.
    std::span<const AttributeEntry> Entries();

    // The states that the attributes imply.
    std::uint32_t States() const { return states_; }

    // Begins anew after somebody adopted the references of Entries().
    void Forget();

    // Begins anew, giving the references back.
    void Clear();

private:
    bool AddPointedClasses(std::string_view written);
    void AddClass(std::string_view word);

    Tree& tree_;
    std::vector<AttributeEntry> classes_;
    std::vector<AttributeEntry> others_;
    std::uint32_t states_ = 0;
};

}  // namespace HtmlEngine::Internal
