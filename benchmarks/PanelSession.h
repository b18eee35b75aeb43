// A host whose panel shows a document of the asked-for size, its list loaded: what the benchmarks
// of a living panel have in common.
#pragma once

#include "documents/Population.h"
#include "driver/PanelReader.h"
#include "services/Host.h"

#include <memory>
#include <stdexcept>
#include <string>

class PanelSession {
public:
    explicit PanelSession(Documents::PopulationSize size)
        : host_(Workbench::HostOptions{}), document_(MakePopulationDocument(size))
    {
        host_.StartPanel();
        host_.HandOverDocuments();
        host_.ForceReadOnly(false);
        host_.RunUntilIdle();
    }

    // Opens the view and waits for its list.
    void Open()
    {
        view_ = host_.OpenView(document_);
        if (!host_.RunUntilIdle()) {
            throw std::runtime_error("the list does not come");
        }
    }

    Workbench::Host& TheHost() { return host_; }
    Documents::Document& Document() { return *document_; }
    std::shared_ptr<Documents::Document> SharedDocument() { return document_; }
    Workbench::BLDocumentViewObject& View() { return view_->View(); }

    // The first match in the panel.
    HtmlEngine::ElementHandle Find(const std::string& selector)
    {
        HtmlEngine::ElementHandle found = HtmlEngine::kNoElement;
        host_.Panel().Document()->SelectFirst(host_.Panel().Document()->Root(), selector, found);
        if (found == HtmlEngine::kNoElement) {
            throw std::runtime_error("nothing in the panel matches " + selector);
        }
        return found;
    }
    HtmlEngine::ElementHandle Item(const std::string& name)
    {
        return Find("li[annot-name=\"" + name + "\"]");
    }

    // Tells the panel of an edit, and runs what that posts.
    void Publish(Documents::EditResult edit)
    {
        if (!edit.Succeeded()) {
            throw std::runtime_error(edit.error);
        }
        View().Document()->Publish(std::move(edit));
        Run();
    }
    void Run() { host_.State().loop.RunWaiting(); }

private:
    Workbench::Host host_;
    std::shared_ptr<Documents::Document> document_;
    Workbench::Host::ViewPtr view_;
};
