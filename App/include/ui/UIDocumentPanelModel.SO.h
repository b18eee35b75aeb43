// Interface `UIDocumentPanelModel`: the host's side door to a document panel. Implemented by the
// module through SOImpl::CppUIDocumentPanelModelBase (internal/CppUIDocumentPanelModelBase.h).
// Nothing is thrown to the host. [ui-thread]
#pragma once

#include "service-common/ServiceMethod.h"

struct UIDocumentsCollection;

struct UIDocumentPanelModel : ServiceObject {
    static constexpr const char* kName = "UIDocumentPanelModel";
    static constexpr const char* kHeader = "include/ui/UIDocumentPanelModel.SO.h";

    // The collection whose views the panel serves; borrowed, the panel takes a reference of its
    // own. Only posts: the panel acts on it later, on the UI thread. Null changes nothing.
    // Answers 0 always: a collection that cannot be posted is the thread's last error and posted
    // again with the panel's next task.
    SO_METHOD(UIDocumentPanelModel, SetDocumentsCollection, 0, UIDocumentsCollection* collection);
    // A model of the panel's own. There is none: answers 1, and nothing is written.
    SO_METHOD(UIDocumentPanelModel, GetConcreteModel, 1, ServiceObject** model);
    // Files are dragged into the panel; the record is the host's own and not read. Answers 1.
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragEnter, 2, void* arguments);
    // Files are dragged over the panel; the record is the host's own and not read. Answers 1.
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragOver, 3, void* arguments);
    // Files are dragged out of the panel. Answers 1.
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragLeave, 4, void);
    // Files are dropped on the panel; the record is the host's own and not read. Answers 1.
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDrop, 5, void* arguments);

    using Catalogue =
        SODetails::MethodCatalogue<SetDocumentsCollection, GetConcreteModel,
                                   ShellDropTarget_OnDragEnter, ShellDropTarget_OnDragOver,
                                   ShellDropTarget_OnDragLeave, ShellDropTarget_OnDrop>;
};
static_assert(UIDocumentPanelModel::Catalogue::kMethodCount == 6);
