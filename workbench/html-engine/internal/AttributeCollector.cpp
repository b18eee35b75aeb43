#include "html-engine/internal/AttributeCollector.h"

#include "html-engine/Types.h"
#include "html-engine/internal/Ascii.h"

#include <algorithm>

namespace HtmlEngine::Internal {

void AttributeCollector::Add(std::string_view name, std::string_view written,
                             std::string_view value)
{
    if (name == "class") {
        ForEachWord(value, [&](std::string_view word) { AddClass(word); });
        return;
    }
    if (name.size() > 1 && name.front() == '.' && AddPointedClasses(written)) {
        return;
    }
    const Atom nameAtom = tree_.Atoms().Acquire(name);
    others_.push_back({nameAtom, tree_.Atoms().Acquire(value)});
    if (nameAtom == tree_.Names().disabledAttribute) {
        states_ |= ElementState::kDisabled;
    }
}

bool AttributeCollector::AddPointedClasses(std::string_view written)
{
    bool found = false;
    while (!written.empty()) {
        written.remove_prefix(1);
        const std::string_view word = written.substr(0, written.find('.'));
        if (!word.empty()) {
            AddClass(word);
            found = true;
        }
        written.remove_prefix(word.size());
    }
    return found;
}

void AttributeCollector::AddClass(std::string_view word)
{
    constexpr std::size_t kMostClasses = 512;
    if (classes_.size() == kMostClasses) {
        return;
    }
    const Atom value = tree_.Atoms().Acquire(word);
    const auto same = [&](const AttributeEntry& entry) { return entry.value == value; };
    if (std::any_of(classes_.begin(), classes_.end(), same)) {
        tree_.Atoms().Release(value);
        return;
    }
    const Atom name = tree_.Names().classAttribute;
    tree_.Atoms().AddReference(name);
    classes_.push_back({name, value});
}

std::span<const AttributeEntry> AttributeCollector::Entries()
{
    if (classes_.empty()) {
        return others_;
    }
    classes_.insert(classes_.end(), others_.begin(), others_.end());
    others_.clear();
    return classes_;
}

void AttributeCollector::Forget()
{
    classes_.clear();
    others_.clear();
    states_ = 0;
}

void AttributeCollector::Clear()
{
    for (const AttributeEntry& entry : Entries()) {
        tree_.Atoms().Release(entry.name);
        tree_.Atoms().Release(entry.value);
    }
    Forget();
}

}  // namespace HtmlEngine::Internal
