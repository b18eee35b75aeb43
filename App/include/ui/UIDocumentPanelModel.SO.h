// Interface `UIDocumentPanelModel`: the host's side door to a document panel. Implemented by the
// module through SOImpl::CppUIDocumentPanelModelBase (internal/CppUIDocumentPanelModelBase.h).
// [ui-thread]
#pragma once

#include "service-common/ServiceMethod.h"

struct UIDocumentsCollection;

struct UIDocumentPanelModel : ServiceObject {
    static constexpr const char* kName = "UIDocumentPanelModel";
    static constexpr const char* kHeader = "include/ui/UIDocumentPanelModel.SO.h";

    // The collection whose views the panel serves; borrowed, the panel takes a reference of its
    // own. Only posts: the panel acts on it later, on the UI thread. Null changes nothing.
    SO_METHOD(UIDocumentPanelModel, SetDocumentsCollection, 0, UIDocumentsCollection* collection);
    SO_METHOD(UIDocumentPanelModel, GetConcreteModel, 1, ServiceObject** model);
    // Files dragged over the panel; the argument records are the host's own.
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragEnter, 2, void* arguments);
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragOver, 3, void* arguments);
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDragLeave, 4);
    SO_METHOD(UIDocumentPanelModel, ShellDropTarget_OnDrop, 5, void* arguments);

    using Catalogue =
        SODetails::MethodCatalogue<SetDocumentsCollection, GetConcreteModel,
                                   ShellDropTarget_OnDragEnter, ShellDropTarget_OnDragOver,
                                   ShellDropTarget_OnDragLeave, ShellDropTarget_OnDrop>;
};
static_assert(UIDocumentPanelModel::Catalogue::kMethodCount == 6);
