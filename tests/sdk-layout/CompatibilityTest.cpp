// One change each, and the rule that it breaks; then changes that break none.
#include "Compatibility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

constexpr const char* kReleased = R"(export CreateServiceObject: u32(u32, ServiceObject**)
function VxGetAtomFromString: u32(const char*, u32*)
tag kEndOfTableTag: EOFT
code 2: kResultNullPointer
code 2: kResultNotInitialized
code 8: kResultNotFound
constant kStateCurrent: 32
interface UIWnd: id 4711
table UIWnd: 368 bytes
slot UIWnd 4: QueryServiceObject u32(UIWnd*, u32)
event UIWnd 8: OnClosed void(void*)
slot UIWnd 45: Last u32(UIWnd*)
struct UIElement: 16 bytes
field UIElement 0: handle _HtmlElement*
struct PDFunctionTable: 128 bytes
field PDFunctionTable 0: size u32
)";

struct Row {
    const char* from;  // empty: the text is added
    const char* to;
    const char* told;
};

std::string Changed(const Row& row)
{
    std::string text = kReleased;
    const std::string from = row.from;
    const std::size_t at = from.empty() ? text.size() : text.find(from);
    EXPECT_NE(at, std::string::npos) << row.from;
    return text.replace(at, from.size(), row.to);
}

TEST(Compatibility, NamesTheRuleThatAChangeBreaks)
{
    const Row rows[] = {
        {"export CreateServiceObject", "export MakeServiceObject",
         "export CreateServiceObject was u32(u32, ServiceObject**), is gone: an export keeps"},
        {"(const char*, u32*)", "(const char*, u64*)",
         "a function of the platform libraries keeps"},
        {": EOFT", ": TFOE", "tag kEndOfTableTag was EOFT, is TFOE: a tag never changes"},
        {"8: kResultNotFound", "8: kResultBusy",
         "code 8 was kResultNotFound, is kResultBusy: a code never changes its meaning"},
        {"", "code 8: kResultBusy\n", "is kResultNotFound, kResultBusy: a code never changes"},
        {"Current: 32", "Current: 64", "constant kStateCurrent was 32, is 64: a constant keeps"},
        {"id 4711", "id 4712", "an interface keeps its name"},
        {"UIWnd 4: QueryServiceObject", "UIWnd 5: QueryServiceObject",
         "slot 4 of UIWnd was QueryServiceObject u32(UIWnd*, u32), is gone: slots are never "},
        {"(UIWnd*, u32)", "(UIWnd*, u64)", "and a method keeps its arguments"},
        {"void(void*)", "void(bool, void*)", "and an event keeps its arguments"},
        {"368 bytes", "360 bytes", "the table of UIWnd was 368 bytes, is 360 bytes: a table never"},
        {"", "slot UIWnd 7: Close u32(UIWnd*)\n",
         "slot 7 of UIWnd is Close u32(UIWnd*), new: a method may be added only at the end"},
        {"", "event UIWnd 46: OnMoved void(void*)\n", "only with a new interface"},
        {"368 bytes", "384 bytes\nslot UIWnd 47: Close u32(UIWnd*)", "fewer than 377 bytes stays"},
        {"Element: 16 bytes", "Element: 24 bytes",
         "struct UIElement was 16 bytes, is 24 bytes: a structure keeps its size"},
        {"UIElement 0: handle", "UIElement 8: handle", "a field keeps its place"},
        {"", "field UIElement 12: flags u32\n", "a structure never gets another field"},
        {"", "field PDFunctionTable 4: flags u32\n", "a structure never gets another field"},
        {"128 bytes", "120 bytes", "struct PDFunctionTable was 128 bytes, is 120 bytes"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.to);
        const auto breaks = SdkLayout::Compare(kReleased, Changed(row)).breaks;
        EXPECT_THAT(breaks, testing::Contains(testing::HasSubstr(row.told)));
    }
}

TEST(Compatibility, ListsWhatMayBeAdded)
{
    const Row rows[] = {
        {"", "export DescribeModule: u32()\n", "export DescribeModule is u32()"},
        {"", "code 11: kResultBusy\n", "code 11 is kResultBusy"},
        {"", "constant kStateHidden: 2048\n", "constant kStateHidden is 2048"},
        {"", "interface UINew: id 1\ntable UINew: 16 bytes\nevent UINew 0: OnA void(void*)\n",
         "slot 0 of UINew is OnA void(void*)"},
        {"368 bytes", "376 bytes\nslot UIWnd 46: Close u32(UIWnd*)", "slot 46 of UIWnd is Close"},
        {"", "struct UINewBlock: 8 bytes\nfield UINewBlock 0: a u64\n", "struct UINewBlock is 8"},
        {"128 bytes", "136 bytes\nfield PDFunctionTable 128: AnnotGetFlags u32()",
         "offset 128 of PDFunctionTable is AnnotGetFlags u32()"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.to);
        const auto comparison = SdkLayout::Compare(kReleased, Changed(row));
        EXPECT_THAT(comparison.breaks, testing::IsEmpty());
        EXPECT_THAT(comparison.additions, testing::Contains(testing::HasSubstr(row.told)));
    }
    const auto same = SdkLayout::Compare(kReleased, kReleased);
    EXPECT_TRUE(same.breaks.empty() && same.additions.empty());
}

}  // namespace
