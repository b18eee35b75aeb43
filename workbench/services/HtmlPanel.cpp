#include "services/HtmlPanel.h"

#include "service-common/UnicodeText.h"
#include "services/HostObject.h"

#include <optional>
#include <utility>

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

constexpr const char* kTranslated = "[localize]";
constexpr const char* kTokenAttribute = "__l_o_c_a_l_e__t_o_k_e_n__";

// What a click acts on: buttons, and what the style sheet makes clickable.
constexpr const char* kClickable = "button, .button, .button-small, div.icon, ul.comments > li";

// What the panel's style sheet hides: always, with the page item above it collapsed, and unless the
// element's own style says that it is visible.
constexpr const char* kHiddenByStyleSheet = "#reply, li:collapsed > div:nth-child(2)";
constexpr const char* kHiddenUnlessVisible = ".panel-content, .picture[preloader]";

ElementHandle ClosestMatch(const HtmlEngine::Document& document, ElementHandle element,
                           const char* selector)
{
    ElementHandle match = kNoElement;
    document.Closest(element, selector, match);
    return match;
}

// Keeps an element's handle good while events about it are raised.
class ElementUse {
public:
    ElementUse(HtmlEngine::Document& document, ElementHandle element)
        : document_(document), element_(element)
    {
        held_ = document_.Use(element_) == HtmlEngine::Result::Success;
    }
    ~ElementUse()
    {
        if (held_) {
            document_.Unuse(element_);
        }
    }
    ElementUse(const ElementUse&) = delete;
    ElementUse& operator=(const ElementUse&) = delete;

private:
    HtmlEngine::Document& document_;
    ElementHandle element_;
    bool held_;
};

}  // namespace

HtmlPanel::HtmlPanel(HostStatePtr state, BasicServiceObjectPtr<LocaleManagerObject> locale)
    : state_(std::move(state)),
      locale_(std::move(locale)),
      document_(std::make_unique<HtmlEngine::Document>())
{
}

HtmlPanel::~HtmlPanel()
{
    Close();
}

void HtmlPanel::SetInterfaces(UIWnd* window, UIHtmlEngine* engine) noexcept
{
    window_ = window;
    engine_ = engine;
}

void HtmlPanel::LoadDocument(std::string_view html)
{
    originalTexts_.clear();
    document_->Load(html);
    Translate();
}

void HtmlPanel::Close()
{
    // Handlers that are detached on the way find no document any more.
    const std::unique_ptr<HtmlEngine::Document> closed = std::move(document_);
    originalTexts_.clear();
}

ResultCode HtmlPanel::AttachHandler(ElementHandle element, UIHandler* handler)
{
    if (const ResultCode code = CheckServiceObject(handler, UIHandler::kName); code != kResultOk) {
        FailCall(code, "what is to be attached is no UIHandler");
    }
    for (const auto& [place, attached] : document_->HandlersOf(element)) {
        if (place == element && static_cast<HandlerAttachment&>(*attached).Is(handler)) {
            FailCall(kResultUnexpected, "the handler is attached to that element already");
        }
    }
    const auto attachment = std::make_shared<HandlerAttachment>(
        BasicServiceObjectPtr<UIHandler>::Retain(handler), state_->failures);
    if (document_->AttachHandler(element, attachment) != HtmlEngine::Result::Success) {
        FailCall(kResultNotFound, "a handler can only be attached to an element of the page");
    }
    std::erase_if(attachments_, [](const auto& weak) { return weak.expired(); });
    attachments_.push_back(attachment);

    const UIElement attachedTo{HandleOf(element), engine_};
    const ResultCode code = attachment->Attach(window_, attachedTo);
    if (!IsExpectedResult(code) && attachment->IsAttached()) {
        document_->DetachHandler(element, attachment.get());
    }
    return code;
}

std::vector<HtmlPanel::AttachmentPtr> HtmlPanel::LivingAttachments()
{
    std::vector<AttachmentPtr> living;
    for (const auto& weak : attachments_) {
        if (AttachmentPtr attachment = weak.lock(); attachment && attachment->IsAttached()) {
            living.push_back(std::move(attachment));
        }
    }
    return living;
}

