// Base of a handler that follows documents collections and the active document view: owns the
// subscriptions and forwards each event to the handler's member function of the same name; events
// of a collection tell besides which one they come from. The handler hides those that it acts on.
// Callables are bound to the handler's raw pointer, so the handler calls DropSubscriptions before
// it is destroyed. Events arrive on any thread.
#pragma once

#include "ui-engine/BLDocumentView.SO.h"
#include "ui-engine/SOEvent.h"
#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIMainFrame.SO.h"

#include <boost/bind/bind.hpp>

#include <algorithm>
#include <utility>
#include <vector>

template <class Derived>
class DocumentViewObserverBase {
public:
    DocumentViewObserverBase(const DocumentViewObserverBase&) = delete;
    DocumentViewObserverBase& operator=(const DocumentViewObserverBase&) = delete;

    // Events of the documents collection that a handler need not act on.
    void OnSbSViewCreated(unsigned, UIDocumentViewSbS*) {}
    void OnSbSViewDestroyed(unsigned, UIDocumentViewSbS*) {}

    // Events of the active view that a handler need not act on.
    void OnZoomChanged(BLZoomType, float) {}
    void OnFocusPageChanged(unsigned int) {}
    void OnVisibleRangeChanged(const _BLPageRange*) {}
    void OnPagesChanged(PDPageOperation, const _PDPageRange*) {}
    void OnLayoutChanged(unsigned int) {}
    void OnScrollChanged(BLScrollBarType, const BLScrollState*) {}
    void OnAvailableOperationsChanged(unsigned int) {}
    void OnLockedStateChanged(unsigned int) {}
    void OnActiveToolChanged(unsigned int) {}
    void OnViewStateChanged(unsigned int) {}
    void OnViewRulerStateChanged(bool) {}
    void OnViewGridStateChanged(bool) {}

protected:
    // Number of an observed collection, the same for as long as it is observed, and never another
    // one's; 0 is none.
    using Source = unsigned;

    DocumentViewObserverBase() = default;
    ~DocumentViewObserverBase() = default;

    // Subscribes to the main frame instead of the one before; the same one again changes nothing.
    void ObserveMainFrame(UIMainFrame* frame)
    {
        using namespace boost::placeholders;
        if (mainFrame_.Size() != 0 && observedFrame_.Lock().Get() == frame) {
            return;
        }
        mainFrame_.Clear();
        observedFrame_ = WeakServiceObjectPtr<UIMainFrame>(frame);
        mainFrame_.Append(UIMainFrame::Subscribe_OnChildDocumentFrameCreated(
            frame, boost::bind(&Derived::OnChildDocumentFrameCreated, Self(), _1)));
    }

    // Subscribes to a collection, besides those that are observed; to one of these anew. Forgets
    // those that died. It is observed while it is subscribed to: the host may fire meanwhile.
    Source ObserveCollection(UIDocumentsCollection* collection)
    {
        std::erase_if(collections_, [](const auto& known) { return !known.collection.Lock(); });
        const Source known = SourceOf(collection);
        StopObservingCollection(known);
        const Source source = known == 0 ? ++lastSource_ : known;
        collections_.push_back(
            {source, WeakServiceObjectPtr<UIDocumentsCollection>(collection), {}});
        try {
            SOEvent::SubscriptionList made = SubscriptionsTo(collection, source);
            const auto entry = Find(source);
            if (entry != collections_.end()) {
                std::swap(entry->subscriptions, made);
            }
        } catch (...) {
            StopObservingCollection(source);
            throw;
        }
        return source;
    }

    void StopObservingCollection(Source source)
    {
        const auto found = Find(source);
        if (found != collections_.end()) {
            SOEvent::SubscriptionList released = std::move(found->subscriptions);
            collections_.erase(found);
            released.Clear();
        }
    }

    bool IsObserved(Source source) const
    {
        return std::any_of(collections_.begin(), collections_.end(),
                           [source](const auto& known) { return known.source == source; });
    }

    // Empty when it is not observed, or died.
    BasicServiceObjectPtr<UIDocumentsCollection> CollectionOf(Source source) const
    {
        for (const ObservedCollection& known : collections_) {
            if (known.source == source) {
                return known.collection.Lock();
            }
        }
        return nullptr;
    }

    // 0 for a collection that is not observed.
    Source SourceOf(UIDocumentsCollection* collection) const
    {
        for (const ObservedCollection& known : collections_) {
            if (known.collection.Lock().Get() == collection) {
                return known.source;
            }
        }
        return 0;
    }

    // The view that is observed; empty when none is, or it died.
    BasicServiceObjectPtr<BLDocumentView> ObservedView() const { return observed_.Lock(); }

