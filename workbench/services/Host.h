// The complete host: its services, one module with its panel, and their life cycle from start to
// unloading. It lives on the thread that creates it, which becomes the UI thread; the services are
// registered with the process's provider, so there is at most one host at a time.
//
//     Workbench::Host host({.module = file, .locales = folder});
//     host.StartPanel();
//     host.OpenView(document);
//     host.HandOverDocuments();
//     host.RunUntilIdle();
//     ... host.Panel().Document(), host.State().calls.Take() ...
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

// The module's library and the folder of the language files, beside the running program.
std::filesystem::path DefaultModule();
std::filesystem::path DefaultLocales();

struct HostOptions {
    std::filesystem::path module = DefaultModule();
    std::filesystem::path locales = DefaultLocales();
    std::string language = "en";
    // Errors that the module leaves behind in posted calls and events go to the failure log.
    bool logsModuleErrors = true;
};

class Host {
public:
    using ViewPtr = UIDocumentsCollectionObject::ViewPtr;

    // Creates the services and registers them with the provider. Throws std::runtime_error for an
    // unknown language.
    explicit Host(HostOptions options);
    // Shuts down unless that has been done.
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Loads the module and drives its plug-in from Handshake to GetUIModel, including loading the
    // panel's document and attaching its handler. Throws std::runtime_error, or the plug-in's
    // ServiceObjectException.
    void StartPanel();

    // Passes the documents collection to the panel. Views may be opened before and after.
    void HandOverDocuments();

    // Opens a view of a document and activates it.
    ViewPtr OpenView(std::shared_ptr<Documents::Document> content);

    // Opens another view of a view's document without activating it, to obtain a fresh rendering of
    // the list. Its list is shown even while renderings are held back; the view follows no changes.
    ViewPtr OpenBeside(const ViewPtr& view);

    // Closes a view; see UIDocumentsCollectionObject::Close.
    void CloseView(const ViewPtr& view);

    // Switches the language and notifies the panel. Throws std::runtime_error for an unknown name.
    void SwitchLanguage(const std::string& language);

    // Read-only state of documents opened from now on; nullopt: as the document specifies.
    void ForceReadOnly(std::optional<bool> readOnly) noexcept { forcedReadOnly_ = readOnly; }

    // Deletion permission of all documents, open or opened later; nullopt: as each specifies.
    void ForceDeletionPermitted(std::optional<bool> permitted);

    // Number of lists with a visible preloader.
    std::size_t LoadingCount() const;

    // Whether no posted call is waiting, no event is queued and no list is being rendered. A list
    // whose finished rendering is held back counts as rendered; with several held, so does a list
    // that is rendered again behind a held rendering.
    bool IsIdle() const;

    // Runs the loop until idle. False when the limit is exceeded.
    bool RunUntilIdle(std::chrono::seconds limit = std::chrono::seconds(300));

    // Ends the panel and unloads the module: closes the panel's document, calls Cleanup, runs
    // posted calls, tears down process-wide storage and releases all objects. Returns one line for
    // each interface with leaked objects of the host; empty when there are none. A second call does
    // nothing.
    std::vector<std::string> ShutDown();

    HostState& State() const noexcept { return *state_; }
    HtmlPanel& Panel() const noexcept { return *panel_; }
    LocaleManagerObject& Locale() const noexcept { return *locale_.Get(); }
    UIMainFrameObject& MainFrame() const noexcept { return *mainFrame_.Get(); }
    UIDocumentsCollectionObject& Collection() const noexcept { return *collection_.Get(); }
    const std::vector<ViewPtr>& Views() const noexcept { return collection_->Views(); }

    // Objects received from the module; null before StartPanel. For tests that call the panel
    // directly.
    UIInplacePlugin* Plugin() const noexcept { return plugin_.Get(); }
    UIHandler* PanelHandler() const noexcept { return handler_.Get(); }
    UIDocumentPanelModel* PanelModel() const noexcept { return model_.Get(); }
    UIWnd* Window() const noexcept { return window_->AsInterface(); }
    UIHtmlEngine* Engine() const noexcept { return engine_->AsInterface(); }

private:
    void CreatePlugin();
    void LoadPanelDocument();
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
