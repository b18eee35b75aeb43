// A module-wide object with a known end: made on first use, destroyed with the module's static
// objects, and a std::logic_error "Dead Reference Detected" from then on.
#pragma once

#include <memory>
#include <stdexcept>

namespace SODetails {

// Not thread-safe: first use on the UI thread. `T` is default-constructible.
template <class T>
class SingletonHolder {
public:
    // The object. Fails with std::logic_error once the module's static objects are gone.
    static T& Instance()
    {
        if (destroyed_) {
            throw std::logic_error("Dead Reference Detected");
        }
        static SingletonHolder holder;
        return *holder.object_;
    }

private:
    SingletonHolder() : object_(std::make_unique<T>()) {}
    ~SingletonHolder() { destroyed_ = true; }

    std::unique_ptr<T> object_;
    static inline bool destroyed_ = false;
};

}  // namespace SODetails
