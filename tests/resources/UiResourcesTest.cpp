// The user-interface files as the linked file carries them: all there, unchanged, and fit for
// their readers, which are the template preprocessor and the host's engine.
#include "platform/EmbeddedResources.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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

// The text of a UTF-8 file, without its mark.
std::string LoadText(const std::string& file)
{
    const std::string bytes = Load(file);
    EXPECT_EQ(bytes.substr(0, 3), "\xEF\xBB\xBF") << file << " must begin with the UTF-8 mark.";
    return bytes.size() < 3 ? "" : bytes.substr(3);
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

std::vector<std::string> Images()
{
    std::vector<std::string> files;
    for (const std::string& path : PathsInSourceFolder()) {
        if (std::filesystem::path(path).extension() == ".png")
            files.push_back(path.substr(kFolder.size()));
    }
    return files;
}

std::vector<std::string> AllMatches(const std::string& text, const std::string& pattern,
                                    std::size_t group = 0)
{
    const std::regex regex(pattern);
    std::vector<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        matches.push_back((*match)[group]);
    return matches;
}

const std::vector<std::string> kTemplates = {
    "template-comments-container.htm", "template-page-item.htm", "template-annot-item.htm",
    "template-simple-annot-item.htm", "template-annot-tooltip.htm"};

// ---- The style sheet, as far as the tests look into it ----

struct StyleRule {
    std::string medium;  // of the enclosing "@media", or empty
    std::vector<std::string> selectors;
    std::vector<std::string> declarations;
};

std::string Trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    const std::size_t end = text.find_last_not_of(" \t\r\n");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

std::vector<std::string> SplitAndTrim(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::string part;
    for (const char c : text + separator) {
        if (c != separator) {
            part.push_back(c);
            continue;
        }
        if (!Trimmed(part).empty())
            parts.push_back(Trimmed(part));
        part.clear();
    }
    return parts;
}

std::vector<StyleRule> ParseStyleSheet(const std::string& file)
{
    const std::string sheet =
        std::regex_replace(LoadText(file), std::regex("/\\*[^*]*\\*+([^/*][^*]*\\*+)*/"), "");
    std::vector<StyleRule> rules;
    std::string medium;
    std::size_t at = 0;
    for (;;) {
        const std::size_t brace = sheet.find_first_of("{}", at);
        if (brace == std::string::npos)
            break;
        const std::string head = Trimmed(sheet.substr(at, brace - at));
        at = brace + 1;
        if (sheet[brace] == '}') {
            EXPECT_TRUE(head.empty() && !medium.empty()) << file << ": '}' too many after " << head;
            medium.clear();
        } else if (head.rfind("@media", 0) == 0) {
            medium = head;
        } else {
            const std::size_t end = sheet.find_first_of("{}", at);
            if (end == std::string::npos || sheet[end] == '{') {
                ADD_FAILURE() << file << ": the rule of " << head << " has no end.";
                return rules;
            }
            rules.push_back(
                {medium, SplitAndTrim(head, ','), SplitAndTrim(sheet.substr(at, end - at), ';')});
            at = end + 1;
        }
    }
    EXPECT_EQ(Trimmed(sheet.substr(at)), "") << file;
    EXPECT_EQ(medium, "") << file << ": '@media' has no end.";
    return rules;
}

// The declarations of all rules with that selector, in their order.
std::vector<std::string> DeclarationsOf(const std::vector<StyleRule>& rules,
                                        const std::string& selector, const std::string& medium = "")
{
    std::vector<std::string> found;
    for (const StyleRule& rule : rules) {
        if (rule.medium == medium &&
            std::count(rule.selectors.begin(), rule.selectors.end(), selector) != 0)
            found.insert(found.end(), rule.declarations.begin(), rule.declarations.end());
    }
    return found;
}

bool Contains(const std::vector<std::string>& list, const std::string& value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
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

TEST(UiTemplates, AreWellFormedWithCarriageReturnsAtEveryLineEnd)
{
    for (const std::string& file : kTemplates) {
        const std::string text = LoadTemplate(file);
        EXPECT_TRUE(std::regex_replace(text, std::regex("\r\n"), "").find_first_of("\r\n") ==
                    std::string::npos)
            << file;

        // Every element is closed, in order: an item left open would swallow its neighbours.
        std::vector<std::string> open;
        for (const std::string& tag : AllMatches(text, "<(/?[a-z0-9]+)[^<>]*>", 1)) {
            if (tag[0] != '/') {
                open.push_back(tag);
                continue;
            }
            ASSERT_FALSE(open.empty()) << file << ": " << tag;
            EXPECT_EQ("/" + open.back(), tag) << file;
            open.pop_back();
        }
        EXPECT_TRUE(open.empty()) << file;
    }
}

TEST(UiTemplates, KeepTheFormsThatTheListCodeFillsAndFinds)
{
    const std::string item = "<li CLASS_NAME annot-name=\"ANNOT_UNIQUE_NAME\" "
                             "titleid=\"ANNOT_TOOLTIP_ID\">";
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"template-comments-container.htm",
         {"^<div class=\"panel-content\" doc-view-addr=\"DOC_VIEW_ADDR\" "
          "disabled-when-document-locked-for-write>",
          "<div class=\"buttons-container\">\\s*<button id=\"expand-all\"",
          "id=\"expand-all\"[^]*id=\"collapse-all\"[^]*id=\"reply\"[^]*id=\"delete\"[^]*"
          "id=\"move-top\"[^]*id=\"move-bottom\"",
          "id=\"reply\"[^>]* localize __l_o_c_a_l_e__t_o_k_e_n__=\"LOCALE_TOKEN_REPLY\">"
          "BTN_TEXT_REPLY<",
          "id=\"delete\"[^>]* localize __l_o_c_a_l_e__t_o_k_e_n__=\"LOCALE_TOKEN_DELETE\">"
          "BTN_TEXT_DELETE<",
          "<div class=\"picture\" preloader></div>",
          "<div class=\"results-container\"></div>\\s*</div>\\s*$"}},
        {"template-page-item.htm",
         {"^ <ul page-item=\"PAGE_INDEX\">\\s*<li page-index=\"PAGE_INDEX\">\\s*"
          "<div class=\"icon document\" localize>PAGE_NAME</div>\\s*<div>\\s*"
          "<ul class=\"comments\">PAGE_ITEMS</ul>\\s*</div>\\s*</li>\\s*</ul>\\s*$"}},
        {"template-annot-item.htm",
         {"^" + item + "\\s*<h3>ANNOT_NAME</h3>\\s*<p>ANNOT_CONTENTS</p>\r\n *ANNOT_TOOLTIP\r\n"}},
        {"template-simple-annot-item.htm", {"^" + item + "\\s*ANNOT_NAME\r\n *ANNOT_TOOLTIP\r\n"}},
        {"template-annot-tooltip.htm",
         {"^<popup class=\"annot-details\" id=\"ANNOT_TOOLTIP_ID\">",
          "<td>ANNOT_SUBJECT:</td>\\s*<td>ANNOT_TITLE</td>\\s*</tr>\\s*</table>\\s*"
          "<div class=\"separator\"></div>\\s*<table class=\"props-table\"",
          "<tr style=\"display:DATE_CREATED_DISPLAY_ATTRIBUTE;\">\\s*<td>DATE_CREATED_KEY:</td>"
          "\\s*<td>DATE_CREATED_VALUE</td>\\s*</tr>",
          "<tr style=\"display:DATE_MODIFIED_DISPLAY_ATTRIBUTE;\">\\s*<td>DATE_MODIFIED_KEY:</td>"
          "\\s*<td>DATE_MODIFIED_VALUE</td>\\s*</tr>"}},
    };
    for (const auto& [file, forms] : rows) {
        const std::string text = LoadTemplate(file);
        for (const std::string& form : forms)
            EXPECT_EQ(AllMatches(text, form).size(), 1u) << file << " lacks " << form;
    }
}

