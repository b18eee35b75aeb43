// The tie between list items and annotations: names, positions, and the current item.
#include "PanelFixture.h"

#include "CommentsContainerHandler.h"
#include "service-common/WideText.h"

#include <optional>

namespace PanelTests {
namespace {

using namespace Workbench;
using Handler = CommentsContainerHandler;

// What a lookup failed with.
struct Failure {
    ResultCode code;
    std::wstring message;
    std::string function;

    friend bool operator==(const Failure&, const Failure&) = default;
    friend void PrintTo(const Failure& failure, std::ostream* out)
    {
        *out << failure.code << " " << ToUtf8(failure.message) << " in " << failure.function;
    }
};
const Failure kNone{};

Failure NotInitialized(const char* function)
{
    return {2, L"Not initialized", std::string("CommentsContainerHandler::") + function};
}
Failure OutOfRange(const wchar_t* message, const char* function)
{
    return {9, message, std::string("CommentsContainerHandler::") + function};
}

template <class Lookup>
Failure FailureOf(Lookup lookup)
{
    try {
        lookup();
    } catch (const ServiceObjectException& failure) {
        EXPECT_EQ(failure.File(), "src/ui-document-panel-comments/CommentsContainerHandler");
        EXPECT_NE(failure.Line(), 0u);
        return {failure.Code(), failure.Message(), failure.Function()};
    }
    return kNone;
}

class Lookup : public PanelTest {
protected:
    using DocumentObject = BasicServiceObjectPtr<BLDocumentObject>;

    void SetUp() override { Start(); }

    DocumentObject MakeObject(const Pages& pages) const
    {
        return BLDocumentObject::Make(state, MakeDocument(pages));
    }
    static PDFL::Annotation At(const DocumentObject& document, std::uint32_t page,
                               std::uint32_t position)
    {
        return PDFL::Annotation::Retain(document->Content().AnnotationAt(page, position).Get());
    }
};

TEST_F(Lookup, PositionsAreFoundOrSaidToBeMissing)
{
    const MemoryEntry twice = Comment("Ink");
    const auto document = MakeObject(
        {{Comment("Text"), nullptr, Comment("Link"), twice, twice}, {}, {Comment("Text"), twice}});
    const auto other = MakeObject({{Comment("Text")}});
    struct Row {
        BLDocument* document;
        std::uint32_t page;
        PDFL::Annotation annotation;
        const wchar_t* name;
        Failure failure;
    };
    constexpr const char* kFunction = "GetAnnotIndex";
    const Failure notFound{8, L"Annot not found", "CommentsContainerHandler::GetAnnotIndex"};
    const Failure noPage = OutOfRange(L"Page index out of range", kFunction);
    const Row rows[] = {
        {document->AsInterface(), 0, At(document, 0, 0), L"0_0", kNone},
        {document->AsInterface(), 0, At(document, 0, 2), L"0_2", kNone},
        {document->AsInterface(), 0, At(document, 0, 4), L"0_3", kNone},  // the first of equal ones
        {document->AsInterface(), 2, At(document, 0, 4), L"2_1", kNone},
        {document->AsInterface(), 1, At(document, 0, 0), L"", notFound},
        {document->AsInterface(), 2, At(document, 0, 0), L"", notFound},
        {document->AsInterface(), 0, At(other, 0, 0), L"", notFound},
        {document->AsInterface(), 0, PDFL::Annotation(), L"", notFound},
        {document->AsInterface(), 3, At(document, 0, 0), L"", noPage},
        {document->AsInterface(), kPDNoPage, At(document, 0, 0), L"", noPage},
        {nullptr, 0, At(document, 0, 0), L"", NotInitialized(kFunction)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.page << " " << row.name);
        std::wstring name;
        EXPECT_EQ(FailureOf([&] {
                      name = Handler::MakeAnnotUniqueName(row.document, row.page, row.annotation);
                  }),
                  row.failure);
        EXPECT_EQ(name, row.name);
    }
}

TEST_F(Lookup, AnnotationsAreFoundByTheNumberThatATextBeginsWith)
{
    const auto document =
        MakeObject({{Comment("Text"), nullptr, Comment("Link"), Comment("Ink")}, {}});
    struct Row {
        std::uint32_t page;
        const wchar_t* text;
        std::optional<std::uint32_t> found;  // nothing: an empty entry
        Failure failure;
    };
    constexpr const char* kFunction = "FindAnnot";
    const Failure noIndex = OutOfRange(L"Annot index out of range", kFunction);
    const Failure noPage = OutOfRange(L"Page index out of range", kFunction);
    const Row rows[] = {
        {0, L"0", 0, kNone},
        {0, L"3", 3, kNone},
        {0, L"003", 3, kNone},
        {0, L"2_7", 2, kNone},
        {0, L"2x", 2, kNone},
        {0, L"1", std::nullopt, kNone},
        {0, L"", 0, kNone},
        {0, L"x", 0, kNone},
        {0, L"_2", 0, kNone},
        {0, L"\x0663", 0, kNone},  // a digit of another script
        {0, L"4", {}, noIndex},
        {0, L"-1", {}, noIndex},
        {0, L"4294967295", {}, noIndex},
        {0, L"4294967296", {}, noIndex},
        {0, L"99999999999999999999999", {}, noIndex},
        {1, L"0", {}, noIndex},
        {1, L"x", {}, noIndex},
        {2, L"0", {}, noPage},
        {kPDNoPage, L"0", {}, noPage},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.page << " " << ToUtf8(row.text));
        PDFL::Annotation found;
        EXPECT_EQ(FailureOf([&] {
                      found = Handler::FindAnnot(document->AsInterface(), row.page, row.text);
                  }),
                  row.failure);
        EXPECT_EQ(found.Get(), row.found ? At(document, row.page, *row.found).Get() : nullptr);
    }
    EXPECT_EQ(FailureOf([] { Handler::FindAnnot(nullptr, 0, L"0"); }), NotInitialized(kFunction));
}

// A handler of the test's own, on a list that the test writes.
class OwnHandler : public Lookup {
protected:
    using HandlerPtr = BasicServiceObjectPtr<Handler>;

