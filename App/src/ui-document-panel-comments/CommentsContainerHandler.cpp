#include "CommentsContainerHandler.h"

#include "RenderQueue.h"

#include "ui-engine/internal/EventTask.h"

#include <utility>

CommentsContainerHandler::CommentsContainerHandler(BLDocumentView& view) : view_(&view) {}

CommentsContainerHandler::~CommentsContainerHandler()
{
    Detached();
}

std::uint32_t CommentsContainerHandler::SubscribedEvents() const noexcept
{
    return kEventGroupMouse | kEventGroupKeys | kEventGroupBehaviour;
}

ResultCode CommentsContainerHandler::Attached(UIWnd& window, const UIElement& element)
{
    dispatcher_.Start();
    queue_ = RenderQueue::Shared();
    container_ = ElementReference(element, WeakServiceObjectPtr<UIWnd>(&window));
    const auto view = view_.Lock();
    SetDocumentView(view.Get());
    return kResultOk;
}

ResultCode CommentsContainerHandler::Detached()
{
    DropLoading();
    documentSubscriptions_.Clear();
    viewSubscriptions_.Clear();
    dispatcher_.Detach();
    document_.Reset();
    container_ = {};
    queue_.reset();
    return kResultOk;
}

ResultCode CommentsContainerHandler::OnLocaleChanged()
{
    PostToUIThread("CommentsContainerHandler::OnLocaleChanged", [this] {
        if (document_.Lock()) {
            ReloadList();
        }
    });
    return kResultOk;
}

void CommentsContainerHandler::Fail(ResultCode code, const wchar_t* message, const char* function,
                                    std::uint32_t line)
{
    throw ServiceObjectException(
        {code, message, function, "src/ui-document-panel-comments/CommentsContainerHandler", line});
}

void CommentsContainerHandler::RunOnUIThread(const char* name, std::function<void()> task)
{
    if (dispatcher_.IsUIThread()) {
        SODetails::RunEventTask(name, task);
    } else {
        SODetails::RunEventTask(name, [&] { PostToUIThread(name, std::move(task)); });
    }
}

void CommentsContainerHandler::PostToUIThread(const char* name, std::function<void()> task)
{
    dispatcher_.Post(
        [self = WeakServiceObjectPtr<CommentsContainerHandler>(this), name, run = std::move(task)] {
            const auto handler = self.Lock();
            if (handler && handler->dispatcher_.IsUIThread()) {
                SODetails::RunEventTask(name, run);
            }
        });
}

BasicServiceObjectPtr<BLDocument> CommentsContainerHandler::CurrentDocument() const
{
    const auto view = view_.Lock();
    BasicServiceObjectPtr<BLDocument> document;
    CallMethod<BLDocumentView::GetDocument>(view.Get(), document.Receive());
    return document;
}