// ---- Style sheets and images ----

TEST(UiStyles, DoubleThePerCentSignInFullLengthsOnly)
{
    std::set<std::string> doubled;
    for (const StyleRule& rule : ParseStyleSheet("panel.css")) {
        for (const std::string& declaration : rule.declarations) {
            for (const std::string& length : AllMatches(declaration, "[0-9.]+%+")) {
                const bool full = length.rfind("100%", 0) == 0;
                EXPECT_EQ(std::count(length.begin(), length.end(), '%'), full ? 2 : 1)
                    << declaration;
                if (full)
                    doubled.insert(rule.selectors.begin(), rule.selectors.end());
            }
        }
    }
    EXPECT_EQ(doubled, (std::set<std::string>{"body", ".panel-content", ".results-container",
                                              "div.icon", "div#file-name", ".picture[preloader]"}));
}

TEST(UiStyles, HoldTheRulesThatTheListCodeReliesOn)
{
    const std::vector<StyleRule> rules = ParseStyleSheet("panel.css");

    ASSERT_FALSE(DeclarationsOf(rules, ".panel-content").empty());
    EXPECT_EQ(DeclarationsOf(rules, ".panel-content").back(), "visibility: collapse");

    const std::string russian = "@media locale == \"ru\"";
    const std::vector<std::vector<std::string>> rows = {
        // selector, declaration, medium
        {"li:collapsed > div:nth-child(2)", "display:none", ""},
        {"ul.comments li:hover", "border:1px solid #4d82b8", ""},
        {"ul.comments li:current", "border:1px solid #4d82b8", ""},
        {"ul.comments > li", "behavior:clickable", ""},
        {"div.icon", "behavior:clickable", ""},
        {"div.icon", "flow:horizontal", ""},
        {"div.icon", "background: url(arrow-open.png) 5px 50% no-repeat", ""},
        {"li:collapsed div.icon", "background: url(arrow-close.png) 5px 50% no-repeat", ""},
        {"#reply", "visibility: collapse", ""},
        {".results-container", "overflow-y: auto", ""},
        {".results-container", "vertical-scrollbar: vexo-vertical-scrollbar", ""},
        {".button-small", "font-size: 11px", russian},
        {".button-small", "padding:0 2px", russian},
        {"#NoItemsMessage", "font-size: 13px", ""},
        {"#NoItemsMessage", "font-family: \"Segoe UI\"", ""},
        {"#NoItemsMessage", "color: #505050", ""},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(Contains(DeclarationsOf(rules, row[0], row[2]), row[1]))
            << row[0] << " { " << row[1] << " }";
    }
    for (const std::string kind : {"text", "stamp", "pencil", "rectangle", "oval", "highlight",
                                   "underline", "strikethrough", "redaction"}) {
        EXPECT_TRUE(Contains(DeclarationsOf(rules, "li." + kind),
                             "background: url(" + kind + "-ico.png) 2px 3px no-repeat"))
            << kind;
    }

    // Alone in its sheet: the page takes the host's own look of buttons.
    const std::vector<StyleRule> button = ParseStyleSheet("button.css");
    EXPECT_TRUE(Contains(DeclarationsOf(button, ".button"), "width: 94px"));
    EXPECT_TRUE(Contains(DeclarationsOf(button, ".button"), "height: 27px"));
    for (const std::string state : {":hover", ":active", ":disabled"})
        EXPECT_FALSE(DeclarationsOf(button, ".button" + state).empty()) << state;
}

