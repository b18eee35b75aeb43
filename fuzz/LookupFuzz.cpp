// Any texts as the index of a page and the name of an item: the current annotation is the one that
// a plain reading of both finds, or the failure is one of the named ones.
//
// Input: the line of the page's index, then the item's name.

#include "CommentsContainerHandler.h"
#include "FuzzTarget.h"
#include "documents/MemoryDocument.h"
#include "services/BLDocumentObject.h"
#include "services/BLDocumentViewObject.h"
#include "services/Host.h"

#include <optional>

namespace {

using namespace Workbench;
using HtmlEngine::ElementHandle;

constexpr std::uint32_t kPages = 4;
constexpr std::uint32_t kAnnotations = 12;

// A handler on a list of one item, which is the current one.
class OneItem {
public:
    OneItem()
    {
        host_.StartPanel();
        Documents::MemoryPage page;
        for (std::uint32_t count = 0; count < kAnnotations; ++count) {
            page.annotations.push_back(Documents::MakeEntry({.subtype = "Text"}));
        }
        const HostStatePtr state(std::shared_ptr<void>(), &host_.State());
        document_ = BLDocumentObject::Make(
            state, Documents::MemoryDocument::Make(
                       "document", std::vector<Documents::MemoryPage>(kPages, page)));
        view_ = BLDocumentViewObject::Make(state, document_);
        ElementHandle body = 0;
        Panel().SelectFirst(Panel().Root(), "body", body);
        Panel().SetHtml(body, "<div id=own><div class=results-container></div></div>",
                        HtmlEngine::InsertPosition::AppendLast);
        Panel().SelectFirst(body, "#own", own_);
        handler_ = SODetails::ServiceObjectCppTheConcrete<CommentsContainerHandler>::Create(
            *view_->AsInterface());
        host_.Panel().AttachHandler(own_, handler_->AsInterface());
        host_.RunUntilIdle();
        ElementHandle list = 0;
        Panel().SelectFirst(own_, ".results-container", list);
        Panel().SetHtml(list, "<ul><li page-index=0><ul><li annot-name=0_0></li></ul></li></ul>",
                        HtmlEngine::InsertPosition::ReplaceContent);
        Panel().SelectFirst(own_, "[page-index]", page_);
        Panel().SelectFirst(own_, "[annot-name]", item_);
        Panel().SetState(item_, HtmlEngine::ElementState::kCurrent, 0);
    }
    ~OneItem() { Panel().Delete(own_); }
    OneItem(const OneItem&) = delete;
    OneItem& operator=(const OneItem&) = delete;

    void Name(const std::string& pageIndex, const std::string& name)
    {
        Panel().SetAttribute(page_, "page-index", pageIndex);
        Panel().SetAttribute(item_, "annot-name", name);
    }
    const CommentsContainerHandler& Handler() const { return *handler_.Get(); }
    const void* At(std::uint32_t page, std::uint32_t position) const
    {
        return document_->Content().AnnotationAt(page, position).Get();
    }

private:
    HtmlEngine::Document& Panel() const { return *host_.Panel().Document(); }

    Host host_{HostOptions{}};
    BasicServiceObjectPtr<BLDocumentObject> document_;
    BasicServiceObjectPtr<BLDocumentViewObject> view_;
    BasicServiceObjectPtr<CommentsContainerHandler> handler_;
    ElementHandle own_ = 0;
    ElementHandle page_ = 0;
    ElementHandle item_ = 0;
};

// The number that a text begins with, modulo 2^32; the largest one for what has more than 32 bits.
std::uint32_t NumberOf(std::string text)
{
    text.erase(0, std::min(text.size(), text.find_first_not_of(" \t\n\v\f\r")));
    const bool isNegative = text.starts_with('-');
    text.erase(0, isNegative || text.starts_with('+') ? 1 : 0);
    text.erase(std::min(text.size(), text.find_first_not_of("0123456789")));
    text.erase(0, text.find_first_not_of('0'));
    const unsigned long long value = text.empty()       ? 0
                                     : text.size() > 10 ? ~0ULL
                                                        : std::stoull(text);
    if (value > 0xFFFFFFFFU) {
        return 0xFFFFFFFFU;
    }
    return static_cast<std::uint32_t>(isNegative ? 0 - value : value);
}

// What a lookup gives; its failure's code where it fails.
template <class Lookup>
ResultCode CodeOf(Lookup lookup)
{
    try {
        lookup();
        return kResultOk;
    } catch (const ServiceObjectException& failure) {
        return failure.Code();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static OneItem one;
    const std::string_view input = TextOf(data, size);
    if (size > 4096 || input.find('\0') != input.npos) {
        return 0;
    }
    InputReader reader(input);
    const std::string pageIndex = reader.TextUntil('\n');
    std::string name(reader.Rest());
    one.Name(pageIndex, name);

    std::uint32_t page = 0;
    const ResultCode pageCode = CodeOf([&] { page = one.Handler().GetPageIndex(); });
    const std::uint32_t expectedPage = NumberOf(pageIndex);
    if (pageIndex.empty() ? pageCode != kResultNotInitialized
                          : pageCode != kResultOk || page != expectedPage) {
        EndWithFault("The page's index is read otherwise.", input);
    }

    const void* found = nullptr;
    const ResultCode code = CodeOf([&] { found = one.Handler().GetCurrentAnnot().Get(); });
    const std::string prefix = std::to_string(expectedPage) + "_";
    if (const std::size_t at = name.find(prefix); at != name.npos) {
        name.erase(at, prefix.size());
    }
    const std::uint32_t position = NumberOf(name);
    const bool isThere = expectedPage < kPages && position < kAnnotations;
    const ResultCode expectedCode = pageIndex.empty()                  ? kResultNotInitialized
                                    : reader.Rest().empty() || isThere ? kResultOk
                                                                       : kResultOutOfRange;
    const void* const expected =
        code != kResultOk || reader.Rest().empty() ? nullptr : one.At(expectedPage, position);
    if (code != expectedCode || found != expected) {
        EndWithFault("The name is tied to another annotation.", input);
    }
    return 0;
}
