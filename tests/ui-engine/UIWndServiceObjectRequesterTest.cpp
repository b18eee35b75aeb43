// Asking the host window for the objects of its scope.
#include "HostFixture.h"

#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIMainFrame.SO.h"
#include "ui-engine/internal/UIWndServiceObjectRequester.h"

#include <gtest/gtest.h>

namespace {

using Fakes::Fake;

class WindowRequest : public Fakes::HostFixture {
protected:
    WindowRequest()
    {
        window_.On<UIWnd::QueryServiceObject>([this](Atom name, ServiceObject** out) {
            const char* text = nullptr;
            VxGetStringFromAtom(name, &text);
            askedFor_ = text;
            if (answer_ != nullptr) {
                answer_->AddRef(answer_);
            }
            *out = answer_;
            return code_;
        });
    }

    Fake<UIWnd> window_;
    Fake<UIMainFrame> frame_;
    Fake<UIDocumentsCollection> collection_;
    ServiceObject* answer_ = nullptr;
    ResultCode code_ = kResultOk;
    std::string askedFor_;
};

TEST_F(WindowRequest, YieldsAnObjectOfTheInterfaceOrAnErrorRecord)
{
    struct Row {
        const char* name;
        bool hasWindow;
        std::uint32_t tableSize;
        ServiceObject* answer;
        ResultCode code;
        const wchar_t* told;     // the window's error record; null: none
        const wchar_t* message;  // null: success
        ResultCode recordedCode;
    };
    constexpr const wchar_t* kPlain = L"Fail to query UIMainFrame service object from UIWnd!";
    constexpr const wchar_t* kDetailed =
        L"Fail to query UIMainFrame service object from UIWnd! out of %1%";
    const Row rows[] = {
        {"found", true, 264, frame_.Get(), 0, nullptr, nullptr, 0},
        {"smallest table", true, 33, frame_.Get(), 0, nullptr, nullptr, 0},
        {"table too short", true, 32, frame_.Get(), 0, nullptr, kPlain, 8},
        {"no window", false, 264, frame_.Get(), 0, nullptr, kPlain, 8},
        {"nothing", true, 264, nullptr, 0, nullptr, kPlain, 8},
        {"declined", true, 264, nullptr, 1, nullptr, kPlain, 8},
        {"fails silently", true, 264, nullptr, 8, nullptr, kPlain, 8},
        {"fails and tells", true, 264, nullptr, 8, L"out of %1%", kDetailed, 0x31},
        {"fails and tells nothing", true, 264, nullptr, 8, L"", kPlain, 0x31},
        {"another interface", true, 264, collection_.Get(), 0, nullptr, kPlain, 8},
        {"fails with an object", true, 264, collection_.Get(), 8, L"out of %1%", kDetailed, 0x31},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        window_->CutTable(row.tableSize);
        answer_ = row.answer;
        code_ = row.code;
        window_->error.reset();
        if (row.told != nullptr) {
            window_->error = ErrorRecord{0x31, row.told, "", "", 0};
        }
        auto object = BasicServiceObjectPtr<UIMainFrame>::Retain(frame_.Get());
        const bool found = UIWndServiceObjectRequester::QueryServiceObjectFromUIWnd(
            row.hasWindow ? window_.Get() : nullptr, object);
        const bool expected = row.message == nullptr;
        EXPECT_EQ(found, expected);
        EXPECT_EQ(object.Get(), expected ? frame_.Get() : nullptr);
        object.Reset();
        EXPECT_EQ(frame_->References(), 1u);
        EXPECT_EQ(collection_->References(), 1u);
        const auto record = TakeError();
        ASSERT_EQ(record.has_value(), !expected);
        if (record) {
            EXPECT_EQ(record->message, row.message);
            EXPECT_EQ(record->code, row.recordedCode);
            EXPECT_EQ(record->function, "UIWndServiceObjectRequester::QueryServiceObjectFromUIWnd");
        }
    }
    EXPECT_EQ(askedFor_, "UIMainFrame");
}

}  // namespace
