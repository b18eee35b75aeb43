#include "CommentsContainerHandler.h"

#include "RenderQueue.h"

#include "ui-engine/internal/EventTask.h"

#include <utility>

CommentsContainerHandler::CommentsContainerHandler(BLDocumentView& view)
    : view_(WeakServiceObjectPtr<BLDocumentView>::Require(&view))
{
}

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
    try {
        dispatcher_.Start();
        queue_ = RenderQueue::Shared();
        container_ = ElementReference(element, WeakServiceObjectPtr<UIWnd>(&window));
        if (!container_) {
            Fail(kResultNotInitialized, L"Not initialized", "CommentsContainerHandler::Attached",
                 __LINE__);
        }
        const auto view = view_.Lock();
        SetDocumentView(view.Get());
    } catch (...) {
        Detached();
        attachingFailed_ = true;
        throw;
    }
    attachingFailed_ = false;
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
    stale_ = incomplete_ = isRecovering_ = recoveryFailed_ = tolerated_ = false;
    changeMissed_ = false;
    return kResultOk;
}

ResultCode CommentsContainerHandler::OnLocaleChanged()
{
    constexpr const char* kName = "CommentsContainerHandler::OnLocaleChanged";
    try {
        if (!PostToUIThread(kName, [this] { ReloadListOfDocument(); })) {
            changeMissed_ = true;
        }
    } catch (...) {
        changeMissed_ = true;
        throw;
    }
    return kResultOk;
}

void CommentsContainerHandler::Fail(ResultCode code, const wchar_t* message, const char* function,
                                    std::uint32_t line)
{
    throw ServiceObjectException(
        {code, message, function, "src/ui-document-panel-comments/CommentsContainerHandler", line});
}

bool CommentsContainerHandler::PostToUIThread(const char* name, const std::function<void()>& task)
{
    return dispatcher_.Post(
        [self = WeakServiceObjectPtr<CommentsContainerHandler>::Require(this), name, run = task] {
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
