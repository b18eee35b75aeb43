// The host's "UIWnd": the window that holds the panel's document. [ui-thread]
#pragma once

#include "service-common/Atom.h"
#include "services/HostObject.h"
#include "services/HtmlPanel.h"
#include "ui-engine/UIWnd.SO.h"

#include <memory>
#include <unordered_map>

namespace Workbench {

class UIWndObject : public HostObject<UIWndObject, UIWnd> {
public:
    // `engine` is the element interface passed to collectors; borrowed, outlives every query.
    UIWndObject(std::shared_ptr<HtmlPanel> panel, UIHtmlEngine* engine);

    // Registers an object in the window's scope, replacing any of the same name; an empty handle
    // removes it.
    void Provide(const char* name, BasicServiceObjectPtr<ServiceObject> object);

private:
    ResultCode QueryServiceObject(Atom name, ServiceObject** object) const;
    ResultCode SelectElements(HtmlElementHandle root, const char* selector,
                              UIWnd::Collector collector, void* context) const;

    const std::shared_ptr<HtmlPanel> panel_;
    UIHtmlEngine* const engine_;
    std::unordered_map<Atom, BasicServiceObjectPtr<ServiceObject>> scope_;
};

}  // namespace Workbench
