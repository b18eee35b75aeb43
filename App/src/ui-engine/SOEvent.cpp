#include "ui-engine/SOEvent.h"

namespace SOEvent {

void SubscriptionList::Append(const SubscriptionHandle& subscription)
{
    if (subscription) {
        subscriptions_.push_back(subscription);
    }
}

void SubscriptionList::Clear()
{
    std::vector<SubscriptionHandle> released;
    released.swap(subscriptions_);
    for (SubscriptionHandle& subscription : released) {
        subscription.reset();
    }
    released.clear();
    if (subscriptions_.empty()) {
        subscriptions_.swap(released);  // keeps the storage
    }
}

}  // namespace SOEvent
