// Adapter that makes a class a `UIDocumentPanelModel`. Its thunks contain no exception handler:
// what a class throws passes to the host. [ui-thread]
#pragma once

#include "ui-engine/internal/InterfaceAdapter.h"
#include "ui/UIDocumentPanelModel.SO.h"

namespace SOImpl {

template <class T, class Traits>
class CppUIDocumentPanelModelBase
    : public SODetails::InterfaceAdapter<T, Traits, UIDocumentPanelModel> {
public:
    // Defaults of the member functions; a class hides those that it implements.
    ResultCode GetConcreteModel(ServiceObject**) { return kResultDeclined; }
    ResultCode ShellDropTarget_OnDragEnter(void*) { return kResultDeclined; }
    ResultCode ShellDropTarget_OnDragOver(void*) { return kResultDeclined; }
    ResultCode ShellDropTarget_OnDragLeave() { return kResultDeclined; }
    ResultCode ShellDropTarget_OnDrop(void*) { return kResultDeclined; }

protected:
    CppUIDocumentPanelModelBase()
    {
        this->template FillTable<SetDocumentsCollectionImpl, GetConcreteModelImpl,
                                 ShellDropTarget_OnDragEnterImpl, ShellDropTarget_OnDragOverImpl,
                                 ShellDropTarget_OnDragLeaveImpl, ShellDropTarget_OnDropImpl>();
    }
    ~CppUIDocumentPanelModelBase() = default;

private:
    template <class Impl, class M>
    using Thunk = SODetails::MethodThunk<Impl, T, Traits, M, SODetails::PassExceptions>;

// A slot whose arguments go to the member function of the same name as they are.
#define SOIMPL_FORWARD(name)                                                                       \
    struct name##Impl : Thunk<name##Impl, UIDocumentPanelModel::name> {                            \
        template <class... Args>                                                                   \
        static ResultCode Unpack(T& object, Args... arguments)                                     \
        {                                                                                          \
            return object.name(arguments...);                                                      \
        }                                                                                          \
    }
    SOIMPL_FORWARD(SetDocumentsCollection);
    SOIMPL_FORWARD(GetConcreteModel);
    SOIMPL_FORWARD(ShellDropTarget_OnDragEnter);
    SOIMPL_FORWARD(ShellDropTarget_OnDragOver);
    SOIMPL_FORWARD(ShellDropTarget_OnDragLeave);
    SOIMPL_FORWARD(ShellDropTarget_OnDrop);
#undef SOIMPL_FORWARD
};

}  // namespace SOImpl
