// A module that breaks one promise: hands out the real module's objects with one defect, which the
// environment names. Their tables are plain memory, so entries can be replaced and bytes spoilt.
#include "service-common/ResultCodes.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#if defined(_WIN32)
#include <windows.h>
#define EXPORTED
#else
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>
#define EXPORTED [[gnu::visibility("default")]]
#endif

namespace {

// A service object, at any offset.
using Object = char;
using Entry = void (*)();

#if defined(_WIN32)
void* Load()
{
    return LoadLibraryA("ui-document-panel-comments.dll");
}
Entry Find(void* library, const char* name)
{
    return reinterpret_cast<Entry>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void Unload(void* library)
{
    FreeLibrary(static_cast<HMODULE>(library));
}
// Runs no code of this module: it would go with the module.
void StartThread()
{
    CloseHandle(CreateThread(
        nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<Entry>(&Sleep)),
        reinterpret_cast<void*>(std::uintptr_t{INFINITE}), 0, nullptr));
}
void Pin()
{
    HMODULE self = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<const char*>(&Pin), &self);
}
#else
void* Load()
{
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&Load), &self);
    const std::string path = self.dli_fname;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    return dlopen((folder + "ui-document-panel-comments.so").c_str(), RTLD_NOW | RTLD_LOCAL);
}
Entry Find(void* library, const char* name)
{
    return reinterpret_cast<Entry>(dlsym(library, name));
}
void Unload(void* library)
{
    dlclose(library);
}
// Runs no code of this module: it would go with the module.
void StartThread()
{
    pthread_t thread{};
    pthread_create(&thread, nullptr,
                   reinterpret_cast<void* (*)(void*)>(reinterpret_cast<Entry>(&pause)), nullptr);
    pthread_detach(thread);
}
void Pin()
{
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&Pin), &self);
    dlopen(self.dli_fname, RTLD_NOW | RTLD_NODELETE);
}
#endif

class RealModule {
public:
    RealModule() : library_(Load()) {}
    ~RealModule() { Unload(library_); }
    RealModule(const RealModule&) = delete;
    RealModule& operator=(const RealModule&) = delete;

    template <class... Args>
    ResultCode Call(const char* name, Args... arguments) const
    {
        return reinterpret_cast<ResultCode (*)(Args...)>(Find(library_, name))(arguments...);
    }

private:
    void* library_;
};

RealModule g_real;

template <class T>
T Read(const Object* object, std::size_t offset)
{
    T value;
    std::memcpy(&value, object + offset, sizeof value);
    return value;
}

template <class T>
void Write(Object* object, std::size_t offset, T value)
{
    std::memcpy(object + offset, &value, sizeof value);
}

template <class... Args>
std::uint32_t CallAt(Object* object, std::size_t offset, Args... arguments)
{
    return Read<std::uint32_t (*)(Object*, Args...)>(object, offset)(object, arguments...);
}

constexpr std::size_t kAddRef = 16, kGetWeakReference = 40, kGetLastErrorInfo = 48, kByName = 56;

constexpr std::size_t Slot(unsigned slot)
{
    return 64 + 8 * slot;
}

// Offsets of the plug-in's ends.
constexpr std::size_t kPluginEndOfTable = 144, kPluginTypeId = 148, kPluginEnd = 200;

// The entry that another one has replaced, by its place. A defect replaces at most one of each.
std::array<Entry, 32> g_replaced;

// An object that is handed out again is spoilt already.
template <class Function>
void Replace(Object* object, std::size_t offset, Function replacement)
{
    if (Read<Function>(object, offset) != replacement) {
        g_replaced[offset / 8] = Read<Entry>(object, offset);
        Write(object, offset, replacement);
    }
}

template <class... Args>
std::uint32_t CallReplaced(std::size_t offset, Object* object, Args... arguments)
{
    return reinterpret_cast<std::uint32_t (*)(Object*, Args...)>(g_replaced[offset / 8])(
        object, arguments...);
}

// Spoils what the plug-in hands out at a slot.
template <unsigned HandOutSlot, void (*Spoil)(Object*)>
void SpoilHandedOut(Object* plugin)
{
    Replace(
        plugin, Slot(HandOutSlot), +[](Object* self, Object*** block) {
            const ResultCode code = CallReplaced(Slot(HandOutSlot), self, block);
            if (code == kResultOk) {
                Spoil(**block);
            }
            return code;
        });
}

