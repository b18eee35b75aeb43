// The host's "UIHtmlEngine": access to the panel's document through element handles. [ui-thread]
#pragma once

#include "services/HostObject.h"
#include "services/HtmlPanel.h"
#include "ui-engine/UIHtmlEngine.SO.h"

#include <memory>
#include <string>

namespace Workbench {

class UIHtmlEngineObject : public HostObject<UIHtmlEngineObject, UIHtmlEngine> {
public:
    explicit UIHtmlEngineObject(std::shared_ptr<HtmlPanel> panel);

private:
    ResultCode UseElement(HtmlElementHandle element);
    ResultCode UnuseElement(HtmlElementHandle element);
    ResultCode GetParent(HtmlElementHandle element, HtmlElementHandle* parent) const;
    ResultCode GetIndex(HtmlElementHandle element, std::uint32_t* index) const;
    ResultCode GetChildCount(HtmlElementHandle element, std::uint32_t* count) const;
    ResultCode GetNthChild(HtmlElementHandle element, std::uint32_t index,
                           HtmlElementHandle* child) const;
    ResultCode SetHtml(HtmlElementHandle element, const std::uint8_t* html, std::uint32_t length,
                       HtmlPosition position);
    ResultCode SetText(HtmlElementHandle element, const char16_t* text, std::uint32_t length);
    ResultCode SetStyleAttribute(HtmlElementHandle element, const char* name,
                                 const char16_t* value);
    ResultCode GetState(HtmlElementHandle element, std::uint32_t* state) const;
    ResultCode SetState(HtmlElementHandle element, std::uint32_t bitsToSet,
                        std::uint32_t bitsToClear, std::uint32_t updateNow);
    ResultCode SelectFirst(HtmlElementHandle root, const char* selector,
                           HtmlElementHandle* element) const;
    ResultCode SelectEnclosing(HtmlElementHandle element, const char* selector,
                               HtmlElementHandle* enclosing) const;
    ResultCode TestSelector(HtmlElementHandle element, const char* selector, bool* matches) const;
    ResultCode GetAttribute(HtmlElementHandle element, const char* name, const char16_t** value,
                            std::uint32_t* length);
    ResultCode UpdateElement(HtmlElementHandle element, std::uint32_t flags) const;
    ResultCode ScrollIntoView(HtmlElementHandle element, std::uint32_t flags) const;
    ResultCode AttachHandler(HtmlElementHandle element, UIHandler* handler);
    ResultCode DeleteElement(HtmlElementHandle element);

    // The panel's document; fails after it was closed.
    HtmlEngine::Document& PanelDocument() const;
    // The same; fails also for an unknown element.
    HtmlEngine::Document& PanelDocumentWith(HtmlElementHandle element) const;

    const std::shared_ptr<HtmlPanel> panel_;
    std::u16string handedOut_;  // the text that the last GetAttribute returned
};

// Fails, with a message, for every result but success. The message for a malformed selector quotes
// `selector`.
void CheckEngineResult(HtmlEngine::Result result, const char* selector = "");

}  // namespace Workbench
