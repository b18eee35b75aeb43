// The declarations of one `style` attribute, in order. Reads any text, leaves out what is no
// declaration, and writes "name: value; name: value;".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace HtmlEngine::Internal {

class InlineStyle {
public:
    explicit InlineStyle(std::string_view text);

    // The value of a property as it was written, without surrounding white space; empty when it is
    // not set. The later of two declarations counts.
    std::string_view Get(std::string_view property) const;

    // Sets in place or at the end; an empty value removes. False, and nothing changed, for a
    // property or value that would not read back as one declaration.
    bool Set(std::string_view property, std::string_view value);

    std::string ToText() const;

    // Whether this style alone hides its element: visibility collapse or hidden, display none.
    bool Hides() const;

private:
    struct Declaration {
        std::string property;
        std::string value;
    };

    const Declaration* Find(std::string_view property) const;
    void Store(std::string_view property, std::string_view value);

    std::vector<Declaration> declarations_;
};

}  // namespace HtmlEngine::Internal
