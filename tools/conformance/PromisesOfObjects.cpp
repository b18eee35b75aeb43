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

// Calls a method through its slot or through its name.
class Caller {
public:
    Caller(const Subject& subject, bool byName) : subject_(subject), byName_(byName) {}

    template <class... Args>
    std::uint32_t operator()(unsigned slot, Args... arguments) const
    {
        return byName_ ? subject_.object.CallByName(subject_.offered.methods[slot], arguments...)
                       : subject_.object.Call(slot, arguments...);
    }
    const Subject& Of() const { return subject_; }

private:
    const Subject& subject_;
    bool byName_;
};

// The methods of one class, checked one after another: `call` makes the calls of a slot.
class SlotCheck {
public:
    SlotCheck(Finding& finding, const Caller& caller) : call(caller), finding_(finding) {}

    void Answers(unsigned slot, std::uint32_t wanted, std::uint32_t seen)
    {
        finding_.Equal(call.Of().offered.methods[slot], seen, wanted);
    }
    template <class T>
    void Hands(unsigned slot, const T& seen, const T& wanted)
    {
        finding_.Equal(std::string("what ") + call.Of().offered.methods[slot] + " hands out", seen,
                       wanted);
    }

    const Caller call;

private:
    Finding& finding_;
};

constexpr const void* kNothing = nullptr;

void CheckPlugin(SlotCheck check)
{
    using namespace PluginSlot;
    const auto& call = check.call;
    int context = 0;
    const void* const block[] = {kNothing, &context};
    for (const unsigned slot : {kHandshake, kInitComplete}) {
        check.Answers(slot, 0, call(slot));
    }
    for (const unsigned slot : {kInitSubscription, kCreateControl}) {
        check.Answers(slot, 1, call(slot));
    }
    check.Answers(kRegisterResources, 0, call(kRegisterResources));
    check.Answers(kInitBegin, 0, call(kInitBegin, &block));
    const void* const both[] = {&context, &context};
    check.Answers(kInitHtml, 1, call(kInitHtml, &both));
    for (const unsigned slot : {kInitHandler, kGetUIModel}) {
        void* first = nullptr;
        void* second = nullptr;
        void** const firstOut[] = {&first};
        void** const secondOut[] = {&second};
        check.Answers(slot, 0, call(slot, &firstOut));
        check.Answers(slot, 0, call(slot, &secondOut));
        check.Hands(slot, first != nullptr && first == second, true);
        ModuleObject(first).Release();
        ModuleObject(second).Release();
    }
    check.Answers(kCleanup, 0, call(kCleanup));
}

void CheckPluginNulls(SlotCheck check)
{
    using namespace PluginSlot;
    const auto& call = check.call;
    const int something = 0;
    const void* const none[] = {kNothing, kNothing};
    const void* const first[] = {&something, kNothing};
    const void* const second[] = {kNothing, &something};
    for (const unsigned slot : {kInitBegin, kInitHtml, kInitHandler, kGetUIModel}) {
        check.Answers(slot, 3, call(slot, kNothing));
        check.Answers(slot, 3, call(slot, &none));
    }
    check.Answers(kInitBegin, 3, call(kInitBegin, &first));
    check.Answers(kInitHtml, 3, call(kInitHtml, &first));
    check.Answers(kInitHtml, 3, call(kInitHtml, &second));
}

void CheckHandler(SlotCheck check)
{
    using namespace HandlerSlot;
    const auto& call = check.call;
    ElementAddress element{};
    std::uint32_t mask = 0;
    const char* name = nullptr;
    check.Answers(kGetElement, 0, call(kGetElement, &element));
    check.Hands(kGetElement, element.handle != nullptr, true);
    check.Answers(kGetEvents, 0, call(kGetEvents, &mask));
    check.Hands(kGetEvents, mask, check.call.Of().eventMask);
    char event[64] = "an event that is none of the panel's";
    for (unsigned slot = kHandleMouse; slot < kAttached; ++slot) {
        check.Answers(slot, 1, call(slot, kNothing, &event));
    }
    for (unsigned slot = kDetached + 1; slot < kLocaleChanged; ++slot) {
        check.Answers(slot, 1, call(slot));
    }
    check.Answers(kLocaleChanged, check.call.Of().localeChanged, call(kLocaleChanged));
    check.Answers(kGetName, 0, call(kGetName, &name));
    check.Hands(kGetName, name != nullptr && *name != '\0', true);
}

void CheckHandlerNulls(SlotCheck check)
{
    using namespace HandlerSlot;
    const auto& call = check.call;
    const ElementAddress element{};
    for (const unsigned slot : {kGetElement, kGetEvents, kGetName}) {
        check.Answers(slot, 3, call(slot, kNothing));
    }
    for (const unsigned slot : {kHandleKey, kHandleEvent}) {
        check.Answers(slot, check.call.Of().nullEvent, call(slot, kNothing, kNothing));
    }
    check.Answers(kAttached, 3, call(kAttached, kNothing, &element));
    check.Answers(kAttached, 3, call(kAttached, &element, kNothing));
}

void CheckModel(SlotCheck check)
{
    const auto& call = check.call;
    void* out = nullptr;
    check.Answers(1, 1, call(1, &out));
    check.Hands(1, out == nullptr, true);
    for (const unsigned slot : {2u, 3u, 5u}) {
        check.Answers(slot, 1, call(slot, kNothing));
    }
    check.Answers(4, 1, call(4));
}

void CheckModelNulls(SlotCheck check)
{
    check.Answers(ModelSlot::kSetCollection, 0, check.call(ModelSlot::kSetCollection, kNothing));
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

struct SlotRow {
    const char* bySlot;
    const char* byName;
    const char* nulls;
    void (*check)(SlotCheck);
    void (*checkNulls)(SlotCheck);
};
constexpr SlotRow kSlotRows[] = {
    {"slots.plug-in", "names.plug-in", "nulls.plug-in", CheckPlugin, CheckPluginNulls},
    {"slots.panel-handler", "names.panel-handler", "nulls.panel-handler", CheckHandler,
     CheckHandlerNulls},
    {"slots.model", "names.model", "nulls.model", CheckModel, CheckModelNulls},
    {"slots.container-handler", "names.container-handler", "nulls.container-handler", CheckHandler,
     CheckHandlerNulls},
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

void ProveSlots(Report& report, const SlotRow& row, const Subject& subject)
{
    for (const bool byName : {false, true}) {
        report.Prove(byName ? row.byName : row.bySlot, [&](Finding& finding) {
            row.check({finding, Caller(subject, byName)});
        });
    }
    report.Prove(row.nulls, [&](Finding& finding) {
        row.checkNulls({finding, Caller(subject, false)});
        row.checkNulls({finding, Caller(subject, true)});
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
        ProveSlots(report, kSlotRows[i], subjects[i]);
    }
    plugin.ReleaseAndForget();
    host.CloseView();
    host.ShutDown();
}

}  // namespace Conformance
