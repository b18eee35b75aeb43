// Error records per thread: what is stored, what is read back, and what is never recorded.
#include "HostFixture.h"
#include "ProbeObject.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

class LastErrorInfo : public Fakes::HostFixture {
protected:
    ResultCode Ask(ErrorInfo* info, ServiceObject** errorObject = nullptr)
    {
        ServiceObject* header = object_->AsInterface();
        return header->GetLastErrorInfo(header, info, errorObject);
    }

    std::atomic<int> deaths_ = 0;
    BasicServiceObjectPtr<ProbeObject> object_ = ProbeObject::Create(deaths_);
};

TEST_F(LastErrorInfo, IsZeroedWithoutARecordAndCompleteWithOne)
{
    ErrorInfo info;
    std::memset(&info, 0xAB, sizeof info);
    ServiceObject* errorObject = object_->AsInterface();
    EXPECT_EQ(Ask(nullptr, &errorObject), kResultNullArgument);
    EXPECT_EQ(Ask(&info, &errorObject), kResultNotFound);
    EXPECT_EQ(errorObject, nullptr);
    const std::uint64_t zero[5] = {};
    EXPECT_EQ(std::memcmp(&info, zero, sizeof info), 0);

    SetThreadLastError({0xFFFFFFFF, L"erst\u00e9", "first", "a.h", 1});
    SetThreadLastError({0x10005, L"second \U0001F600", "F::staticF", "b.h", 0xFFFFFFFF});
    EXPECT_EQ(Ask(&info), kResultOk);
    EXPECT_EQ(info.code, 0x10005u);
    EXPECT_EQ(std::u16string(info.message), u"second \U0001F600");
    EXPECT_STREQ(info.function, "F::staticF");
    EXPECT_STREQ(info.file, "b.h");
    EXPECT_EQ(info.line, 0xFFFFFFFFu);

    ClearThreadLastError();
    EXPECT_EQ(Ask(&info), kResultNotFound);
    EXPECT_EQ(std::memcmp(&info, zero, sizeof info), 0);
}

TEST_F(LastErrorInfo, StaysOnItsThread)
{
    SetThreadLastError({2, L"here", "here", "here", 2});
    std::thread([this] {
        ErrorInfo info{};
        EXPECT_EQ(Ask(&info), kResultNotFound);
        SetThreadLastError({8, L"there", "there", "there", 8});
        EXPECT_EQ(Ask(&info), kResultOk);
        EXPECT_EQ(info.code, 8u);
    }).join();
    const auto taken = TakeError();
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->message, L"here");
}

TEST_F(LastErrorInfo, ListenerHearsOfItsOwnThreadUntilItIsTakenAway)
{
    std::vector<std::wstring> heard;
    SetThreadErrorListener([&](const ErrorRecord& record) { heard.push_back(record.message); });
    SetThreadLastError({2, L"one", "", "", 0});
    std::thread([] { SetThreadLastError({2, L"elsewhere", "", "", 0}); }).join();
    SetThreadLastError({2, L"two", "", "", 0});
    SetThreadErrorListener({});
    SetThreadLastError({2, L"three", "", "", 0});
    EXPECT_EQ(heard, (std::vector<std::wstring>{L"one", L"two"}));
    EXPECT_EQ(TakeError()->message, L"three");
}

using ReportingRule = Fakes::HostFixture;

TEST_F(ReportingRule, RecordsUnexpectedCodesUnderBothNamesOnly)
{
    struct Row {
        ResultCode code;
        const char* interfaceName;
        const char* methodName;
        const wchar_t* message;  // null: an earlier record stands
    };
    const Row rows[] = {
        {0, "UIHandler", "Attached", nullptr},
        {1, "UIHandler", "Attached", nullptr},
        {10, "UIHandler", "Attached", nullptr},
        {3, nullptr, "Attached", nullptr},
        {3, "UIHandler", nullptr, nullptr},
        {3, "UIInplacePlugin", "InitBegin", L"UIInplacePlugin::InitBegin() failed, code: 3"},
        {2, "UIHandler", "Attached", L"UIHandler::Attached() failed, code: 2"},
        {9, "UIHandler", "Attached", L"UIHandler::Attached() failed, code: 9"},
        {11, "UIHandler", "Attached", L"UIHandler::Attached() failed, code: 11"},
        {0x80004005, "UIHandler", "Attached", L"UIHandler::Attached() failed, code: -2147467259"},
        {0x40009, "%s", "%1%", L"%s::%1%() failed, code: 262153"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.code << " " << (row.message != nullptr));
        SetThreadLastError({5, L"earlier", "", "", 0});
        EXPECT_EQ(ReportMethodResult(row.code, row.interfaceName, row.methodName, "T::staticF",
                                     "include/T.h", 77),
                  row.code);
        const auto record = TakeError();
        ASSERT_TRUE(record);
        EXPECT_EQ(record->message, row.message == nullptr ? L"earlier" : row.message);
        if (row.message != nullptr) {
            EXPECT_EQ(record->code, row.code);
            EXPECT_EQ(record->function, "T::staticF");
            EXPECT_EQ(record->file, "include/T.h");
            EXPECT_EQ(record->line, 77u);
        }
    }
}

// Reads one argument of each width as a method thunk would.
template <class... T>
std::tuple<T...> ReadBack(int last, ...)
{
    std::va_list list;
    va_start(list, last);
    SODetails::ArgumentReader reader(list);
    va_end(list);
    return std::tuple<T...>{reader.template Next<T>()...};
}

TEST(ArgumentReader, UndoesTheDefaultPromotions)
{
    enum class Narrow : std::uint8_t { kLast = 255 };
    enum class Wide : std::uint64_t { kLast = ~0ull };
    using Limits = std::numeric_limits<std::int16_t>;
    int target = 0;
    const auto values =
        ReadBack<bool, float, Narrow, std::int16_t, Wide, std::uint32_t, double, int*, char>(
            0, true, 1.5f, Narrow::kLast, Limits::min(), Wide::kLast, 0xFFFFFFFFu, -2.25, &target,
            'x');
    EXPECT_EQ(values, std::tuple(true, 1.5f, Narrow::kLast, Limits::min(), Wide::kLast, 0xFFFFFFFFu,
                                 -2.25, &target, 'x'));
}

}  // namespace