    HandlerPtr Attach(BLDocumentViewObject& view)
    {
        HtmlEngine::Document& panel = *host.Panel().Document();
        ElementHandle body = kNoElement;
        panel.SelectFirst(panel.Root(), "body", body);
        panel.SetHtml(body,
                      "<div id=\"own\"><div class=\"picture\" preloader></div>"
                      "<div class=\"results-container\"></div></div>",
                      HtmlEngine::InsertPosition::AppendLast);
        panel.SelectFirst(body, "#own", own);
        const auto handler =
            SODetails::ServiceObjectCppTheConcrete<Handler>::Create(*view.AsInterface());
        EXPECT_EQ(host.Panel().AttachHandler(own, handler->AsInterface()), kResultOk);
        Settle();
        return handler;
    }
    // Writes the list and makes what `selector` finds the current element.
    void Write(const std::string& list, const std::string& selector)
    {
        HtmlEngine::Document& panel = *host.Panel().Document();
        ElementHandle results = kNoElement;
        panel.SelectFirst(own, ".results-container", results);
        panel.SetHtml(results, list, HtmlEngine::InsertPosition::ReplaceContent);
        ElementHandle current = kNoElement;
        panel.SelectFirst(own, selector, current);
        panel.SetState(current, HtmlEngine::ElementState::kCurrent, 0);
    }
    void Detach() { host.Panel().Document()->Delete(own); }

