// The panel's document in the host: an HTML engine document, the handlers attached to its elements,
// its language, and input. [ui-thread]
#pragma once

#include "html-engine/Document.h"
#include "services/HandlerAttachment.h"
#include "services/HostState.h"
#include "services/LocaleManagerObject.h"
#include "ui-engine/UIHtmlEngine.SO.h"
#include "ui-engine/UIWnd.SO.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Workbench {

class HtmlPanel {
public:
    HtmlPanel(HostStatePtr state, BasicServiceObjectPtr<LocaleManagerObject> locale);
    ~HtmlPanel();
    HtmlPanel(const HtmlPanel&) = delete;
    HtmlPanel& operator=(const HtmlPanel&) = delete;

    // Sets the interfaces passed to handlers when they are attached. Borrowed; their owner passes
    // two nulls before they are destroyed.
    void SetInterfaces(UIWnd* window, UIHtmlEngine* engine) noexcept;

    // Null after Close.
    HtmlEngine::Document* Document() const noexcept { return document_.get(); }

    // Replaces the document by `html` (UTF-8) and translates it to the present language.
    void LoadDocument(std::string_view html);

    // Closes the document: detaches every handler and destroys every element. Must not be called
    // from a handler.
    void Close();

    // Attaches a handler and calls its Attached. Throws ServiceObjectException for an unknown
    // element, an element outside the tree, an object that is not a UIHandler, and a handler that
    // is attached to the element already. A handler whose Attached fails is not attached; its code
    // is returned.
    ResultCode AttachHandler(HtmlEngine::ElementHandle element, UIHandler* handler);

    // Calls method `M` of every attached handler, in order of attachment.
    template <class M>
    void CallHandlers()
    {
        for (const auto& attachment : LivingAttachments()) {
            attachment->template Call<M>();
        }
    }

    // Number of attached handlers.
    std::size_t AttachedHandlerCount() { return LivingAttachments().size(); }

    // To be called after a language change: translates the elements with `localize`, then notifies
    // the handlers.
    void OnLocaleChanged();

    // --- Input ---

    // Whether the element is visible: neither inline styles nor the panel's style sheet hide it or
    // an ancestor.
    bool IsShown(HtmlEngine::ElementHandle element) const;

    // The target of a click on `element`, as in a browser: the element itself or its nearest
    // clickable ancestor. kNoElement when there is none or it is disabled or hidden.
    HtmlEngine::ElementHandle ClickTarget(HtmlEngine::ElementHandle element) const;

    // Clicks with the pointer. Raises no event without a click target.
    void Click(HtmlEngine::ElementHandle element);

    // Presses and releases a key while `element` has the keyboard focus. Raises no event on a
    // disabled or hidden element.
    void PressKey(HtmlEngine::ElementHandle element, std::uint32_t virtualKey,
                  std::uint32_t modifiers = 0);

    // --- Output ---

    using ScrollCallback = std::function<void(HtmlEngine::ElementHandle)>;

    // Sets the callback for requests to scroll an element into view; empty removes it.
    void SetScrollCallback(ScrollCallback callback) { scrollCallback_ = std::move(callback); }
    void ScrollIntoView(HtmlEngine::ElementHandle element) const;

private:
    using AttachmentPtr = std::shared_ptr<HandlerAttachment>;

    std::vector<AttachmentPtr> LivingAttachments();
    void Translate();
    void TranslateElement(HtmlEngine::ElementHandle element);

    template <class M, class Event>
    void Raise(HtmlEngine::ElementHandle target, std::uint32_t eventGroup, Event& event);

    const HostStatePtr state_;
    const BasicServiceObjectPtr<LocaleManagerObject> locale_;
    UIWnd* window_ = nullptr;
    UIHtmlEngine* engine_ = nullptr;
    std::unique_ptr<HtmlEngine::Document> document_;
    ScrollCallback scrollCallback_;
    std::vector<std::weak_ptr<HandlerAttachment>> attachments_;
    // The original text of translated elements, which is the key of their translation.
    std::unordered_map<HtmlEngine::ElementHandle, std::string> originalTexts_;
};

// The two forms of a handle.
inline HtmlElementHandle HandleOf(HtmlEngine::ElementHandle element) noexcept
{
    return reinterpret_cast<HtmlElementHandle>(element);
}
inline HtmlEngine::ElementHandle ElementOf(HtmlElementHandle element) noexcept
{
    return reinterpret_cast<HtmlEngine::ElementHandle>(element);
}

}  // namespace Workbench
