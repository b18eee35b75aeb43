// Fills the placeholders of a template that a module carries as a resource. A preprocessor is made
// for one template, given an ordered list of rules and run, as often as wanted with other values:
// each run asks the host for the template anew, and only looks for the placeholders where its bytes
// or the rules are not those of the run before. Used on the UI thread and on the render worker, one
// object for each rendering.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// What is written in place of a match.
enum class TemplateAction : std::int32_t {
    kErase = 0,
    kReplace = 1,
    kInsertBefore = 2,  // the value, then the match
    kInsertAfter = 3,   // the match, then the value
};

namespace details {

// Checks and decodes templates in UTF-16-LE with a byte-order mark.
struct UTF16_Bom_Strategy {
    // Fails for null data or fewer than 3 bytes.
    static void CheckSize(const std::uint8_t* data, std::uint32_t size, const std::wstring& path);
    // Fails unless the data begins with FF FE. At least 2 bytes are there.
    static void CheckBom(const std::uint8_t* data, const std::wstring& path);
    // The text after the mark; an odd last byte is dropped.
    static std::wstring Decode(const std::uint8_t* data, std::uint32_t size);
};

// All failures are ServiceObjectException with code 0x40009.
template <class Encoding>
class TemplatesPreprocessorBase {
public:
    // `path` as the resources know it: "document-panel-comments/template-annot-item.htm".
    explicit TemplatesPreprocessorBase(std::wstring path);
    ~TemplatesPreprocessorBase();
    TemplatesPreprocessorBase(const TemplatesPreprocessorBase&) = delete;
    TemplatesPreprocessorBase& operator=(const TemplatesPreprocessorBase&) = delete;

    // Appends a rule. The placeholder is a regular expression (Perl syntax), compiled at once: a
    // malformed one fails here. At equal start of two matches the rule added first wins. `value`
    // is written as it stands. An action outside the four fails when its rule is applied.
    // Placeholder and value are borrowed and must outlive the last run.
    void AddRule(std::wstring_view placeholder, TemplateAction action, std::wstring_view value);
    template <std::same_as<std::wstring> Temporary>
    void AddRule(std::wstring_view placeholder, TemplateAction action, Temporary&& value) = delete;

    // Changes what runs from here on do at the matches of the placeholder's rule, the first of
    // several; adds the rule when there is none. Quickest where rules are set in their order.
    void SetRule(std::wstring_view placeholder, TemplateAction action, std::wstring_view value);
    template <std::same_as<std::wstring> Temporary>
    void SetRule(std::wstring_view placeholder, TemplateAction action, Temporary&& value) = delete;

    // Loads the template and applies the rules in one pass; values are never scanned again. Empty
    // when the host has no such resource.
    std::wstring Do();

    // The same behind what `target` holds, which a failure leaves as it was.
    void AppendTo(std::wstring& target);

private:
    struct Match {
        std::size_t start;
        std::size_t length;
        std::size_t rule;
    };
    struct Rule;

    void FindMatches(const std::uint8_t* data, std::uint32_t size);
    void Process(const std::uint8_t* data, std::uint32_t size, std::wstring& target);

    std::wstring path_;
    std::u16string hostPath_;
    std::vector<Rule> rules_;
    std::size_t nextRule_ = 0;  // where SetRule looks first
    // The template as the host had it in the last run, decoded, and where rules apply to it.
    std::vector<std::uint8_t> data_;
    std::wstring text_;
    std::vector<Match> matches_;
};

extern template class TemplatesPreprocessorBase<UTF16_Bom_Strategy>;

}  // namespace details

using TemplatesPreprocessor = details::TemplatesPreprocessorBase<details::UTF16_Bom_Strategy>;
