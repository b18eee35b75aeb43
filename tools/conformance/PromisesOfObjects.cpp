#include "Promises.h"

#include "Host.h"
#include "PlatformLibraries.h"

#include <optional>
#include <thread>

namespace Conformance {

namespace {

// An object of the module, and what is promised of its class.
struct Subject {
    const char* label;
    const OfferedInterface& offered;
    ModuleObject object;
    std::size_t membersSize;      // between type id and reference count; 0: not fixed
    const char* className;        // null: the handler's name is the type name
    std::uint32_t eventMask = 0;  // of a handler
    std::uint32_t localeChanged = 0;
    std::uint32_t nullEvent = 0;
};

// The methods of an object, called through their slots or through their names.
class Methods {
public:
    Methods(Finding& finding, const Subject& itsSubject, bool byName)
        : subject(itsSubject), finding_(finding), byName_(byName)
    {
    }

    template <class... Args>
    void Answer(std::uint32_t wanted, unsigned slot, Args... arguments) const
    {
        const char* name = subject.offered.methods[slot];
        finding_.Equal(name,
                       byName_ ? subject.object.CallByName(name, arguments...)
                               : subject.object.Call(slot, arguments...),
                       wanted);
    }
    void HandOut(unsigned slot, bool asPromised) const
    {
        finding_.Want(asPromised, std::string(subject.offered.methods[slot]) +
                                      " hands out something else than it promises");
    }

