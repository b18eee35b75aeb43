// The host's "UIWnd": the window whose content is the panel's page. [ui-thread]
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
    // `engine` is the element interface that collectors are given; borrowed, and outlives every
    // query.
    UIWndObject(std::shared_ptr<HtmlPanel> panel, UIHtmlEngine* engine);

    // Offers an object in the window's scope. Replaces what the name stood for; an empty handle
    // takes it out.
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