constexpr unsigned kCreateRegistration = 4, kAttachHandler = 17;  // of the host's engines
constexpr unsigned kGetEvents = 1, kHandleKey = 3;
constexpr unsigned kInitHtml = 3, kInitHandler = 5, kInitComplete = 6, kCreateControl = 7,
                   kGetUIModel = 8, kCleanup = 9, kAttached = 15, kSetCollection = 0;

// --- A weak-reference record that is not shared -------------------------------------------------

struct UnsharedRecord {
    Entry entries[5];
    std::atomic<std::uint32_t> holders = 2;
    Object* object;
    Object* shared;
};

std::uint32_t HandOutUnshared(Object* self, UnsharedRecord** record)
{
    if (record == nullptr) {
        return kResultNullArgument;
    }
    Object* shared = nullptr;
    CallReplaced(kGetWeakReference, self, &shared);
    *record = new UnsharedRecord{{}, 2, self, shared};
    const auto drop = +[](UnsharedRecord* own) {
        Read<std::uint32_t (*)(Object*)>(own->shared, 8)(own->shared);
        const std::uint32_t left = --own->holders;
        delete own;
        return left;
    };
    const auto isAlive =
        +[](UnsharedRecord* own) { return Read<bool (*)(Object*)>(own->shared, 24)(own->shared); };
    const auto lock = +[](UnsharedRecord* own) {
        return Read<Object* (*)(Object*)>(own->shared, 32)(own->shared);
    };
    (*record)->entries[1] = reinterpret_cast<Entry>(drop);
    (*record)->entries[3] = reinterpret_cast<Entry>(isAlive);
    (*record)->entries[4] = reinterpret_cast<Entry>(lock);
    return kResultOk;
}

ResultCode TakeAnyName(Object*, const char*, ...)
{
    return kResultOk;
}

// --- Defects ------------------------------------------------------------------------------------

void SubscribeForever(Object* model)
{
    Replace(
        model, Slot(kSetCollection), +[](Object* self, Object* collection) {
            if (collection != nullptr && Read<Entry>(collection, Slot(8)) != nullptr) {
                const auto ignore = +[](void*, void*) {};
                const auto keep = +[](void*) {};
                CallAt(collection, Slot(8), ignore, keep, collection);
            }
            return CallReplaced(Slot(kSetCollection), self, collection);
        });
}

void CallBeyondTheTable(Object* model)
{
    Replace(
        model, Slot(kSetCollection), +[](Object* self, Object* collection) {
            if (collection != nullptr && Read<Entry>(collection, Slot(22)) != nullptr) {
                Object* view = nullptr;
                CallAt(collection, Slot(22), &view);
            }
            return CallReplaced(Slot(kSetCollection), self, collection);
        });
}

void UseElementForever(Object* handler)
{
    Replace(
        handler, Slot(kAttached), +[](Object* self, Object* window, Object** element) {
            if (element != nullptr && element[0] != nullptr &&
                Read<std::uint32_t>(element[1], 4) > 8 &&
                Read<Entry>(element[1], Slot(0)) != nullptr) {
                CallAt(element[1], Slot(0), element[0]);
            }
            return CallReplaced(Slot(kAttached), self, window, element);
        });
}

void KeepTheWindow(Object* handler)
{
    Replace(
        handler, Slot(kAttached), +[](Object* self, Object* window, Object** element) {
            if (window != nullptr && element != nullptr) {
                CallAt(window, kAddRef);
            }
            return CallReplaced(Slot(kAttached), self, window, element);
        });
}

// The container's own handler passes through the host: its engine is asked to attach it.
void SwallowCodesOfContainer(Object* handler)
{
    Replace(
        handler, Slot(kAttached), +[](Object* self, Object* window, Object** element) {
            if (element != nullptr && element[1] != nullptr &&
                Read<Entry>(element[1], Slot(kAttachHandler)) != nullptr) {
                Replace(
                    element[1], Slot(kAttachHandler),
                    +[](Object* engine, Object* place, Object* container) {
                        Write(
                            container, Slot(kHandleKey),
                            +[](Object*, Object*, Object*) { return kResultDeclined; });
                        return CallReplaced(Slot(kAttachHandler), engine, place, container);
                    });
            }
            return CallReplaced(Slot(kAttached), self, window, element);
        });
}

void HandOutNoMask(Object* handler)
{
    Replace(
        handler, Slot(kGetEvents), +[](Object*, std::uint32_t* mask) {
            if (mask != nullptr) {
                *mask = 0;
            }
            return mask == nullptr ? kResultNullArgument : kResultOk;
        });
}

