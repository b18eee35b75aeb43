// The host's "LocaleManager": texts of the user interface in one of several languages, read from
// JSON files in a folder, one per language and named after it. [any-thread] unless said otherwise.
//
//   { "name": "Deutsch", "direction": "ltr",
//     "strings": { "Page %1%": "Seite %1%" },
//     "sections": { "Coments annot info": { "Date created": "Erstellt am" } },
//     "workbench": { "close.save": "Speichern" } }
//
// "name" and "workbench" are for the web page, which reads the files itself.
#pragma once

#include "services/HostObject.h"
#include "ui-engine/LocaleManager.SO.h"

#include <filesystem>
#include <map>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Workbench {

class LocaleManagerObject : public HostObject<LocaleManagerObject, LocaleManager> {
public:
    // Starts without a language: every lookup fails.
    explicit LocaleManagerObject(std::filesystem::path folder);

    // The available languages, sorted ("ar", "de", "en").
    std::vector<std::string> Languages() const;

    // Selects a language. Throws std::runtime_error, naming language or file, for an unknown
    // language and a malformed file; the selection is then unchanged.
    void SwitchTo(const std::string& language);

    std::string Language() const;
    bool IsRightToLeft() const;

    // The text of a key outside the sections; null when there is none. Valid until the process
    // ends.
    const char16_t* Find(std::u16string_view key) const;

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::u16string_view text) const noexcept
        {
            return std::hash<std::u16string_view>()(text);
        }
    };
    // Points into texts that are never freed.
    using Texts = std::unordered_map<std::u16string, const char16_t*, TextHash, std::equal_to<>>;
    struct Contents {
        std::string language;
        bool isRightToLeft = false;
        Texts strings;
        std::map<std::u16string, Texts, std::less<>> sections;
    };

    static Contents Read(const std::filesystem::path& file, const std::string& language);
    static const char16_t* FindIn(const Texts& texts, std::u16string_view key) noexcept;

    ResultCode GetString(const char16_t** text, const char16_t* key) const;
    ResultCode GetSectionString(const char16_t** text, const char16_t* section,
                                const char16_t* key) const;

    const std::filesystem::path folder_;
    mutable std::shared_mutex mutex_;
    Contents contents_;
};

}  // namespace Workbench