    ElementHandle own = kNoElement;
};

TEST_F(OwnHandler, ResolvesTheCurrentItemByItsPageItemAndTheRestOfItsName)
{
    Pages pages(6);
    pages[3].assign(6, nullptr);
    for (MemoryEntry& entry : pages[3]) {
        entry = Comment("Ink");
    }
    pages[0] = {Comment("Text"), Comment("Text")};
    const auto document = MakeObject(pages);
    const auto view = BLDocumentViewObject::Make(state, document);
    const HandlerPtr handler = Attach(*view.Get());

    const auto listOf = [](const std::string& page, const std::string& name) {
        return "<ul page-item=\"9\"><li " + page + "><div class=icon></div><div>" +
               "<ul class=comments><li " + name + ">x</li></ul></div></li></ul>";
    };
    const std::string page3 = "page-index=\"3\"";
    struct Row {
        std::string list;
        std::uint32_t page;
        std::optional<std::uint32_t> position;  // nothing: an empty annotation
        Failure pageFailure, annotFailure;
    };
    const Failure noPageIndex = NotInitialized("GetPageIndex");
    const Failure noIndex = OutOfRange(L"Annot index out of range", "FindAnnot");
    const Row rows[] = {
        {listOf(page3, "annot-name=\"3_2\""), 3, 2, kNone, kNone},
        {listOf(page3, "annot-name=\"3_x\""), 3, 0, kNone, kNone},
        {listOf(page3, "annot-name=\"5_2\""), 3, 5, kNone, kNone},
        {listOf(page3, "annot-name=\"0_3_1\""), 3, 0, kNone, kNone},
        {listOf(page3, "annot-name=\"43_2\""), 3, {}, kNone, noIndex},  // "4" and "2" are left
        {listOf(page3, "annot-name=\"3_6\""), 3, {}, kNone, noIndex},
        {listOf(page3, "annot-name=\"3_-1\""), 3, {}, kNone, noIndex},
        {listOf(page3, "annot-name=\"\""), 3, {}, kNone, kNone},
        {listOf("page-index=\"007\"", "annot-name=\"7_0\""),
         7,
         {},
         kNone,
         OutOfRange(L"Page index out of range", "FindAnnot")},
        {listOf("page-index=\"x\"", "annot-name=\"0_1\""), 0, 1, kNone, kNone},
        {listOf("page-index=\"\"", "annot-name=\"3_0\""), 0, {}, noPageIndex, noPageIndex},
        {listOf("other", "annot-name=\"3_0\""), 0, {}, noPageIndex, noPageIndex},
        {listOf(page3, "other"), 0, {}, noPageIndex, NotInitialized("GetCurrentAnnot")},
        {"", 0, {}, noPageIndex, NotInitialized("GetCurrentAnnot")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.list);
        Write(row.list, "ul.comments li");
        std::uint32_t page = 0;
        EXPECT_EQ(FailureOf([&] { page = handler->GetPageIndex(); }), row.pageFailure);
        EXPECT_EQ(page, row.page);
        PDFL::Annotation annotation;
        EXPECT_EQ(FailureOf([&] { annotation = handler->GetCurrentAnnot(); }), row.annotFailure);
        EXPECT_EQ(annotation.Get(),
                  row.position ? At(document, row.page, *row.position).Get() : nullptr);
    }
    Detach();
}

TEST_F(OwnHandler, FindsTheItemOfAnAnnotation)
{
    const auto document = MakeObject(FivePages());
    const auto view = BLDocumentViewObject::Make(state, document);
    const HandlerPtr handler = Attach(*view.Get());
    const auto nameOf = [&](const ElementReference& item) {
        return item ? item.Attribute("annot-name") : L"none";
    };
    EXPECT_EQ(nameOf(handler->FindAnnotItem(3, At(document, 3, 1))), L"3_1");
    EXPECT_EQ(nameOf(handler->FindAnnotItem(3, PDFL::Annotation())), L"none");
    EXPECT_EQ(nameOf(handler->FindAnnotItem(kPDNoPage, At(document, 3, 1))), L"none");
    EXPECT_EQ(FailureOf([&] { handler->FindAnnotItem(2, At(document, 3, 1)); }).code,
              kResultNotFound);
    Write("", "");
    EXPECT_EQ(nameOf(handler->FindAnnotItem(3, At(document, 3, 1))), L"none");
    Detach();
    EXPECT_EQ(nameOf(handler->FindAnnotItem(3, At(document, 3, 1))), L"none");
}

TEST_F(OwnHandler, AsksForMouseKeysAndBehaviourAndHandlesNothingFinally)
{
    const auto view = BLDocumentViewObject::Make(state, MakeObject(FivePages()));
    const HandlerPtr handler = Attach(*view.Get());
    UIHandler* const object = handler->AsInterface();
    std::uint32_t events = 0;
    CallMethod<UIHandler::GetSubscribedEvents>(object, &events);
    EXPECT_EQ(events, 259u);
    UIKeyEvent key{nullptr, kKeyDown, kKeyEnd, 0, 0};
    UIBehaviourEvent click{nullptr, kBehaviourClick, 0};
    const HtmlElementHandle none = nullptr;
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleMouse>(object, none, nullptr).code, 1u);
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleKey>(object, none, &key).code, 1u);
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleKey>(object, none, nullptr).code, 3u);
    EXPECT_EQ(TakeError(), "UIHandler::HandleKey() failed, code: 3");
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleEvent>(object, none, &click).code, 1u);
    EXPECT_EQ(CallMethodUnchecked<UIHandler::HandleEvent>(object, none, nullptr).code, 3u);
    EXPECT_EQ(TakeError(), "UIHandler::HandleEvent() failed, code: 3");
    EXPECT_EQ(CallMethodUnchecked<UIHandler::OnLocaleChanged>(object).code, 0u);
    Settle();
    Detach();
    EXPECT_EQ(CallMethodUnchecked<UIHandler::OnLocaleChanged>(object).code, 0u) << "detached";
    EXPECT_EQ(CallMethodUnchecked<UIHandler::Detached>(object).code, 0u) << "twice";
}