TEST(UiStyles, MentionOnlyFilesThatExistAndEveryImage)
{
    const std::set<std::string> hostFiles = {
        "../common/styles/scrollbar.css", "../common/styles/button.css",
        "../common/styles/std-menu.css", "../../common/images/round-preloader.png"};
    std::string sources = LoadText("panel.css") + LoadText("button.css") + LoadText("panel.htm");
    for (const std::string& file : kTemplates)
        sources += LoadTemplate(file);

    std::vector<std::string> mentioned = AllMatches(sources, "url\\(\\s*[\"']?([^)\"']*)", 1);
    for (const std::string& link : AllMatches(sources, "(?:src|href)\\s*=\\s*\"([^\"]*)\"", 1))
        mentioned.push_back(link);

    std::set<std::string> outside;
    std::set<std::string> inside;
    for (const std::string& file : mentioned)
        (file.rfind("../", 0) == 0 ? outside : inside).insert(file);
    EXPECT_EQ(outside, hostFiles);
    for (const std::string& file : inside)
        EXPECT_TRUE(Find("UI-DATA", Upper(kFolder + file)).has_value()) << file;

    // An image that no rule shows is one whose rule is misspelt. One image is the host's to show.
    for (const std::string& file : Images())
        EXPECT_EQ(inside.count(file), file == "comments-list.png" ? 0u : 1u) << file;
}

// ---- Images ----

std::uint32_t BigEndian(const std::string& bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value;
}

std::uint32_t Crc32(std::string_view bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320u : 0u);
    }
    return ~crc;
}

TEST(UiImages, AreWholeTransparentPngsOfTheSizesThatTheStylesExpect)
{
    using Size = std::pair<std::uint32_t, std::uint32_t>;
    const std::map<std::string, Size> unusual = {
        {"arrow-open.png", {9, 9}},          {"arrow-open-hover.png", {9, 9}},
        {"arrow-close.png", {9, 9}},         {"arrow-close-hover.png", {9, 9}},
        {"expand-collapse.png", {46, 23}},   {"comments-list.png", {24, 24}},
        {"comments-previous.png", {23, 46}}, {"comments-next.png", {23, 46}},
    };
    EXPECT_EQ(Images().size(), 18u);
    for (const std::string& file : Images()) {
        SCOPED_TRACE(file);
        const std::string bytes = Load(file);
        ASSERT_GT(bytes.size(), 33u);
        ASSERT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1A\n");

        // Nothing but picture data: no time stamp or text that changes from run to run.
        std::vector<std::string> chunks;
        std::size_t at = 8;
        while (at + 12 <= bytes.size()) {
            const std::uint32_t length = BigEndian(bytes, at);
            ASSERT_LE(at + 12 + length, bytes.size());
            chunks.push_back(bytes.substr(at + 4, 4));
            EXPECT_EQ(Crc32(std::string_view(bytes).substr(at + 4, length + 4)),
                      BigEndian(bytes, at + 8 + length))
                << chunks.back();
            EXPECT_TRUE(Contains({"IHDR", "bKGD", "IDAT", "IEND"}, chunks.back())) << chunks.back();
            at += 12 + length;
        }
        EXPECT_EQ(at, bytes.size());
        EXPECT_EQ(chunks.front(), "IHDR");
        EXPECT_TRUE(Contains(chunks, "IDAT"));
        EXPECT_EQ(chunks.back(), "IEND");

        const auto size = unusual.find(file);
        EXPECT_EQ(Size(BigEndian(bytes, 16), BigEndian(bytes, 20)),
                  size == unusual.end() ? Size(16, 16) : size->second);
        EXPECT_EQ(bytes[24], 8) << "bits per channel";
        EXPECT_EQ(bytes[25], 6) << "colour with transparency";
    }
}

}  // namespace
