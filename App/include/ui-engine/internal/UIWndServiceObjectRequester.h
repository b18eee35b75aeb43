// Asks the host window for a service object of its scope. [ui-thread]
#pragma once

#include "service-common/ServiceObjectPtr.h"
#include "service-common/ServiceProvider.h"
#include "ui-engine/UIWnd.SO.h"

class UIWndServiceObjectRequester {
public:
    // Obtains the object of interface `I`. False when the window has none; the failure is then the
    // calling thread's last error: "Fail to query %1% service object from UIWnd! %2%".
    template <class I>
    static bool QueryServiceObjectFromUIWnd(UIWnd* window, BasicServiceObjectPtr<I>& object)
    {
        ServiceObject* found = nullptr;
        const bool succeeded = Query(window, I::kName, SP::Details::CachedAtom<I>(), &found);
        object = BasicServiceObjectPtr<I>::Adopt(static_cast<I*>(found));
        return succeeded;
    }

private:
    static bool Query(UIWnd* window, const char* name, std::atomic<Atom>& cachedAtom,
                      ServiceObject** object);
};
