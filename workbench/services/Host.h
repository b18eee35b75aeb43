// The host as a whole: its services, one module with its panel, and the life of both from start to
// unloading. Everything happens on the thread that makes the host, which becomes the UI thread; the
// services are listed with the provider of the process, so there is one host at a time.
//
//     Workbench::Host host({.module = file, .locales = folder});
//     host.StartPanel();
//     host.OpenView(document);
//     host.HandOverDocuments();
//     host.RunUntilIdle();
//     ... host.Panel().Page(), host.State().calls.Take() ...
//     EXPECT_THAT(host.ShutDown(), IsEmpty());
#pragma once

#include "documents/Document.h"
#include "services/BLServiceObject.h"
#include "services/FrameObjects.h"
#include "services/HostState.h"
#include "services/HtmlPanel.h"
#include "services/LocaleManagerObject.h"
#include "services/ModuleLibrary.h"
#include "services/PDModelServiceObject.h"
#include "services/UIDocumentsCollectionObject.h"
#include "services/UIEngineObject.h"
#include "services/UIHtmlEngineObject.h"
#include "services/UIServiceObject.h"
#include "services/UIWndObject.h"
#include "ui-engine/UIInplacePlugin.SO.h"
#include "ui/UIDocumentPanelModel.SO.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

// The module's library and the folder of the languages, as they lie beside the running program.
std::filesystem::path DefaultModule();
std::filesystem::path DefaultLocales();

struct HostOptions {
    std::filesystem::path module = DefaultModule();
    std::filesystem::path locales = DefaultLocales();
    std::string language = "en";
};

class Host {
public:
    using ViewPtr = UIDocumentsCollectionObject::ViewPtr;

    // Makes the services and lists them with the provider. Throws std::runtime_error for a language
    // that there is not.
    explicit Host(HostOptions options);
    // Shuts down, if that has not been done.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Loads the module and drives its plug-in from Handshake to GetUIModel; the panel's page is
    // loaded and its handler attached on the way. Throws std::runtime_error, or the
    // ServiceObjectException of the plug-in.
    void StartPanel();

    // Hands the documents collection to the panel. Views may be opened before and after.
    void HandOverDocuments();

    // Opens a view of a document and activates it.
    ViewPtr OpenView(std::shared_ptr<Documents::Document> content);

    // Opens one more view of a view's document without activating it. Its list lands even while
    // renderings are held back, and the view follows no changes: for a look at what the list would
    // be if it were rendered now.
    ViewPtr OpenBeside(const ViewPtr& view);

    // Closes a view; see UIDocumentsCollectionObject::Close.
    void CloseView(const ViewPtr& view);

    // Switches the language and notifies the panel. Throws std::runtime_error when there is none of
    // that name.
    void SwitchLanguage(const std::string& language);

    // For documents of views that are opened from here on; nothing: as the document says.
    void ForceReadOnly(std::optional<bool> readOnly) noexcept { forcedReadOnly_ = readOnly; }

    // For all documents, open or opened later; nothing: as the document says.
    void ForceDeletionPermitted(std::optional<bool> permitted);

    // Number of lists that show their preloader.
    std::size_t LoadingCount() const;

    // No posted call waits, no event is still to be fired, and no list is being rendered. A list
    // whose finished rendering is held back counts as rendered; with several of them held, one that
    // is rendered anew behind a held rendering counts so too.
    bool IsIdle() const;

    // Runs the loop until idle. False when that takes longer than the limit.
    bool RunUntilIdle(std::chrono::seconds limit = std::chrono::seconds(300));

    // Ends the panel and unloads the module: page closed, Cleanup, what is still posted run, the
    // process-wide storage torn down, everything released. One line for each interface that still
    // has live objects of the host then; empty when nothing was lost. A second call does nothing.
    std::vector<std::string> ShutDown();

    HostState& State() const noexcept { return *state_; }
    HtmlPanel& Panel() const noexcept { return *panel_; }
    LocaleManagerObject& Locale() const noexcept { return *locale_.Get(); }
    UIMainFrameObject& MainFrame() const noexcept { return *mainFrame_.Get(); }
    UIDocumentsCollectionObject& Collection() const noexcept { return *collection_.Get(); }
    const std::vector<ViewPtr>& Views() const noexcept { return collection_->Views(); }

    // What the module handed out; null before StartPanel. For tests that talk to the panel
    // directly.
    UIInplacePlugin* Plugin() const noexcept { return plugin_.Get(); }
    UIHandler* PanelHandler() const noexcept { return handler_.Get(); }
    UIDocumentPanelModel* PanelModel() const noexcept { return model_.Get(); }
    UIWnd* Window() const noexcept { return window_->AsInterface(); }
    UIHtmlEngine* Engine() const noexcept { return engine_->AsInterface(); }

private:
    void CreatePlugin();
    void LoadPanelPage();
    void AttachPanelHandler();
    void EndPanel();
    void ReleaseServices();

    const HostOptions options_;
    HostStatePtr state_;
    std::optional<bool> forcedReadOnly_;
    std::optional<bool> forcedDeletionPermitted_;

    BasicServiceObjectPtr<LocaleManagerObject> locale_;
    BasicServiceObjectPtr<UIMainFrameObject> mainFrame_;
    BasicServiceObjectPtr<UIDocumentsCollectionObject> collection_;
    BasicServiceObjectPtr<UIServiceObject> uiService_;
    std::shared_ptr<HtmlPanel> panel_;
    BasicServiceObjectPtr<UIHtmlEngineObject> engine_;
    BasicServiceObjectPtr<UIWndObject> window_;

    std::unique_ptr<ModuleLibrary> library_;
    BasicServiceObjectPtr<UIInplacePlugin> plugin_;
    BasicServiceObjectPtr<UIHandler> handler_;
    BasicServiceObjectPtr<UIDocumentPanelModel> model_;
    bool isShutDown_ = false;
};

}  // namespace Workbench