TEST_F(OwnHandler, AsksForAFirstItemWithoutMakingItCurrent)
{
    const auto view = BLDocumentViewObject::Make(state, MakeObject(FivePages()));
    const HandlerPtr handler = Attach(*view.Get());
    EXPECT_TRUE(handler->HasCurrentAnnotItem());
    EXPECT_TRUE(handler->SelectFirstAnnotItem(false)) << "there is a first item";
    EXPECT_FALSE(handler->HasCurrentAnnotItem()) << "and the test took the state with it";
    EXPECT_FALSE(handler->HasSiblingAnnotItem(false) || handler->HasAdjacentPageAnnotItem(false));
    Write("", "");
    EXPECT_FALSE(handler->SelectFirstAnnotItem(true) || handler->SelectLastAnnotItem());
    Detach();
}

TEST_F(OwnHandler, NeedsAViewWithADocument)
{
    const std::string list = "<ul page-item=\"0\"><li page-index=\"0\"><ul class=comments>"
                             "<li annot-name=\"0_0\">x</li></ul></li></ul>";
    auto view = BLDocumentViewObject::Make(state, nullptr);
    const HandlerPtr handler = Attach(*view.Get());
    Write(list, "li[annot-name]");
    EXPECT_EQ(handler->GetPageIndex(), 0u) << "is a matter of the list alone";
    const auto other = MakeObject({{Comment("Ink")}});
    for (const bool alive : {true, false}) {
        SCOPED_TRACE(alive);
        if (!alive) {
            view.Reset();
        }
        EXPECT_EQ(FailureOf([&] { handler->GetCurrentAnnot(); }),
                  NotInitialized("GetCurrentAnnot"));
        EXPECT_FALSE(handler->FindAnnotItem(0, At(other, 0, 0)));
    }
    Detach();
}

}  // namespace
}  // namespace PanelTests