struct Defect {
    std::string_view name;
    void (*spoil)(Object* plugin);
};

constexpr Defect kDefects[] = {
    {"swapped-slots",
     [](Object* plugin) {
         const auto complete = Read<Entry>(plugin, Slot(kInitComplete));
         Write(plugin, Slot(kInitComplete), Read<Entry>(plugin, Slot(kCreateControl)));
         Write(plugin, Slot(kCreateControl), complete);
     }},
    {"wrong-code",
     [](Object* plugin) {
         Replace(
             plugin, Slot(kInitHtml), +[](Object* self, Object** block) {
                 return block == nullptr ? kResultNullPointer
                                         : CallReplaced(Slot(kInitHtml), self, block);
             });
     }},
    {"no-end-of-table", [](Object* plugin) { Write(plugin, kPluginEndOfTable, 0); }},
    {"no-end-of-object", [](Object* plugin) { Write(plugin, kPluginEnd, 0); }},
    {"short-table", [](Object* plugin) { Write(plugin, 4, 72); }},
    {"wrong-interface", [](Object* plugin) { Write(plugin, 0, Read<int>(plugin, 0) + 1); }},
    {"no-type-id", [](Object* plugin) { Write(plugin, kPluginTypeId, 0); }},
    {"kept-plug-in", [](Object* plugin) { CallAt(plugin, kAddRef); }},
    {"unshared-record",
     [](Object* plugin) { Replace(plugin, kGetWeakReference, HandOutUnshared); }},
    {"no-error-record",
     [](Object* plugin) {
         Replace(
             plugin, kGetLastErrorInfo, +[](Object*, void* record, Object**) {
                 if (record != nullptr) {
                     std::memset(record, 0, 40);
                 }
                 return record == nullptr ? kResultNullArgument : kResultNotFound;
             });
     }},
    {"any-name", [](Object* plugin) { Replace(plugin, kByName, TakeAnyName); }},
    {"kept-handler",
     [](Object* plugin) {
         Replace(
             plugin, Slot(kCleanup), +[](Object*) { return kResultOk; });
     }},
    {"kept-subscription", SpoilHandedOut<kGetUIModel, SubscribeForever>},
    {"beyond-the-table", SpoilHandedOut<kGetUIModel, CallBeyondTheTable>},
    {"kept-element", SpoilHandedOut<kInitHandler, UseElementForever>},
    {"swallowed-codes", SpoilHandedOut<kInitHandler, SwallowCodesOfContainer>},
    {"no-mask", SpoilHandedOut<kInitHandler, HandOutNoMask>},
    {"kept-window", SpoilHandedOut<kInitHandler, KeepTheWindow>},
    {"leak",
     [](Object*) {
         constexpr std::size_t kLeak = 256 * 1024;
         static void* volatile leaked = nullptr;
         leaked = std::malloc(kLeak);
         std::memset(leaked, 1, kLeak);
     }},
    {"pinned", [](Object*) { Pin(); }},
    {"kept-thread", [](Object*) { StartThread(); }},
};

std::string_view DefectName()
{
    const char* name = std::getenv("CONFORMANCE_DEFECT");
    return name == nullptr ? "" : name;
}

}  // namespace

extern "C" {

EXPORTED ResultCode ReflectServiceObjectInfo(const void** entries, std::uint32_t* count)
{
    const ResultCode code = g_real.Call("ReflectServiceObjectInfo", entries, count);
    if (code == kResultOk && DefectName() == "wrong-count") {
        ++*count;
    }
    return code;
}

EXPORTED ResultCode CreateServiceObject(std::uint32_t atom, Object** object)
{
    const ResultCode code = g_real.Call("CreateServiceObject", atom, object);
    for (const Defect& defect : kDefects) {
        if (code == kResultOk && defect.name == DefectName()) {
            defect.spoil(*object);
        }
    }
    return code == kResultServiceNotInModule && DefectName() == "found-nothing" ? kResultNotFound
                                                                                : code;
}

EXPORTED ResultCode RegisterResources(Object* engine)
{
    const ResultCode code = g_real.Call("RegisterResources", engine);
    if (engine != nullptr && DefectName() == "registers-again") {
        Object* registration = nullptr;
        CallAt(engine, Slot(kCreateRegistration), &registration, &registration);
    }
    return code;
}

}  // extern "C"
