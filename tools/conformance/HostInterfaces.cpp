#include "HostInterfaces.h"

#include "Host.h"
#include "PlatformLibraries.h"

#include <algorithm>
#include <string_view>

namespace Conformance {

namespace {

using Number = std::uint32_t;
using Wide = const char16_t*;

// --- The PDF library ----------------------------------------------------------------------------

std::atomic<std::int32_t> g_references = 0;
char g_page;
char g_annotation;

void AddRefToRecord(void* record)
{
    g_references += record == nullptr ? 0 : 1;
}

void ReleaseRecord(void* record)
{
    g_references -= record == nullptr ? 0 : 1;
}

void* AcquireRecord(void* record)
{
    AddRefToRecord(record);
    return record;
}

struct Date {
    std::uint16_t year, month, day, hour, minute, second;
    std::int16_t utcOffsetHours;
};

Number GetText(void*, void (*sink)(void*, Wide, Number), void* context)
{
    constexpr std::u16string_view kText = u"a comment";
    sink(context, kText.data(), static_cast<Number>(kText.size()));
    return kResultOk;
}

Number GetDate(void*, Date* date)
{
    *date = {2024, 2, 29, 12, 30, 0, 1};
    return kResultOk;
}

struct FunctionTable {
    Number size = 128;
    Number version = 1;
    AnyFunction entries[15] = {
        Erased(AddRefToRecord),
        Erased(ReleaseRecord),
        Erased(AddRefToRecord),
        Erased(ReleaseRecord),
        Erased(+[](void*, Number* count) -> Number { return *count = 1, kResultOk; }),
        Erased(+[](void*, Number position, void** annotation) -> Number {
            *annotation = position == 0 ? AcquireRecord(&g_annotation) : nullptr;
            return position == 0 ? kResultOk : kResultOutOfRange;
        }),
        Erased(+[](void* left, void* right, bool* equal) -> Number {
            return *equal = left == right, kResultOk;
        }),
        Erased(+[](void*, bool* listed) -> Number { return *listed = true, kResultOk; }),
        Erased(+[](void*, Number* subtype) -> Number {
            return *subtype = AtomOf("Highlight"), kResultOk;
        }),
        Erased(GetText),
        Erased(GetText),
        Erased(GetText),
        Erased(GetDate),
        Erased(GetDate),
        Erased(+[](void*, double* rectangle) -> Number {
            std::fill_n(rectangle, 4, 10.0);
            return kResultOk;
        }),
    };
};
static_assert(sizeof(FunctionTable) == 128);

// --- Interfaces ---------------------------------------------------------------------------------

Page& PageOf(HostObject& self)
{
    return self.host->ThePage();
}

void FillWindow(HostObject& object)
{
    object.Method<4>([](HostObject& self, Number atom, HostObject** named) {
        for (const char* name : {"UIMainFrame", "UIDocumentsCollection"}) {
            if (atom == AtomOf(name)) {
                *named = self.host->Of(name).Retained();
                return kResultOk;
            }
        }
        return kResultNotFound;
    });
    using Collector = void (*)(void* context, Element* element, HostObject* engine);
    object.Method<32>([](HostObject& self, Element* root, const char* selector, Collector collector,
                         void* context) {
        for (Element* element : PageOf(self).Select(root, selector)) {
            collector(context, element, &self.host->Of("UIHtmlEngine"));
        }
    });
}

void FillTreeMethods(HostObject& object)
{
    object.Method<0>([](HostObject&, Element* element) {
        const bool isElement = element != nullptr && element->inTree;
        if (isElement) {
            ++element->uses;
        }
        return isElement ? kResultOk : kResultNotFound;
    });
    object.Method<1>([](HostObject&, Element* element) { --element->uses; });
    object.Method<2>(
        [](HostObject&, Element* element, Element** parent) { *parent = element->parent; });
    object.Method<3>([](HostObject&, Element* element, Number* index) {
        if (element->parent == nullptr || !element->inTree) {
            return kResultNotFound;
        }
        const auto& siblings = element->parent->children;
        *index = static_cast<Number>(std::find(siblings.begin(), siblings.end(), element) -
                                     siblings.begin());
        return kResultOk;
    });
    object.Method<4>([](HostObject&, Element* element, Number* count) {
        *count = static_cast<Number>(element->children.size());
    });
    object.Method<5>([](HostObject&, Element* element, Number index, Element** child) {
        *child = index < element->children.size() ? element->children[index] : nullptr;
    });
    object.Method<11>([](HostObject& self, Element* root, const char* selector, Element** element) {
        const auto found = PageOf(self).Select(root, selector);
        *element = found.empty() ? nullptr : found.front();
    });
    object.Method<12>([](HostObject&, Element* element, const char* selector, Element** around) {
        while (element != nullptr && !Page::Matches(*element, selector)) {
            element = element->parent;
        }
        *around = element;
    });
    object.Method<13>([](HostObject&, Element* element, const char* selector, bool* matches) {
        *matches = Page::Matches(*element, selector);
    });
}

void FillEngine(HostObject& object)
{
    FillTreeMethods(object);
    object.Method<6>(
        [](HostObject& self, Element* element, const char* html, Number length, Number position) {
            PageOf(self).Change(element, {html, length}, position);
        });
    object.Method<7>(
        [](HostObject& self, Element* element, Wide, Number) { PageOf(self).Clear(element); });
    object.Method<8>([](HostObject&, Element* element, const char*, Wide value) {
        element->isVisible = std::u16string_view(value) == u"visible";
    });
    object.Method<9>([](HostObject&, Element* element, Number* state) { *state = element->state; });
    object.Method<10>([](HostObject&, Element* element, Number set, Number clear, Number) {
        element->state = (element->state | set) & ~clear;
    });
    object.Method<14>([](HostObject&, Element* element, const char*, Wide* value, Number* length) {
        *value = element->value.empty() ? nullptr : element->value.c_str();
        *length = static_cast<Number>(element->value.size());
    });
    object.Method<15>([](HostObject&, Element*, Number) {});
    object.Method<16>([](HostObject&, Element*, Number) {});
    object.Method<17>([](HostObject& self, Element* element, void* handler) {
        return PageOf(self).Attach(element, ModuleObject(handler));
    });
    object.Method<18>([](HostObject& self, Element* element) { PageOf(self).Remove(element); });
}

void FillCollection(HostObject& object)
{
    using Collector = void (*)(void* context, HostObject* view);
    object.Method<1>([](HostObject&, HostObject** view) { *view = nullptr; });
    object.Method<2>([](HostObject& self, Collector collector, void* context) {
        if (self.host->viewIsOpen) {
            collector(context, &self.host->Of("UIDocumentView"));
        }
    });
    object.Method<22>([](HostObject&, HostObject** view) { *view = nullptr; });
    object.Events<8, 11, 14, 17, 24, 27, 30, 33>();
}

void FillView(HostObject& object)
{
    object.Method<0>([](HostObject& self, HostObject** document) {
        *document = self.host->Of("BLDocument").Retained();
    });
    object.Method<1>([](HostObject&, bool* readOnly) { *readOnly = false; });
    object.Method<2>([](HostObject&, Number* flags) { *flags = 0; });
    object.Method<3>([](HostObject&, const void*) {});
    object.Method<4>([](HostObject&, Number, void*) {});
    object.Method<5>(
        [](HostObject&, Number, Number, Number, bool* permitted) { *permitted = true; });
    object.Method<8>([](HostObject&, Number) {});
    object.Method<9>([](HostObject&, Number) {});
    object.Method<10>([](HostObject&, Number, double* scale) { *scale = 1; });
    object.Method<11>([](HostObject&, Number, Number* degrees) { *degrees = 0; });
    object.Method<12>([](HostObject&, void*) {});
    object.Method<13>([](HostObject&, std::uint64_t* number) { *number = 1; });
    object.Events<6, 20, 25, 28, 42, 51, 54, 94, 99, 126, 182, 185, 188, 199>();
}

void FillDocument(HostObject& object)
{
    object.Method<0>([](HostObject&, std::int32_t* count) { *count = 1; });
    object.Method<1>([](HostObject&, Number index, void** page) {
        *page = index == 0 ? AcquireRecord(&g_page) : nullptr;
        return index == 0 ? kResultOk : kResultOutOfRange;
    });
    object.Method<2>([](HostObject&, Number command, const void*) {
        return command == AtomOf("Annot_Delete") ? kResultOk : kResultNotFound;
    });
    object.Events<39, 78>();
}

void FillUIEngine(HostObject& object)
{
    object.Method<0>([](HostObject& self, HostObject** resources) {
        *resources = self.host->Of("UIResources").Retained();
    });
    object.Method<4>([](HostObject& self, void* instance, HostObject** registration) {
        self.host->Library().instance = instance;
        *registration = self.host->Of("UIResourceRegistration").Retained();
    });
    object.Method<7>([](HostObject&, HostObject*) {});
}

void FillUIService(HostObject& object)
{
    object.Method<5>([](HostObject& self, HostObject** frame) {
        *frame = self.host->Of("UIMainFrame").Retained();
    });
    object.Method<12>([](HostObject& self, Number, HostObject** thread) {
        *thread = self.host->Of("UIThread").Retained();
    });
}

void FillLocale(HostObject& object)
{
    object.Method<8>([](HostObject&, Wide* text, Wide) { *text = u"a text"; });
    object.Method<9>([](HostObject&, Wide* text, Wide, Wide) { *text = u"a label"; });
}

constexpr HostInterface kInterfaces[] = {
    {"UIEngine", 8, true, FillUIEngine},
    {"UIResources", 1, false,
     [](HostObject& object) {
         object.Method<0>([](HostObject& self, Wide path, HostObject** resource) {
             *resource = self.host->HandOutResource(path);
         });
     }},
    {"UIResourceRegistration", 1, false, [](HostObject&) {}},
    {"UIService", 13, true, FillUIService},
    {"UIThread", 2, false,
     [](HostObject& object) {
         object.Method<1>([](HostObject& self, void (*run)(void*), void* record) {
             return self.host->Post(run, record);
         });
     }},
    {"UIWnd", 33, false, FillWindow},
    {"UIHtmlEngine", 19, false, FillEngine},
    {"UIMainFrame", 27, false, [](HostObject& object) { object.Events<25>(); }},
    {"UIDocumentsCollection", 35, false, FillCollection},
    {"UIDocumentView", 3, false,
     [](HostObject& object) {
         object.Method<2>([](HostObject& self, HostObject** view) {
             *view = self.host->Of("BLDocumentView").Retained();
         });
     }},
    {"BLDocumentView", 201, false, FillView},
    {"BLDocument", 80, false, FillDocument},
    {"BLService", 1, true,
     [](HostObject& object) {
         object.Method<0>([](HostObject& self, HostObject** navigator) {
             *navigator = self.host->Of("BLAnnotNavigator").Retained();
         });
     }},
    {"BLAnnotNavigator", 1, false,
     [](HostObject& object) {
         object.Method<0>([](HostObject& self, const void*, HostObject** highlight) {
             *highlight = self.host->Of("Highlight").Retained();
         });
     }},
    {"BLSelection", 1, false, [](HostObject&) {}},
    {"LocaleManager", 10, true, FillLocale},
    {"PDModelService", 1, true,
     [](HostObject& object) {
         object.Method<0>([](HostObject&, const void** table) {
             static const FunctionTable functions;
             *table = &functions;
         });
     }},
    {"Highlight", 1, false, [](HostObject&) {}},
    {"HostContext", 1, false, [](HostObject&) {}},
};

}  // namespace

std::span<const HostInterface> HostInterfaces()
{
    return kInterfaces;
}

void* TheAnnotation()
{
    return &g_annotation;
}

std::int32_t CountPdfReferences()
{
    return g_references;
}

}  // namespace Conformance
