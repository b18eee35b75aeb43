#include "driver/ConsistencyCheck.h"

#include "driver/PanelReader.h"

#include <stdexcept>

namespace Workbench {

namespace {

using HtmlEngine::ElementHandle;
using HtmlEngine::kNoElement;

// A view that stands beside another one for a while.
class ViewBeside {
public:
    ViewBeside(Host& host, const Host::ViewPtr& view) : host_(host), view_(host.OpenBeside(view)) {}
    ~ViewBeside() { host_.CloseView(view_); }
    ViewBeside(const ViewBeside&) = delete;
    ViewBeside& operator=(const ViewBeside&) = delete;

    const Host::ViewPtr& Get() const noexcept { return view_; }

private:
    Host& host_;
    const Host::ViewPtr view_;
};

ElementHandle ContainerOf(const Host& host, const Host::ViewPtr& view)
{
    const ElementHandle container =
        FindContainer(*host.Panel().Document(), ContainerKey(view->View().AsInterface()));
    if (container == kNoElement) {
        throw std::runtime_error("the panel has no container for a view of " +
                                 view->View().Document()->Content().Name());
    }
    return container;
}

std::string ListIn(const Host& host, ElementHandle container)
{
    const HtmlEngine::Document& document = *host.Panel().Document();
    return WithoutIndents(WithNumberedTooltips(document.InnerHtml(FindList(document, container))));
}

}  // namespace

std::optional<TextDifference> CompareWithFreshList(Host& host, const Host::ViewPtr& view,
                                                   std::chrono::seconds limit)
{
    const HtmlEngine::Document& document = *host.Panel().Document();
    const ElementHandle container = ContainerOf(host, view);
    if (IsLoading(document, container)) {
        return std::nullopt;
    }
    const ViewBeside beside(host, view);
    const ElementHandle fresh = ContainerOf(host, beside.Get());
    if (!host.State().loop.RunUntil([&] { return !IsLoading(document, fresh); },
                                    std::chrono::steady_clock::now() + limit)) {
        throw std::runtime_error("a fresh rendering is still under way after " +
                                 std::to_string(limit.count()) + " seconds");
    }
    return FindDifference(ListIn(host, container), ListIn(host, fresh));
}

}  // namespace Workbench
