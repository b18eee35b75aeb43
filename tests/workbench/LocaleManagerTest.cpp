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
    constexpr const char16_t* kKeys[] = {u"Comments", u"Page %1%", u"There are no items to show",
                                         u"REPLY",    u"DELETE",   u"%Y-%m-%d %H:%M:%S",
                                         u"Text"};
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

}  // namespace
