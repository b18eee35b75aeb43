// The tool's own host: one window, one documents collection, one view of one document, and the life
// of a panel between them. Every object watches what the module does with it (HostObject.h).
#pragma once

#include "HostObject.h"
#include "ModuleLibrary.h"
#include "ModuleObject.h"
#include "Page.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace Conformance {

// What is left at the end of a life, by the promise that it breaks.
struct Remainder {
    std::string promise;
    std::string text;
};

class Host {
public:
    // The library stays loaded while its panel lives.
    explicit Host(ModuleLibrary& library);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The object of an interface; it must be one of the host's.
    HostObject& Of(std::string_view name) { return *objects_.find(name)->second; }
    Page& ThePage() { return *page_; }
    ModuleLibrary& Library() { return library_; }

    // --- Steps of a life; each runs what was posted ---------------------------------------------

    // From creating the plug-in to its model, in the expected order.
    void StartPanel();
    void HandOverDocuments();
    void OpenView();
    // Keys, clicks, events of view and document, on this thread and another, and another language.
    void UseView();
    void CloseView();
    // Ends the panel and the services; the library may be unloaded then.
    void ShutDown();

    // Gives up the host's own reference to an object.
    void LetDie(std::string_view name);

    // A life of all the steps; what the module throws ends a step.
    void Live();

    void Run();
    // What a listening module gets of an event: the arguments, then its callable.
    template <class... Args>
    void Fire(std::string_view source, unsigned slot, Args... arguments);
    std::uint32_t PressKey(std::uint32_t key);

    // --- The module's objects -------------------------------------------------------------------

    // Of StartPanel; the caller of CreatePlugin owns what it gets.
    ModuleObject plugin, handler, model;
    ModuleObject CreatePlugin() const;
    // The handler that the module attached to the container of the view; none without a container.
    ModuleObject ContainerHandler();

    // --- What was seen --------------------------------------------------------------------------

    Witness& Seen() { return witness_; }
    const Witness& Seen() const { return witness_; }
    std::vector<SubscribedEvent> SubscribedEvents() const;
    // To be asked after ShutDown and after the library was unloaded.
    std::vector<Remainder> Remainders() const;
    unsigned postedCalls = 0;
    bool viewIsOpen = false;
    // The runner of the last posted call.
    void (*runner)(void* record) = nullptr;

    // --- For the entries ------------------------------------------------------------------------

    // Null when the module has no file of that path.
    HostObject* HandOutResource(const char16_t* path);
    std::uint32_t Post(void (*run)(void* record), void* record);

private:
    struct PostedCall {
        void (*run)(void* record);
        void* record;
    };
    using Objects = std::map<std::string, std::unique_ptr<HostObject>, std::less<>>;

    void ReleasePanelObjects();
    bool NextCall(PostedCall& call);

    ModuleLibrary& library_;
    Witness witness_;
    Objects objects_;
    Objects resources_;  // made on any thread
    std::unique_ptr<Page> page_;
    std::vector<Remainder> released_;
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<PostedCall> queue_;
    bool takesCalls_ = true;
    bool isShutDown_ = false;
};

template <class... Args>
void Host::Fire(std::string_view source, unsigned slot, Args... arguments)
{
    const std::size_t count = witness_.Subscriptions().size();
    for (std::size_t i = 0; i < count; ++i) {
        // Asked for anew: the one before may have ended it.
        const Witness::Subscription each = witness_.Subscriptions()[i];
        if (each.source == &Of(source) && each.slot == slot && !each.ended) {
            reinterpret_cast<void (*)(Args..., void*)>(each.forwarder)(arguments..., each.callable);
        }
    }
}

// What InitHandler or GetUIModel of a plug-in hands out, owned.
ModuleObject AskPlugin(const ModuleObject& plugin, unsigned slot);

}  // namespace Conformance