    const Subject& subject;

private:
    Finding& finding_;
    const bool byName_;
};

constexpr const void* kNothing = nullptr;

void CheckPlugin(const Methods& all)
{
    using namespace PluginSlot;
    const int something = 0;
    const void* const context[] = {kNothing, &something};
    const void* const both[] = {&something, &something};
    all.Answer(0, kHandshake);
    all.Answer(0, kRegisterResources);
    all.Answer(0, kInitBegin, &context);
    all.Answer(1, kInitHtml, &both);
    all.Answer(1, kInitSubscription);
    all.Answer(0, kInitComplete);
    all.Answer(1, kCreateControl);
    for (const unsigned slot : {kInitHandler, kGetUIModel}) {
        void* first = nullptr;
        void* second = nullptr;
        void** const firstOut[] = {&first};
        void** const secondOut[] = {&second};
        all.Answer(0, slot, &firstOut);
        all.Answer(0, slot, &secondOut);
        all.HandOut(slot, first != nullptr && first == second);
        ModuleObject(first).ReleaseAndForget();
        ModuleObject(second).ReleaseAndForget();
    }
    all.Answer(0, kCleanup);
}

void CheckPluginNulls(const Methods& all)
{
    using namespace PluginSlot;
    const int something = 0;
    const void* const none[] = {kNothing, kNothing};
    const void* const first[] = {&something, kNothing};
    const void* const second[] = {kNothing, &something};
    for (const unsigned slot : {kInitBegin, kInitHtml, kInitHandler, kGetUIModel}) {
        all.Answer(3, slot, kNothing);
        all.Answer(3, slot, &none);
    }
    all.Answer(3, kInitBegin, &first);
    all.Answer(3, kInitHtml, &first);
    all.Answer(3, kInitHtml, &second);
}

void CheckHandler(const Methods& all)
{
    using namespace HandlerSlot;
    ElementAddress element{};
    std::uint32_t mask = 0;
    const char* name = nullptr;
    all.Answer(0, kGetElement, &element);
    all.HandOut(kGetElement, element.handle != nullptr);
    all.Answer(0, kGetEvents, &mask);
    all.HandOut(kGetEvents, mask == all.subject.eventMask);
    const char event[64] = "an event that is none of the panel's";
    for (unsigned slot = kHandleMouse; slot < kAttached; ++slot) {
        all.Answer(1, slot, kNothing, &event);
    }
    for (unsigned slot = kDetached + 1; slot < kLocaleChanged; ++slot) {
        all.Answer(1, slot);
    }
    all.Answer(all.subject.localeChanged, kLocaleChanged);
    all.Answer(0, kGetName, &name);
    all.HandOut(kGetName, name != nullptr && *name != '\0');
}

void CheckHandlerNulls(const Methods& all)
{
    using namespace HandlerSlot;
    const ElementAddress element{};
    for (const unsigned slot : {kGetElement, kGetEvents, kGetName}) {
        all.Answer(3, slot, kNothing);
    }
    for (const unsigned slot : {kHandleKey, kHandleEvent}) {
        all.Answer(all.subject.nullEvent, slot, kNothing, kNothing);
    }
    all.Answer(3, kAttached, kNothing, &element);
    all.Answer(3, kAttached, &element, kNothing);
}

void CheckModel(const Methods& all)
{
    using namespace ModelSlot;
    void* out = nullptr;
    all.Answer(1, kGetConcreteModel, &out);
    all.HandOut(kGetConcreteModel, out == nullptr);
    for (unsigned slot = kGetConcreteModel + 1; slot < kModelMethods.size(); ++slot) {
        all.Answer(1, slot, kNothing);
    }
}

void CheckModelNulls(const Methods& all)
{
    all.Answer(0, ModelSlot::kSetCollection, kNothing);
}

// --- Layout -------------------------------------------------------------------------------------

std::size_t EndOfTable(const Subject& subject)
{
    return kMethodsAt + subject.offered.tableSize;
}

void CheckEntries(Finding& finding, const Subject& subject)
{
    for (std::size_t at = kAddRefAt; at < EndOfTable(subject); at += 8) {
        finding.Want(subject.object.Read<void*>(at) != nullptr,
                     std::string(subject.label) + " has no entry at " + std::to_string(at));
    }
}

void CheckTypeId(Finding& finding, const Subject& subject)
{
    const auto id = subject.object.Read<std::uint32_t>(EndOfTable(subject) + 4);
    const char* recorded = nullptr;
    if (subject.className == nullptr) {
        subject.object.Call(HandlerSlot::kGetName, &recorded);
        finding.Equal(subject.label, id, HashOf(recorded));
        return;
    }
    // As the run-time type information of either family of compilers has it.
    const std::string name = subject.className;
    const std::uint32_t wanted = HashOf(std::to_string(name.size()) + name);
    finding.Want(id == wanted || id == HashOf("class " + name) ||
                     id == HashOf(".?AV" + name + "@@"),
                 std::string(subject.label) + " has another type id than that of " + name);
}

// Offset of the end tag. Where members are not fixed it is searched for, behind the table.
std::optional<std::size_t> FindEnd(const Subject& subject)
{
    constexpr std::size_t kLargestObject = 4096;
    const std::size_t members = EndOfTable(subject) + 8;
    if (subject.membersSize != 0) {
        const std::size_t at = members + subject.membersSize + 16;
        return subject.object.Tag(at) == kEndOfObject ? std::optional(at) : std::nullopt;
    }
    for (std::size_t at = members + 16; at < kLargestObject; at += 4) {
        if (subject.object.Tag(at) == kEndOfObject) {
            return at;
        }
    }
    return std::nullopt;
}

void CheckEnd(Finding& finding, const Subject& subject)
{
    const std::string label = subject.label;
    const auto end = FindEnd(subject);
    finding.Want(end.has_value(), label + " does not end with its tag");
    if (!end) {
        return;
    }
    const std::uint32_t count = subject.object.AddRef();
    const bool isBeforePadding = subject.object.Read<std::uint32_t>(*end - 16) == count;
    finding.Want(isBeforePadding || subject.object.Read<std::uint32_t>(*end - 12) == count,
                 label + " has no reference count before its weak-reference record");
    subject.object.Release();
    const WeakRecord record(subject.object);
    finding.Want(subject.object.Read<void*>(*end - 8) == record.address,
                 label + " has no weak-reference record before its end");
    record.DropHolder();
}

// --- Counts -------------------------------------------------------------------------------------

void CheckCounts(Finding& finding, const Subject& subject)
{
    const ModuleObject& object = subject.object;
    const std::string label = subject.label;
    const std::uint32_t count = object.Count();
    finding.Equal(label + " AddRef", object.AddRef(), count + 1);
    finding.Equal(label + " GetRefCount", object.Count(), count + 1);
    finding.Equal(label + " Release", object.Release(), count);
    std::uint32_t elsewhere = 0;
    std::thread([&] { elsewhere = object.AddRef(), object.Release(); }).join();
    finding.Equal(label + " AddRef on another thread", elsewhere, count + 1);
    finding.Equal(label + " GetRefCount after all", object.Count(), count);
}

void CheckWeakRecord(Finding& finding, const Subject& subject)
{
    const ModuleObject& object = subject.object;
    const std::string label = subject.label;
    finding.Equal(label + " GetWeakReference(null)", object.CallAt(kGetWeakReferenceAt, kNothing),
                  3);
    const WeakRecord first(object);
    const std::uint32_t holders = first.Holders();
    const WeakRecord second(object);
    finding.Equal(label + " GetWeakReference", first.result + second.result, 0);
    finding.Want(first.address == second.address, label + " has two records");
    finding.Equal(label + " holders after another", second.Holders(), holders + 1);
    finding.Want(first.Object() == object.Address(), label + " is not what its record points to");
    finding.Want(first.IsAlive(), label + " is not alive to its record");
    const std::uint32_t count = object.Count();
    const ModuleObject locked = first.Lock();
    finding.Want(locked == object, label + " is not what its record locks");
    finding.Equal(label + " count while locked", object.Count(), count + 1);
    locked.Release();
    second.DropHolder();
    finding.Equal(label + " holders at the end", first.Holders(), holders);
    first.DropHolder();
}

// An object of its own, given up at the end on another thread, while its record stays.
void CheckWeakDeath(Finding& finding, const Host& host)
{
    ModuleObject plugin = host.CreatePlugin();
    finding.Equal("the count of a fresh object", plugin.Count(), 1);
    const WeakRecord record(plugin);
    finding.Equal("holders of a fresh record", record.Holders(), 2);
    const ModuleObject locked = record.Lock();
    finding.Equal("Release of the first reference", plugin.Release(), 1);
    finding.Want(record.IsAlive(), "a locked object is dead");
    std::uint32_t left = 1;
    std::thread([&] { left = locked.Release(); }).join();
    finding.Equal("the last Release", left, 0);
    finding.Want(!record.IsAlive(), "the object is alive after its last release");
    finding.Want(!record.Lock(), "a dead object was locked");
    finding.Want(record.Object() == nullptr, "the record points to a dead object");
    finding.Equal("holders after the death", record.Holders(), 1);
    record.DropHolder();
}

// --- Error records ------------------------------------------------------------------------------

// A failing call of each class, and a declined one.
struct FailingCall {
    const Subject& subject;
    unsigned failing;
    unsigned declined;
};

void CheckErrorRecord(Finding& finding, const FailingCall& row)
{
    const ModuleObject& object = row.subject.object;
    const char* method = row.subject.offered.methods[row.failing];
    object.Call(row.failing, kNothing);
    const LastError error(object);
    finding.Equal("GetLastErrorInfo", error.result, 0);
    finding.Equal("the message", error.Message(),
                  std::string(row.subject.offered.name) + "::" + method + "() failed, code: 3");
    if (error.result != 0) {
        return;
    }
    finding.Equal("the code", error.words.code, 3);
    const std::string function = error.words.function;
    const std::string file = error.words.file;
    finding.Want(function.find(method) != function.npos, "the function is " + function);
    finding.Want(file.find(row.subject.offered.name) != file.npos, "the file is " + file);
    finding.Want(error.words.line != 0, "the line is 0");
}

void CheckUntouchedRecord(Finding& finding, const FailingCall& row)
{
    row.subject.object.Call(row.failing, kNothing);
    const std::string before = LastError(row.subject.object).Message();
    row.subject.object.Call(row.declined, kNothing, kNothing);
    finding.Equal("the message after a declined call", LastError(row.subject.object).Message(),
                  before);
    finding.Want(before != "(none)", "there is no record");
}

void CheckOtherThread(Finding& finding, const FailingCall& row)
{
    row.subject.object.Call(row.failing, kNothing);
    std::thread([&] {
        const LastError error(row.subject.object);
        finding.Equal("GetLastErrorInfo without an error", error.result, 8);
        finding.Want(error.words.code == 0 && error.words.message == nullptr &&
                         error.words.function == nullptr && error.words.file == nullptr &&
                         error.words.line == 0,
                     "the record of no error is not zeroed");
    }).join();
    finding.Equal("GetLastErrorInfo of the failing thread", LastError(row.subject.object).result,
                  0);
}

void CheckNullRecord(Finding& finding, const FailingCall& row)
{
    const ModuleObject& object = row.subject.object;
    finding.Equal("GetLastErrorInfo(null)", object.CallAt(kGetLastErrorInfoAt, kNothing, kNothing),
                  3);
    ErrorWords words{};
    object.Call(row.failing, kNothing);
    finding.Equal("GetLastErrorInfo(record, null)",
                  object.CallAt(kGetLastErrorInfoAt, &words, kNothing), 0);
}

void CheckUnknownNames(Finding& finding, const Subject& subject)
{
    for (const char* name : {"", "handshake", "Handshake ", "Release", "NoSuchMethod"}) {
        finding.Equal(std::string(subject.label) + " by the name '" + name + "'",
                      subject.object.CallByName(name, kNothing), 8);
    }
    finding.Equal("by a null name", subject.object.CallByName(nullptr), 3);
}

// --- Groups -------------------------------------------------------------------------------------

struct SubjectRow {
    const char* promise;
    void (*check)(Finding&, const Subject&);
};
constexpr SubjectRow kSubjectRows[] = {
    {"layout.interface-id",
     [](Finding& finding, const Subject& subject) {
         finding.Equal(subject.label, subject.object.Read<std::uint32_t>(kInterfaceIdAt),
                       HashOf(subject.offered.name));
     }},
    {"layout.table-size",
     [](Finding& finding, const Subject& subject) {
         finding.Equal(subject.label, subject.object.Read<std::uint32_t>(kTableSizeAt),
                       subject.offered.tableSize);
     }},
    {"layout.interface-name",
     [](Finding& finding, const Subject& subject) {
         finding.Equal(subject.label,
                       std::string(subject.object.Read<const char*>(kInterfaceNameAt)),
                       subject.offered.name);
     }},
    {"layout.entries", CheckEntries},
    {"layout.end-of-table",
     [](Finding& finding, const Subject& subject) {
         finding.Equal(subject.label, subject.object.Tag(EndOfTable(subject)), kEndOfTable);
     }},
    {"layout.type-id", CheckTypeId},
    {"layout.end-of-object", CheckEnd},
    {"counts.references", CheckCounts},
    {"counts.weak-record", CheckWeakRecord},
    {"names.unknown", CheckUnknownNames},
};

// Checks of the methods, in the order of the subjects.
struct MethodsRow {
    const char* name;
    void (*check)(const Methods&);
    void (*checkNulls)(const Methods&);
};
constexpr MethodsRow kMethodsRows[] = {
    {"plug-in", CheckPlugin, CheckPluginNulls},
    {"panel-handler", CheckHandler, CheckHandlerNulls},
    {"model", CheckModel, CheckModelNulls},
    {"container-handler", CheckHandler, CheckHandlerNulls},
};

struct ErrorRow {
    const char* promise;
    void (*check)(Finding&, const FailingCall&);
};
constexpr ErrorRow kErrorRows[] = {
    {"errors.record", CheckErrorRecord},
    {"errors.declined-leaves-it", CheckUntouchedRecord},
    {"errors.thread", CheckOtherThread},
    {"errors.null-argument", CheckNullRecord},
};

void ProveMethods(Report& report, const MethodsRow& row, const Subject& subject)
{
    const std::string name = row.name;
    report.Prove("slots." + name, [&](Finding& finding) { row.check({finding, subject, false}); });
    report.Prove("names." + name, [&](Finding& finding) { row.check({finding, subject, true}); });
    report.Prove("nulls." + name, [&](Finding& finding) {
        row.checkNulls({finding, subject, false});
        row.checkNulls({finding, subject, true});
    });
}

}  // namespace

void ProveObjects(Report& report, const std::string& module)
{
    constexpr std::size_t kPointer = sizeof(void*);
    ModuleLibrary library(module);
    Host host(library);
    host.StartPanel();
    host.HandOverDocuments();
    host.OpenView();
    // A plug-in besides the one that owns the panel: its slots are tried out.
    ModuleObject plugin = host.CreatePlugin();
    const Subject subjects[] = {
        {"the plug-in", kPlugin, plugin, 4 * kPointer, "CommentsPanelInplacePlugin"},
        {"the panel handler", kHandler, host.handler, 0, nullptr, kPanelEventMask, 1, 1},
        {"the model", kModel, host.model, kPointer, "CommentsPanelModel"},
        {"a container's handler", kHandler, host.ContainerHandler(), 0, nullptr,
         kContainerEventMask, 0, 3},
    };
    for (const SubjectRow& row : kSubjectRows) {
        report.Prove(row.promise, [&](Finding& finding) {
            for (const Subject& subject : subjects) {
                row.check(finding, subject);
            }
        });
    }
    report.Prove("counts.weak-death", [&](Finding& finding) { CheckWeakDeath(finding, host); });
    const FailingCall failing[] = {
        {subjects[0], PluginSlot::kInitBegin, PluginSlot::kCreateControl},
        {subjects[1], HandlerSlot::kGetName, HandlerSlot::kHandleMouse},
        {subjects[3], HandlerSlot::kGetElement, HandlerSlot::kHandleMouse},
    };
    for (const ErrorRow& row : kErrorRows) {
        report.Prove(row.promise, [&](Finding& finding) {
            for (const FailingCall& call : failing) {
                row.check(finding, call);
            }
        });
    }
    for (std::size_t i = 0; i < std::size(subjects); ++i) {
        ProveMethods(report, kMethodsRows[i], subjects[i]);
    }
    plugin.ReleaseAndForget();
    host.CloseView();
    host.ShutDown();
}

}  // namespace Conformance