void HtmlPanel::Translate()
{
    const ElementHandle root = document_->Root();
    document_->SetAttribute(root, "lang", locale_->Language());
    document_->SetAttribute(root, "dir", locale_->IsRightToLeft() ? "rtl" : "ltr");
    document_->SelectAll(root, kTranslated, [this](ElementHandle element) {
        TranslateElement(element);
        return true;
    });
}

void HtmlPanel::TranslateElement(ElementHandle element)
{
    const std::optional<std::string> token = document_->Attribute(element, kTokenAttribute);
    const std::string shown = document_->TextContent(element);
    std::string key = shown;
    if (token) {
        key = *token;
    } else if (const auto original = originalTexts_.find(element);
               original != originalTexts_.end()) {
        key = original->second;
    }
    const char16_t* const found = locale_->Find(UnicodeText::ToUtf16(key));
    if (found == nullptr) {
        // A language without that text: the token says nothing to a user, the original text does.
        if (!token && shown != key) {
            document_->SetText(element, key);
        }
        return;
    }
    const std::string text = UnicodeText::ToUtf8(found);
    if (text == shown) {
        return;
    }
    if (!token) {
        originalTexts_.try_emplace(element, key);
    }
    document_->SetText(element, text);
}

void HtmlPanel::OnLocaleChanged()
{
    std::erase_if(originalTexts_,
                  [this](const auto& entry) { return !document_->IsKnown(entry.first); });
    Translate();
    CallHandlers<UIHandler::OnLocaleChanged>();
}

bool HtmlPanel::IsShown(ElementHandle element) const
{
    if (!document_->IsAttached(element) || document_->IsHidden(element) ||
        ClosestMatch(*document_, element, kHiddenByStyleSheet) != kNoElement) {
        return false;
    }
    ElementHandle hider = ClosestMatch(*document_, element, kHiddenUnlessVisible);
    while (hider != kNoElement) {
        if (document_->Style(hider, "visibility") != "visible") {
            return false;
        }
        const ElementHandle parent = document_->Parent(hider);
        hider = parent == kNoElement ? kNoElement
                                     : ClosestMatch(*document_, parent, kHiddenUnlessVisible);
    }
    return true;
}

ElementHandle HtmlPanel::ClickTarget(ElementHandle element) const
{
    const ElementHandle target = ClosestMatch(*document_, element, kClickable);
    return target == kNoElement || document_->IsDisabled(target) || !IsShown(element) ? kNoElement
                                                                                      : target;
}

void HtmlPanel::ScrollIntoView(ElementHandle element) const
{
    if (scrollCallback_ && document_->IsAttached(element)) {
        scrollCallback_(element);
    }
}

template <class M, class Event>
void HtmlPanel::Raise(ElementHandle target, std::uint32_t eventGroup, Event& event)
{
    for (const auto& [element, attached] : document_->HandlersOf(target)) {
        auto& attachment = static_cast<HandlerAttachment&>(*attached);
        if (attachment.Wants(eventGroup) && event.handled == 0) {
            attachment.Call<M>(HandleOf(element), &event);
        }
    }
}

void HtmlPanel::Click(ElementHandle element)
{
    const ElementHandle target = ClickTarget(element);
    if (target == kNoElement) {
        return;
    }
    const ElementUse use(*document_, target);
    UIBehaviourEvent event{HandleOf(target), kBehaviourClick, 0};
    Raise<UIHandler::HandleEvent>(target, kEventGroupBehaviour, event);
}

void HtmlPanel::PressKey(ElementHandle element, std::uint32_t virtualKey, std::uint32_t modifiers)
{
    if (!document_->IsAttached(element) || document_->IsDisabled(element) || !IsShown(element)) {
        return;
    }
    const ElementUse use(*document_, element);
    for (const std::uint32_t kind : {kKeyDown, kKeyUp}) {
        UIKeyEvent event{HandleOf(element), kind, virtualKey, modifiers, 0};
        if (document_->IsAttached(element)) {
            Raise<UIHandler::HandleKey>(element, kEventGroupKeys, event);
        }
    }
}

}  // namespace Workbench
