// The user-interface files as the linked file carries them: all there, unchanged, and fit for
// their readers, which are the template preprocessor and the host's engine.
#include "platform/EmbeddedResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

const std::string kFolder = "document-panel-comments/";

// ---- The store: the only part that differs between the systems ----

#if defined(_WIN32)

std::optional<std::string> Find(const std::string& type, const std::string& name)
{
    const HMODULE module = GetModuleHandleA(nullptr);
    const HRSRC resource = FindResourceA(module, name.c_str(), type.c_str());
    if (resource == nullptr)
        return std::nullopt;
    const auto* data = static_cast<const char*>(LockResource(LoadResource(module, resource)));
    return std::string(data, SizeofResource(module, resource));
}

std::vector<std::string> Names(const std::string& type)
{
    std::vector<std::string> names;
    const auto collect = [](HMODULE, LPCSTR, LPSTR name, LONG_PTR list) -> BOOL {
        reinterpret_cast<std::vector<std::string>*>(list)->push_back(
            IS_INTRESOURCE(name) ? "a number" : name);
        return TRUE;
    };
    EnumResourceNamesA(GetModuleHandleA(nullptr), type.c_str(), collect,
                       reinterpret_cast<LONG_PTR>(&names));
    return names;
}

#else

std::optional<std::string> Find(const std::string& type, const std::string& name)
{
    for (std::uint32_t i = 0; i < UiDataEmbeddedResources.count; ++i) {
        const Platform::EmbeddedResource& entry = UiDataEmbeddedResources.entries[i];
        if (entry.type == type && entry.name == name)
            return std::string(reinterpret_cast<const char*>(entry.data), entry.size);
    }
    return std::nullopt;
}

std::vector<std::string> Names(const std::string& type)
{
    std::vector<std::string> names;
    for (std::uint32_t i = 0; i < UiDataEmbeddedResources.count; ++i) {
        if (UiDataEmbeddedResources.entries[i].type == type)
            names.emplace_back(UiDataEmbeddedResources.entries[i].name);
    }
    return names;
}

#endif

// ---- Reading ----

std::string Upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
    return text;
}

// The bytes of a file of the panel's folder; a failure of the test when it is not carried.
std::string Load(const std::string& file)
{
    std::optional<std::string> bytes = Find("UI-DATA", Upper(kFolder + file));
    EXPECT_TRUE(bytes.has_value()) << file;
    return bytes.value_or("");
}

// The text of a UTF-16-LE file, without its mark. The templates themselves are plain ASCII.
std::string LoadTemplate(const std::string& file)
{
    const std::string bytes = Load(file);
    EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE") << file << " must begin with the UTF-16-LE mark.";
    EXPECT_EQ(bytes.size() % 2, 0u) << file << " ends within a code unit.";
    std::string text;
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        EXPECT_TRUE(bytes[i + 1] == 0 && bytes[i] > 0) << file << ", byte " << i;
        text.push_back(bytes[i]);
    }
    return text;
}

// Lower-case paths of the files that lie in the source folder, sorted by byte.
std::set<std::string> PathsInSourceFolder()
{
    const std::set<std::string> carried = {".htm", ".css", ".png"};
    std::set<std::string> paths;
    for (const auto& entry :
         std::filesystem::directory_iterator(UI_DATA_ROOT "/document-panel-comments")) {
        if (carried.count(entry.path().extension().string()) != 0)
            paths.insert(kFolder + entry.path().filename().string());
    }
    return paths;
}

std::vector<std::string> AllMatches(const std::string& text, const std::string& pattern)
{
    const std::regex regex(pattern);
    std::vector<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        matches.push_back(match->str());
    return matches;
}

// ---- The store ----

TEST(UiResources, CarryEveryFileOfTheFolderUnchanged)
{
    const std::set<std::string> paths = PathsInSourceFolder();
    EXPECT_EQ(paths.size(), 26u);

    std::vector<std::string> expectedNames;
    for (const std::string& path : paths) {
        expectedNames.push_back(Upper(path));
        std::ifstream file(UI_DATA_ROOT "/" + path, std::ios::binary);
        const std::string original{std::istreambuf_iterator<char>(file), {}};
        const std::optional<std::string> carried = Find("UI-DATA", Upper(path));
        ASSERT_TRUE(carried.has_value()) << path;
        EXPECT_TRUE(*carried == original && !original.empty()) << path;
    }

    // In order, since a reader may search the table by halves.
    EXPECT_EQ(Names("UI-DATA"), expectedNames);
    EXPECT_EQ(Names("UI-DATA-TOC"), std::vector<std::string>{"UI-DATA-TOC"});
}

TEST(UiResources, ListTheirPathsInTheTableOfContents)
{
    std::string expected;
    for (const std::string& path : PathsInSourceFolder())
        expected += path + ";";
    EXPECT_EQ(Find("UI-DATA-TOC", "UI-DATA-TOC"), expected);
}

// ---- Templates ----

TEST(UiTemplates, HoldTheirPlaceholdersInOrderAndNothingThatLooksLikeOne)
{
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"template-comments-container.htm",
         {"DOC_VIEW_ADDR", "LOCALE_TOKEN_REPLY", "BTN_TEXT_REPLY", "LOCALE_TOKEN_DELETE",
          "BTN_TEXT_DELETE"}},
        {"template-page-item.htm", {"PAGE_INDEX", "PAGE_INDEX", "PAGE_NAME", "PAGE_ITEMS"}},
        {"template-annot-item.htm",
         {"CLASS_NAME", "ANNOT_UNIQUE_NAME", "ANNOT_TOOLTIP_ID", "ANNOT_NAME", "ANNOT_CONTENTS",
          "ANNOT_TOOLTIP"}},
        {"template-simple-annot-item.htm",
         {"CLASS_NAME", "ANNOT_UNIQUE_NAME", "ANNOT_TOOLTIP_ID", "ANNOT_NAME", "ANNOT_TOOLTIP"}},
        {"template-annot-tooltip.htm",
         {"ANNOT_TOOLTIP_ID", "ANNOT_SUBJECT", "ANNOT_TITLE", "DATE_CREATED_DISPLAY_ATTRIBUTE",
          "DATE_CREATED_KEY", "DATE_CREATED_VALUE", "DATE_MODIFIED_DISPLAY_ATTRIBUTE",
          "DATE_MODIFIED_KEY", "DATE_MODIFIED_VALUE"}},
    };
    for (const auto& [file, placeholders] : rows) {
        // Whole words, glued letters and digits included: what surrounds a placeholder must not
        // be mistaken for a part of it.
        EXPECT_EQ(AllMatches(LoadTemplate(file), "\\w*[A-Z]\\w*"), placeholders) << file;
    }
}

// ---- Style sheets ----

// The engine's own units: a doubled per cent sign shares out free space.
TEST(UiStyles, HaveTheirMarkAndFullSizesInTheEnginesUnits)
{
    for (const std::string file : {"panel.css", "button.css"}) {
        const std::string sheet = Load(file);
        EXPECT_EQ(sheet.substr(0, 3), "\xEF\xBB\xBF") << file;
        EXPECT_EQ(AllMatches(sheet, "100%%").size(), AllMatches(sheet, "100%").size()) << file;
    }
}

}  // namespace
