#include "services/LocaleManagerObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using namespace Workbench;

constexpr const char* kShipped[] = {"ar", "de", "en", "he", "ru"};

const char16_t* String(const BasicServiceObjectPtr<LocaleManagerObject>& locale,
                       const char16_t* key)
{
    const char16_t* text = u"kept from before";
    CallMethod<LocaleManager::GetString>(locale->AsInterface(), &text, key);
    return text;
}

const char16_t* SectionString(const BasicServiceObjectPtr<LocaleManagerObject>& locale,
                              const char16_t* section, const char16_t* key)
{
    const char16_t* text = u"kept from before";
    CallMethod<LocaleManager::GetSectionString>(locale->AsInterface(), &text, section, key);
    return text;
}

TEST(LocaleManager, ShipsEveryTextOfThePanelInEveryLanguage)
{
    const auto locale = LocaleManagerObject::Make(WORKBENCH_LOCALES);
    EXPECT_THAT(locale->Languages(), ::testing::ElementsAreArray(kShipped));
    constexpr const char16_t* kKeys[] = {
        u"Comments",  u"Page %1%",       u"There are no items to show",
        u"REPLY",     u"DELETE",         u"%Y-%m-%d %H:%M:%S",
        u"Text",      u"Link",           u"Highlight",
        u"Underline", u"Squiggly",       u"StrikeOut",
        u"Popup",     u"Widget",         u"Stamp",
        u"Ink",       u"Line",           u"PolyLine",
        u"Polygon",   u"Square",         u"Circle",
        u"TrapNet",   u"Caret",          u"Redact",
        u"FreeText",  u"FileAttachment", u"Sound"};
    for (const char* const language : kShipped) {
        locale->SwitchTo(language);
        for (const char16_t* const key : kKeys) {
            const char16_t* const text = String(locale, key);
            ASSERT_NE(text, nullptr) << language;
            EXPECT_NE(*text, 0) << language;
        }
        EXPECT_NE(std::u16string(String(locale, u"Page %1%")).find(u"%1%"), std::u16string::npos);
        for (const char16_t* const key : {u"Date created", u"Date modified"}) {
            EXPECT_NE(SectionString(locale, u"Coments annot info", key), nullptr) << language;
        }
        EXPECT_EQ(locale->IsRightToLeft(),
                  std::string(language) == "ar" || std::string(language) == "he");
    }
}

TEST(LocaleManager, KeepsSectionsApartAndKnowsNothingUnknown)
{
    const auto locale = LocaleManagerObject::Make(WORKBENCH_LOCALES);
    EXPECT_EQ(String(locale, u"REPLY"), nullptr) << "no language is spoken yet";
    locale->SwitchTo("de");
    EXPECT_EQ(String(locale, u"Date created"), nullptr);
    EXPECT_EQ(SectionString(locale, u"Coments annot info", u"REPLY"), nullptr);
    EXPECT_EQ(SectionString(locale, u"Other", u"Date created"), nullptr);
    EXPECT_EQ(String(locale, u""), nullptr);
}

TEST(LocaleManager, LeavesTextsValidWhenTheLanguageChanges)
{
    auto locale = LocaleManagerObject::Make(WORKBENCH_LOCALES);
    locale->SwitchTo("de");
    const char16_t* const german = String(locale, u"DELETE");
    locale->SwitchTo("ru");
    EXPECT_NE(std::u16string(String(locale, u"DELETE")), german);
    locale.Reset();
    EXPECT_EQ(german, std::u16string(u"L\u00F6schen"));
}

TEST(LocaleManager, RefusesLanguagesThatThereAreNotAndKeepsTheOldOne)
{
    const auto folder = std::filesystem::path(::testing::TempDir()) /
                        ("broken-locales-" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "good.json")
        << R"({"direction": "ltr", "strings": {"A": "good"}, "sections": {}})";
    std::ofstream(folder / "cut.json") << R"({"direction": "ltr", "strings": {"A": "cu)";
    std::ofstream(folder / "number.json")
        << R"({"direction": "ltr", "strings": {"A": 1}, "sections": {}})";
    std::ofstream(folder / "empty.json");

    const auto locale = LocaleManagerObject::Make(folder);
    locale->SwitchTo("good");
    for (const char* const language :
         {"cut", "number", "empty", "absent", "", "../good", "go od"}) {
        try {
            locale->SwitchTo(language);
            FAIL() << language;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(language));
        }
        EXPECT_EQ(locale->Language(), "good");
        EXPECT_EQ(String(locale, u"A"), std::u16string(u"good"));
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
