// The tool's own host: one window, one documents collection, one view of one document, and the life
// of a panel between them. Every object watches what the module does with it (HostObject.h).
#pragma once

#include "HostObject.h"
#include "ModuleLibrary.h"
#include "ModuleObject.h"
#include "Page.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
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

    HostObject& Of(Peer peer) { return *objects_[static_cast<std::size_t>(peer)]; }
    Page& ThePage() { return *page_; }
    const ModuleLibrary& Library() const { return library_; }

    // --- Steps of a life; each runs what was posted
    // -----------------------------------------------

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
    void LetDie(Peer peer);

    // A life of all the steps; what the module throws ends a step.
    void Live();

    void Run();
    // What a listening module gets of an event: the arguments, then its callable.
    template <class... Args>
    void Fire(Peer peer, unsigned slot, Args... arguments);
    std::uint32_t PressKey(std::uint32_t key);

    // --- The module's objects
    // ----------------------------------------------------------------------

    // Of StartPanel; the caller of CreatePlugin owns what it gets.
    ModuleObject plugin, handler, model;
    ModuleObject CreatePlugin() const;
    // The handler that the module attached to the container of the view; none without a container.
    ModuleObject ContainerHandler();

    // --- What was seen
    // -----------------------------------------------------------------------------

    Witness& Seen() { return witness_; }
    const Witness& Seen() const { return witness_; }
    std::vector<SubscribedEvent> SubscribedEvents() const;
    // To be asked after ShutDown and after the library was unloaded.
    std::vector<Remainder> Remainders() const;
    // The instance that the module registered its resources with; null before.
    void* instance = nullptr;
    unsigned registrations = 0;
    unsigned postedCalls = 0;
    bool viewIsOpen = false;
    // The runner of the last posted call.
    void (*runner)(void* record) = nullptr;

    // --- For the entries
    // ---------------------------------------------------------------------------

    std::uint32_t HandOut(Peer peer, HostObject** object);
    std::uint32_t HandOutNamed(std::uint32_t atom, HostObject** object);
    std::uint32_t HandOutResource(const char16_t* path, HostObject** object);
    std::string_view BytesOf(const HostObject& resource);
    std::uint32_t Post(void (*run)(void* record), void* record);

private:
    struct PostedCall {
        void (*run)(void* record);
        void* record;
    };
    struct Resource {
        HostObject object{};
        std::string_view bytes;
    };

    void ReleasePanelObjects();
    bool NextCall(PostedCall& call);

    ModuleLibrary& library_;
    Witness witness_;
    std::array<std::unique_ptr<HostObject>, kPeerCount> objects_;
    std::map<std::u16string, std::unique_ptr<Resource>> resources_;
    std::unique_ptr<Page> page_;
    std::vector<Remainder> released_;
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<PostedCall> queue_;
    bool takesCalls_ = true;
    bool isShutDown_ = false;
};

// What InitHandler or GetUIModel of a plug-in hands out, owned.
ModuleObject AskPlugin(const ModuleObject& plugin, unsigned slot);

template <class... Args>
void Host::Fire(Peer peer, unsigned slot, Args... arguments)
{
    const auto subscriptions = witness_.Subscriptions();
    for (std::size_t i = 0; i < subscriptions.size(); ++i) {
        const auto& each = subscriptions[i];
        if (each.source == &Of(peer) && each.slot == slot && !witness_.Subscriptions()[i].ended) {
            reinterpret_cast<void (*)(Args..., void*)>(each.forwarder)(arguments..., each.callable);
        }
    }
}

}  // namespace Conformance
