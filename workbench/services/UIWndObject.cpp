#include "services/UIWndObject.h"

#include "services/UIHtmlEngineObject.h"

#include <string>
#include <utility>

namespace Workbench {

UIWndObject::UIWndObject(std::shared_ptr<HtmlPanel> panel, UIHtmlEngine* engine)
    : panel_(std::move(panel)), engine_(engine)
{
    Offer<UIWnd::QueryServiceObject, &UIWndObject::QueryServiceObject>();
    Offer<UIWnd::SelectElements, &UIWndObject::SelectElements>();
}

void UIWndObject::Provide(const char* name, BasicServiceObjectPtr<ServiceObject> object)
{
    Atom atom = kAtomNone;
    VxGetAtomFromString(name, &atom);
    if (object) {
        scope_[atom] = std::move(object);
    } else {
        scope_.erase(atom);
    }
}

ResultCode UIWndObject::QueryServiceObject(Atom name, ServiceObject** object) const
{
    if (object == nullptr) {
        return kResultNullArgument;
    }
    *object = nullptr;
    const auto found = scope_.find(name);
    if (found == scope_.end()) {
        const char* text = nullptr;
        VxGetStringFromAtom(name, &text);
        FailCall(kResultNotFound, std::string("the window has no service object \"") +
                                      (text == nullptr ? "" : text) + "\"");
    }
    HandOut(found->second, object);
    return kResultOk;
}

ResultCode UIWndObject::SelectElements(HtmlElementHandle root, const char* selector,
                                       UIWnd::Collector collector, void* context) const
{
    if (selector == nullptr || collector == nullptr) {
        return kResultNullArgument;
    }
    HtmlEngine::Document* const document = panel_->Document();
    if (document == nullptr) {
        FailCall(kResultNotInitialized, "the panel's document is closed");
    }
    CheckEngineResult(document->SelectAll(ElementOf(root), selector,
                                          [&](HtmlEngine::ElementHandle element) {
                                              const OnSide module(Side::kModule);
                                              collector(context, HandleOf(element), engine_);
                                              return true;
                                          }),
                      selector);
    return kResultOk;
}

}  // namespace Workbench
