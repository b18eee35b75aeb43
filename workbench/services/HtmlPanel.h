// The panel's page as the host shows it: the document of the HTML engine, the handlers on its
// elements, its language, and input. [ui-thread]
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

    // The objects that handlers are given when they are attached. Borrowed; their owner ends this
    // with two nulls before they die.
    void SetInterfaces(UIWnd* window, UIHtmlEngine* engine) noexcept;

    // Null after Close.
    HtmlEngine::Document* Page() const noexcept { return document_.get(); }

    // Loads a page (UTF-8) and puts it into the present language.
    void LoadPage(std::string_view html);

    // Ends the page: every handler is detached, every element gone. Not from inside a handler.
    void Close();

    // Attaches a handler and calls its Attached. Throws ServiceObjectException for an element that
    // is none or not in the tree, an object that is no UIHandler, and a handler that is on that
    // element already; gives the code of a handler that does not accept, and keeps it not.
    ResultCode AttachHandler(HtmlEngine::ElementHandle element, UIHandler* handler);

    // Calls method `M` of every attached handler, in order of attachment.
    template <class M>
    void CallHandlers()
    {
        for (const auto& attachment : LivingAttachments()) {
            attachment->template Call<M>();
        }
    }

    // Number of handlers that are attached.
    std::size_t AttachedHandlerCount() { return LivingAttachments().size(); }

    // The language has changed: translates the elements that carry `localize`, then tells the
    // handlers.
    void OnLocaleChanged();

    // --- Input ---

    // Whether a user could see the element: neither its own styles nor what the panel's style sheet
    // says of it and its ancestors hide it.
    bool IsShown(HtmlEngine::ElementHandle element) const;

    // The element that takes a click on `element`, as in a browser: the nearest clickable one.
    // kNoElement when there is none, or a disabled or hidden one.
    HtmlEngine::ElementHandle ClickTarget(HtmlEngine::ElementHandle element) const;

    // A click with the pointer. Raises nothing where there is no click target.
    void Click(HtmlEngine::ElementHandle element);

    // A key pressed and let go while `element` has the keyboard focus. Raises nothing for a
    // disabled or hidden element.
    void PressKey(HtmlEngine::ElementHandle element, std::uint32_t virtualKey,
                  std::uint32_t modifiers = 0);

    // --- Output ---

    using ScrollCallback = std::function<void(HtmlEngine::ElementHandle)>;

    // Called when a handler asks for an element to be scrolled into view; empty removes it.
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
    // The original text of elements that were translated by it.
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
