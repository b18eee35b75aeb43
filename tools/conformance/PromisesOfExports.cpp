#include "Promises.h"

#include "Host.h"
#include "PlatformLibraries.h"

#include <chrono>
#include <exception>
#include <set>
#include <thread>

namespace Conformance {

namespace {

constexpr std::uint32_t kUnresolved = 0xFFFFFFFF;
constexpr std::uint32_t kServiceNotInModule = 0x10005;
constexpr std::size_t kFileCount = 26;

void ProveNames(Finding& finding, const std::string& module)
{
    const ModuleLibrary library(module);
    for (const char* name :
         {"ReflectServiceObjectInfo", "CreateServiceObject", "RegisterResources"}) {
        finding.Want(library.Export(name) != nullptr, std::string(name) + " is not exported");
    }
}

void ProveNullArguments(Finding& finding, const std::string& module)
{
    const ModuleLibrary library(module);
    const ReflectedObject* entries = nullptr;
    std::uint32_t count = 0;
    void* object = nullptr;
    finding.Equal("ReflectServiceObjectInfo(null, count)", library.Reflect(nullptr, &count), 3);
    finding.Equal("ReflectServiceObjectInfo(entries, null)", library.Reflect(&entries, nullptr), 3);
    finding.Equal("CreateServiceObject(0, object)", library.Create(0, &object), 3);
    finding.Equal("CreateServiceObject(atom, null)", library.Create(AtomOf(kPublicObject), nullptr),
                  3);
    finding.Equal("RegisterResources(null)", library.RegisterResources(nullptr), 3);
    finding.Want(entries == nullptr && count == 0 && object == nullptr,
                 "a refused call wrote something");
}

// The atom stands in the table as it stood when the table was made: resolved or not.
void ProveReflection(Finding& finding, const std::string& module)
{
    const ModuleLibrary library(module);
    const ReflectedObject* first = nullptr;
    const ReflectedObject* second = nullptr;
    std::uint32_t count = 0;
    finding.Equal("the result", library.Reflect(&first, &count), 0);
    finding.Equal("the count", count, 1);
    if (first == nullptr) {
        finding.Fail("no array was handed out");
        return;
    }
    finding.Equal("the name", std::string(first->name), kPublicObject);
    finding.Equal("the atom before it was resolved", first->atom, kUnresolved);
    void* object = nullptr;
    library.Create(AtomOf(kPublicObject), &object);
    ModuleObject(object).Release();
    finding.Equal("the second result", library.Reflect(&second, &count), 0);
    finding.Equal("the second count", count, 1);
    finding.Want(first == second, "the second call handed out another array");
}

void ProveUnknownAtoms(Finding& finding, const std::string& module)
{
    const ModuleLibrary library(module);
    for (const char* name : {"CommentsPanelHandler", "CommentsPanelModel",
                             "CommentsContainerHandler", "UIInplacePlugin"}) {
        void* object = nullptr;
        finding.Equal(name, library.Create(AtomOf(name), &object), kServiceNotInModule);
        finding.Want(object == nullptr, std::string(name) + " handed out an object");
    }
}

void ProveFreshObjects(Finding& finding, const std::string& module)
{
    const ModuleLibrary library(module);
    void* first = nullptr;
    void* second = nullptr;
    const std::uint32_t atom = AtomOf(kPublicObject);
    finding.Equal("the first result", library.Create(atom, &first), 0);
    finding.Equal("the second result", library.Create(atom, &second), 0);
    finding.Want(first != second, "two calls handed out one object");
    for (void* object : {first, second}) {
        ModuleObject(object).Release();
    }
}

// Tables that end before an entry's place are passed over; a module that could not register tries
// again, one that has does not.
void ProveRegistration(Finding& finding, const std::string& module)
{
    ModuleLibrary library(module);
    Host host(library);
    HostObject& engine = host.Of("UIEngine");
    const std::uint32_t whole = engine.tableSize;
    engine.tableSize = 32;
    finding.Equal("a table of 32 bytes", library.RegisterResources(&engine), 0);
    finding.Equal("calls of slot 4 then", engine.calls[4].load(), 0);
    engine.tableSize = whole;
    finding.Equal("the first registration", library.RegisterResources(&engine), 0);
    finding.Equal("the second registration", library.RegisterResources(&engine), 0);
    finding.Equal("calls of slot 4", engine.calls[4].load(), 1);
    finding.Equal("calls of slot 7", engine.calls[7].load(), 1);
    finding.Want(library.instance != nullptr, "no module instance was handed over");
    finding.Want(host.Seen().Violations().empty(), "an entry was called that should not be");
}

void ProveFiles(Finding& finding, const std::string& module)
{
    ModuleLibrary library(module);
    Host host(library);
    library.RegisterResources(&host.Of("UIEngine"));
    std::string_view contents = FindEmbeddedFile(library.instance, "UI-DATA-TOC", "UI-DATA-TOC");
    finding.Want(contents.ends_with(";"), "the table of contents does not end with ';'");
    std::string_view before;
    std::size_t count = 0;
    for (; !contents.empty(); ++count) {
        const std::string_view path = contents.substr(0, contents.find(';'));
        contents.remove_prefix(path.size() + 1);
        finding.Want(before < path, std::string(path) + " is not in alphabetical order");
        before = path;
        std::string name(path);
        for (char& c : name) {
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        const std::string_view bytes = FindEmbeddedFile(library.instance, "UI-DATA", name.c_str());
        const bool isTemplate = path.find("/template-") != path.npos;
        const std::string_view mark = isTemplate               ? "\xFF\xFE"
                                      : path.ends_with(".png") ? "\x89PNG"
                                                               : "\xEF\xBB\xBF";
        finding.Want(bytes.starts_with(mark), name + " is missing or begins with another mark");
    }
    finding.Equal("the number of files", count, kFileCount);
}

// A thread that has been joined may be listed as one of the process for a moment longer.
std::size_t CountThreadsDownTo(std::size_t wanted)
{
    constexpr auto kPatience = std::chrono::seconds(5);
    const auto end = std::chrono::steady_clock::now() + kPatience;
    std::size_t count = CountThreads();
    while (count > wanted && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        count = CountThreads();
    }
    return count;
}

void LiveOften(Finding& finding, const std::string& module, unsigned lives)
{
    for (unsigned life = 0; life < lives; ++life) {
        ModuleLibrary library(module);
        Host host(library);
        host.Live();
        finding.Want(library.Unload(), "the library stays in the process");
    }
}

}  // namespace

void ProveExports(Report& report, const std::string& module)
{
    struct Row {
        const char* promise;
        void (*prove)(Finding&, const std::string&);
    };
    constexpr Row kRows[] = {
        {"exports.names", ProveNames},
        {"exports.null-arguments", ProveNullArguments},
        {"exports.reflection", ProveReflection},
        {"exports.unknown-atoms", ProveUnknownAtoms},
        {"exports.fresh-objects", ProveFreshObjects},
        {"exports.registration", ProveRegistration},
        {"exports.files", ProveFiles},
    };
    for (const Row& row : kRows) {
        report.Prove(row.promise, [&](Finding& finding) { row.prove(finding, module); });
    }
}

void ProveUnloading(Report& report, const std::string& module)
{
    constexpr unsigned kLives = 24;
    // Of libraries around the module, and of runtimes that are linked into it.
    constexpr std::size_t kGrowthLimit = 512 * 1024;
    std::size_t before = 0;
    const std::size_t threads = CountThreads();
    report.Prove("unloading.leaves-the-process", [&](Finding& finding) {
        LiveOften(finding, module, kLives);
        before = MemoryInUse();
        LiveOften(finding, module, kLives);
    });
    report.Prove("unloading.threads", [&](Finding& finding) {
        const std::size_t left = CountThreadsDownTo(threads);
        finding.Want(left <= threads, "the process has " + std::to_string(left) +
                                          " threads, before it had " + std::to_string(threads));
    });
    report.Prove("unloading.memory", [&](Finding& finding) {
        const std::size_t after = MemoryInUse();
        finding.Want(after <= before + kGrowthLimit,
                     "memory grew from " + std::to_string(before) + " to " + std::to_string(after) +
                         " bytes, wanted less than " + std::to_string(kGrowthLimit) + " more");
    });
}

}  // namespace Conformance
