// Texts of the host's locale service, and the narrow code page.
#include "HostFixture.h"

#include "platform-libraries/AtomLibraryHost.h"
#include "platform-libraries/ServiceProviderHost.h"
#include "service-common/Atom.h"
#include "ui-engine/LocaleManager.SO.h"
#include "ui-engine/LocalizedStrings.h"
#include "ui-engine/NarrowText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Fakes::Fake;
using Fakes::ThrownBy;

class Localized : public Fakes::HostFixture {
protected:
    Localized()
    {
        service_.On<LocaleManager::GetString>([this](const char16_t** text, const char16_t* key) {
            return Answer(text, std::u16string(u"<") + key + u">");
        });
        service_.On<LocaleManager::GetSectionString>(
            [this](const char16_t** text, const char16_t* section, const char16_t* key) {
                return Answer(text, std::u16string(section) + u"/" + key);
            });
        Provide(service_);
    }
    ResultCode Answer(const char16_t** text, std::u16string answer)
    {
        answer_ = std::move(answer);
        *text = knowsKeys_ ? answer_.c_str() : nullptr;
        return code_;
    }

    Fake<LocaleManager> service_;
    std::u16string answer_;
    bool knowsKeys_ = true;
    ResultCode code_ = kResultOk;
};

TEST_F(Localized, TextsAreCopiedAndTheServiceIsObtainedOnce)
{
    const std::wstring first = LocalizedString(L"Page %1% \U0001F600");
    const std::wstring second = LocalizedString(L"Coments annot info", L"Date created");
    EXPECT_EQ(first, L"<Page %1% \U0001F600>");
    EXPECT_EQ(second, L"Coments annot info/Date created");
    EXPECT_EQ(service_->References(), 3u);  // the test's, the provider's and the slot's
    VxHostUnregisterAllServices();
    EXPECT_EQ(LocalizedString(L"k"), L"<k>");
    VxHostTearDownSingletonStorage();
    EXPECT_EQ(service_->References(), 1u);
}

TEST_F(Localized, TheKeyIsTheTextOfAServiceThatHasNone)
{
    const auto expectKeys = [] {
        EXPECT_EQ(LocalizedString(L"Page %1%"), L"Page %1%");
        EXPECT_EQ(LocalizedString(L"section", L"DELETE"), L"DELETE");
    };
    knowsKeys_ = false;
    expectKeys();
    code_ = 5;  // a failure that the service cannot tell of
    expectKeys();
    knowsKeys_ = true;
    code_ = kResultOk;
    service_->SetEntry(8, nullptr);
    service_->SetEntry(9, nullptr);
    expectKeys();
    VxHostRestartSingletonStorage();
    ProvideAs("LocaleManager", nullptr);
    expectKeys();
}

TEST_F(Localized, FailuresComeInTheWordsOfWhoeverFailed)
{
    code_ = 5;
    service_->error = ErrorRecord{0x55, L"no such language", "", "", 0};
    EXPECT_EQ(ThrownBy([] { LocalizedString(L"k"); })->Message(), L"no such language");
    EXPECT_EQ(ThrownBy([] { LocalizedString(L"s", L"k"); })->Code(), 0x55u);

    VxHostRestartSingletonStorage();
    VxHostUnregisterAllServices();
    EXPECT_EQ(ThrownBy([] { LocalizedString(L"k"); })->Message(),
              L"Fail to query LocaleManager service object: corresponding service is not "
              L"supported by the service provider.\n");
    // Tried again on the next use.
    code_ = kResultOk;
    Provide(service_);
    EXPECT_EQ(LocalizedString(L"k"), L"<k>");

    VxHostTearDownSingletonStorage();
    EXPECT_EQ(ThrownBy([] { LocalizedString(L"k"); })->Message(),
              L"Fail to get atom singleton instance! Is is already destroyed!");
    VxHostRestartSingletonStorage();
    void* slot = nullptr;
    ASSERT_EQ(CreateSingletonStaticData("LocaleManagerHolder", 1, 64, nullptr, &slot), kResultOk);
    EXPECT_EQ(ThrownBy([] { LocalizedString(L"k"); })->Message(),
              L"Fail to get atom singleton instance! Incorrect StaticDataID!");
}

TEST(NarrowText, RoundTripsWhatTheCodePageHas)
{
    for (const std::wstring text : {L"", L"12_34", L"li[annot-name=\"0_0\"]"}) {
        EXPECT_EQ(FromNarrow(ToNarrow(text)), text);
    }
    EXPECT_EQ(ToNarrow(std::wstring(L"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(ToNarrow(std::wstring{L'a', static_cast<wchar_t>(0xD83D), L'b'}), "a?b");
    EXPECT_EQ(FromNarrow(std::string(3000, 'x')), std::wstring(3000, L'x'));
}

}  // namespace