    // Subscribes to a view instead of the one before.
    void ObserveView(BLDocumentView* view)
    {
        using namespace boost::placeholders;
        using View = BLDocumentView;
        Derived* self = Self();
        view_.Clear();
        observed_ = WeakServiceObjectPtr<BLDocumentView>(view);
        view_.Append(View::Subscribe_OnZoomChanged(
            view, boost::bind(&Derived::OnZoomChanged, self, _1, _2)));
        view_.Append(View::Subscribe_OnFocusPageChanged(
            view, boost::bind(&Derived::OnFocusPageChanged, self, _1)));
        view_.Append(View::Subscribe_OnVisibleRangeChanged(
            view, boost::bind(&Derived::OnVisibleRangeChanged, self, _1)));
        view_.Append(View::Subscribe_OnPagesChanged(
            view, boost::bind(&Derived::OnPagesChanged, self, _1, _2)));
        view_.Append(View::Subscribe_OnSelectionChanged(
            view, boost::bind(&Derived::OnSelectionChanged, self, _1)));
        view_.Append(View::Subscribe_OnLayoutChanged(
            view, boost::bind(&Derived::OnLayoutChanged, self, _1)));
        view_.Append(View::Subscribe_OnScrollChanged(
            view, boost::bind(&Derived::OnScrollChanged, self, _1, _2)));
        view_.Append(View::Subscribe_OnAvailableOperationsChanged(
            view, boost::bind(&Derived::OnAvailableOperationsChanged, self, _1)));
        view_.Append(View::Subscribe_OnLockedStateChanged(
            view, boost::bind(&Derived::OnLockedStateChanged, self, _1)));
        view_.Append(View::Subscribe_OnActiveToolChanged(
            view, boost::bind(&Derived::OnActiveToolChanged, self, _1)));
        view_.Append(View::Subscribe_OnViewStateChanged(
            view, boost::bind(&Derived::OnViewStateChanged, self, _1)));
        view_.Append(View::Subscribe_OnViewRulerStateChanged(
            view, boost::bind(&Derived::OnViewRulerStateChanged, self, _1)));
        view_.Append(View::Subscribe_OnViewGridStateChanged(
            view, boost::bind(&Derived::OnViewGridStateChanged, self, _1)));
    }

    // Ends the subscriptions to `view` when it is the one observed.
    void StopObservingView(BLDocumentView* view)
    {
        if (observed_.Lock().Get() == view) {
            view_.Clear();
            observed_.Reset();
        }
    }

    // Ends every subscription. May be called twice.
    void DropSubscriptions()
    {
        view_.Clear();
        observed_.Reset();
        for (ObservedCollection& released : std::exchange(collections_, {})) {
            released.subscriptions.Clear();
        }
        mainFrame_.Clear();
        observedFrame_.Reset();
    }

private:
    struct ObservedCollection {
        Source source;
        WeakServiceObjectPtr<UIDocumentsCollection> collection;
        SOEvent::SubscriptionList subscriptions;
    };

    Derived* Self() noexcept { return static_cast<Derived*>(this); }

    typename std::vector<ObservedCollection>::iterator Find(Source source)
    {
        return std::find_if(collections_.begin(), collections_.end(),
                            [source](const auto& known) { return known.source == source; });
    }

    SOEvent::SubscriptionList SubscriptionsTo(UIDocumentsCollection* collection, Source source)
    {
        using namespace boost::placeholders;
        using Collection = UIDocumentsCollection;
        Derived* self = Self();
        SOEvent::SubscriptionList made;
        made.Append(Collection::Subscribe_OnDocumentViewCreated(
            collection, boost::bind(&Derived::OnDocumentViewCreated, self, source, _1)));
        made.Append(Collection::Subscribe_OnDocumentViewActivated(
            collection, boost::bind(&Derived::OnDocumentViewActivated, self, source, _1)));
        made.Append(Collection::Subscribe_OnDocumentViewDeactivated(
            collection, boost::bind(&Derived::OnDocumentViewDeactivated, self, source, _1)));
        made.Append(Collection::Subscribe_OnDocumentViewDestroyed(
            collection, boost::bind(&Derived::OnDocumentViewDestroyed, self, source, _1)));
        made.Append(Collection::Subscribe_OnSbSViewCreated(
            collection, boost::bind(&Derived::OnSbSViewCreated, self, source, _1)));
        made.Append(Collection::Subscribe_OnSbSViewActivated(
            collection, boost::bind(&Derived::OnSbSViewActivated, self, source, _1)));
        made.Append(Collection::Subscribe_OnSbSViewDeactivated(
            collection, boost::bind(&Derived::OnSbSViewDeactivated, self, source, _1)));
        made.Append(Collection::Subscribe_OnSbSViewDestroyed(
            collection, boost::bind(&Derived::OnSbSViewDestroyed, self, source, _1)));
        return made;
    }

    SOEvent::SubscriptionList mainFrame_;
    WeakServiceObjectPtr<UIMainFrame> observedFrame_;
    std::vector<ObservedCollection> collections_;
    Source lastSource_ = 0;
    SOEvent::SubscriptionList view_;
    WeakServiceObjectPtr<BLDocumentView> observed_;
};
