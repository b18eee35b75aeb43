#include "PublicLayout.h"

#include "pdf-library/PDFunctionTable.h"
#include "pdf-library/PDModelService.SO.h"
#include "platform/EmbeddedResources.h"
#include "service-common/EncodingConversion.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceProvider.h"
#include "ui-engine/BLDocument.SO.h"
#include "ui-engine/BLDocumentView.SO.h"
#include "ui-engine/BLService.SO.h"
#include "ui-engine/LocaleManager.SO.h"
#include "ui-engine/ModuleExports.h"
#include "ui-engine/UIDocumentsCollection.SO.h"
#include "ui-engine/UIEngine.SO.h"
#include "ui-engine/UIHandler.SO.h"
#include "ui-engine/UIHtmlEngine.SO.h"
#include "ui-engine/UIInplacePlugin.SO.h"
#include "ui-engine/UIMainFrame.SO.h"
#include "ui-engine/UIThreadDispatcher.h"
#include "ui-engine/UIWnd.SO.h"
#include "ui/UIDocumentPanelModel.SO.h"

#include <boost/core/demangle.hpp>
#include <boost/preprocessor/seq/for_each.hpp>
#include <boost/preprocessor/stringize.hpp>
#include <boost/preprocessor/variadic/to_seq.hpp>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace SdkLayout {

namespace {

template <class T>
std::string TypeText();

template <class R, class... Args>
std::string FunctionText(R (*)(Args...))
{
    std::string arguments;
    ((arguments += (arguments.empty() ? "" : ", ") + TypeText<Args>()), ...);
    return TypeText<R>() + "(" + arguments + ")";
}
template <class R, class... Args>
std::string FunctionText(R (*)(Args..., ...))
{
    std::string arguments;
    ((arguments += TypeText<Args>() + ", "), ...);
    return TypeText<R>() + "(" + arguments + "...)";
}

template <class T>
struct IsAtomic : std::false_type {
};
template <class T>
struct IsAtomic<std::atomic<T>> : std::true_type {
};

// A type as it crosses the interface: numbers by their widths, whatever a system calls them.
template <class T>
std::string TypeText()
{
    if constexpr (std::is_const_v<T>) {
        return "const " + TypeText<std::remove_const_t<T>>();
    } else if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
        return FunctionText(static_cast<std::add_pointer_t<std::remove_pointer_t<T>>>(nullptr));
    } else if constexpr (std::is_pointer_v<T>) {
        return TypeText<std::remove_pointer_t<T>>() + "*";
    } else if constexpr (std::is_void_v<T>) {
        return "void";
    } else if constexpr (std::is_same_v<T, bool>) {
        return "bool";
    } else if constexpr (std::is_same_v<T, char>) {
        return "char";
    } else if constexpr (std::is_same_v<T, char16_t>) {
        return "char16";
    } else if constexpr (std::is_same_v<T, wchar_t>) {
        return "wchar";
    } else if constexpr (std::is_arithmetic_v<T>) {
        return (std::is_floating_point_v<T> ? "f"
                : std::is_signed_v<T>       ? "i"
                                            : "u") +
               std::to_string(8 * sizeof(T));
    } else if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, std::wstring>) {
        return "string of " + TypeText<typename T::value_type>();
    } else if constexpr (IsAtomic<T>::value) {
        return TypeText<typename T::value_type>();
    } else {
        // By way of a pointer, as records of the other side are declared only.
        std::string name = boost::core::demangle(typeid(T*).name());
        name.resize(name.find_last_not_of(" *") + 1);
        return name;
    }
}

struct Field {
    const char* name;
    std::size_t offset;
    std::string type;
};

class Writer {
public:
    void Line(const std::string& key, const std::string& value)
    {
        text_ << key << ": " << value << "\n";
    }

    template <class I>
    void Interface()
    {
        SODetails::RequireCompleteCatalogue<I>();
        const std::string name = I::kName;
        Line("interface " + name, "id " + std::to_string(HashInterfaceName(I::kName)));
        Line("table " + name, Bytes(I::Catalogue::kMethodCount * kMethodEntrySize));
        I::Catalogue::ForEach([&]<class Entry>() {
            const std::string place = name + " " + std::to_string(Entry::kSlot);
            const std::string entry = std::string(Entry::kName) + " ";
            if constexpr (Entry::kSlotCount == 2) {
                Line("event " + place, entry + TypeText<typename Entry::Forwarder>());
            } else {
                Line("slot " + place, entry + TypeText<typename Entry::Function>());
            }
        });
    }

    void Struct(const std::string& name, std::size_t size, const std::vector<Field>& fields)
    {
        Line("struct " + name, Bytes(size));
        for (const Field& field : fields) {
            Line("field " + name + " " + std::to_string(field.offset),
                 field.name + (" " + field.type));
        }
    }

    std::string Text() const { return text_.str(); }

private:
    static std::string Bytes(std::size_t count) { return std::to_string(count) + " bytes"; }

    std::ostringstream text_;
};

#define LAYOUT_EACH(macro, data, ...)                                                              \
    BOOST_PP_SEQ_FOR_EACH(macro, data, BOOST_PP_VARIADIC_TO_SEQ(__VA_ARGS__))
#define LAYOUT_FIELD(r, type, field)                                                               \
    Field{BOOST_PP_STRINGIZE(field), offsetof(type, field), TypeText<decltype(type::field)>()},
#define LAYOUT_STRUCT(type, ...)                                                                   \
    writer.Struct(#type, sizeof(type), {LAYOUT_EACH(LAYOUT_FIELD, type, __VA_ARGS__)})
#define LAYOUT_CODE(r, writer, name)                                                               \
    writer.Line("code " + std::to_string(name), BOOST_PP_STRINGIZE(name));
#define LAYOUT_CONSTANT(r, writer, name)                                                           \
    writer.Line(BOOST_PP_STRINGIZE(constant name), std::to_string(name));
#define LAYOUT_ENUMERATOR(r, type, name)                                                           \
    writer.Line(BOOST_PP_STRINGIZE(constant type::name),                                           \
                                   std::to_string(static_cast<std::uint32_t>(type::name)));
#define LAYOUT_FUNCTION(r, writer, name)                                                           \
    writer.Line(BOOST_PP_STRINGIZE(function name), TypeText<decltype(name)>());

void WriteInterfaces(Writer& writer)
{
    writer.Interface<UIInplacePlugin>();
    writer.Interface<UIHandler>();
    writer.Interface<UIDocumentPanelModel>();
    writer.Interface<UIEngine>();
    writer.Interface<UIResourceRegistration>();
    writer.Interface<UIResources>();
    writer.Interface<UIResource>();
    writer.Interface<UIService>();
    writer.Interface<UIThread>();
    writer.Interface<UIWnd>();
    writer.Interface<UIHtmlEngine>();
    writer.Interface<UIMainFrame>();
    writer.Interface<UIDocumentFrame>();
    writer.Interface<UIDocumentsCollection>();
    writer.Interface<UIDocumentView>();
    writer.Interface<UIDocumentViewSbS>();
    writer.Interface<BLDocumentView>();
    writer.Interface<BLSelection>();
    writer.Interface<BLDocument>();
    writer.Interface<BLService>();
    writer.Interface<BLAnnotNavigator>();
    writer.Interface<LocaleManager>();
    writer.Interface<PDModelService>();
}

void WriteStructs(Writer& writer)
{
    LAYOUT_STRUCT(ServiceObject, interfaceId, methodTableSize, interfaceName, AddRef, Release,
                  GetRefCount, GetWeakReference, GetLastErrorInfo, CallMethodByName);
    LAYOUT_STRUCT(ErrorInfo, code, message, function, file, line);
    // Thrown through the interface.
    LAYOUT_STRUCT(ErrorRecord, code, message, function, file, line);
    writer.Struct("ServiceObjectException", sizeof(ServiceObjectException), {});
    LAYOUT_STRUCT(WeakReferenceFunctions, AddHolder, ReleaseHolder, GetHolderCount, IsAlive, Lock);
    LAYOUT_STRUCT(WeakReferenceRecord, functions, holderCount, object, spinLock);
    LAYOUT_STRUCT(ServiceObjectInfo, atom, reserved, name);
    LAYOUT_STRUCT(Platform::EmbeddedResource, type, name, data, size);
    LAYOUT_STRUCT(Platform::EmbeddedResourceTable, entries, count);
    // With a function wrapper inside, so that its offsets are those of a living one.
    const SODetails::PostedCall call{};
    const auto offset = [&call](const void* field) {
        return static_cast<std::size_t>(static_cast<const std::byte*>(field) -
                                        reinterpret_cast<const std::byte*>(&call));
    };
    writer.Struct("SODetails::PostedCall", sizeof call,
                  {{"tag", offset(&call.tag), TypeText<decltype(call.tag)>()},
                   {"size", offset(&call.size), TypeText<decltype(call.size)>()}});
    LAYOUT_STRUCT(UIInitBeginArguments, window, hostContext);
    LAYOUT_STRUCT(UIInitHtmlArguments, first, second);
    LAYOUT_STRUCT(UIInitHandlerArguments, handler);
    LAYOUT_STRUCT(UIGetUIModelArguments, model);
    LAYOUT_STRUCT(UIElement, handle, engine);
    LAYOUT_STRUCT(UIKeyEvent, target, kind, virtualKey, modifiers, handled);
    LAYOUT_STRUCT(UIBehaviourEvent, target, kind, handled);
    LAYOUT_STRUCT(BLAnnotCommandArguments, document, pageIndex, reserved, annotation);
    LAYOUT_STRUCT(BLGoToRequest, pageIndex, mode, target);
    LAYOUT_STRUCT(BLHighlightArguments, document, target, annotation, pageScale, pageRotation,
                  reserved);
    LAYOUT_STRUCT(_PDPageRange, count, reserved, pages);
    LAYOUT_STRUCT(_PDRect, left, bottom, right, top);
    LAYOUT_STRUCT(_PDDateRec, year, month, day, hour, minute, second, utcOffsetHours);
    LAYOUT_STRUCT(PDFunctionTable, size, version, PageAddRef, PageRelease, AnnotAddRef,
                  AnnotRelease, PageGetAnnotCount, PageGetAnnot, AnnotIsEqual, AnnotIsListed,
                  AnnotGetSubtype, AnnotGetContents, AnnotGetTitle, AnnotGetSubject,
                  AnnotGetCreationDate, AnnotGetModificationDate, AnnotGetRect);
}

void WriteNumbers(Writer& writer)
{
    LAYOUT_EACH(LAYOUT_CODE, writer, kResultOk, kResultDeclined, kResultNullPointer,
                kResultNotInitialized, kResultNullArgument, kResultWrongInterface,
                kResultDamagedTable, kResultUnexpected, kResultNotFound, kResultOutOfRange,
                kResultNotReported, kResultServiceNotInModule, kResultFactoryFailed,
                kResultNoPublicObjects, kResultServiceUnknown, kResultModuleNotFound,
                kResultFactoryNotFound, kResultTemplateFailed, kResultStorageDestroyed,
                kResultStaticDataIdMismatch)
    LAYOUT_EACH(LAYOUT_CONSTANT, writer, kMethodTableOffset, kMethodEntrySize,
                kImplausibleMethodTableSize, kPDFunctionTableMinimum, kAtomNone, kAtomUnresolved,
                kPDNoPage, kStateCurrent, kStateDisabled, kStateExpanded, kStateCollapsed,
                kUpdateMeasure, kEventGroupMouse, kEventGroupKeys, kEventGroupBehaviour, kKeyUp,
                kKeyDown, kKeyCharacter, kKeyEnter, kKeyPageUp, kKeyPageDown, kKeyEnd, kKeyHome,
                kKeyLeft, kKeyUpArrow, kKeyRight, kKeyDownArrow, kKeyDelete, kBehaviourClick,
                kBehaviourActivated, kGoToModeRectangle, kInteractionLocked,
                kPermissionSubjectAnnotation, kPermissionOperationDelete, kPermissionScopeUser)
    LAYOUT_EACH(LAYOUT_ENUMERATOR, HtmlPosition, kReplaceContent, kInsertFirst, kAppendLast,
                kReplaceWhole, kInsertBefore, kInsertAfter)
    LAYOUT_EACH(LAYOUT_ENUMERATOR, PDAnnotOperation, kAdded, kRemoved, kAppearanceChanged,
                kAboutToChange, kPropertiesChanged)
    LAYOUT_EACH(LAYOUT_ENUMERATOR, PDPageOperation, kInserted, kDeleted, kMoved, kRotated, kCropped)
}

}  // namespace

std::string PublicLayout()
{
    Writer writer;
    writer.Line("export ReflectServiceObjectInfo", TypeText<ReflectServiceObjectInfoExport>());
    writer.Line("export CreateServiceObject", TypeText<CreateServiceObjectExport>());
    writer.Line("export RegisterResources", TypeText<RegisterResourcesExport>());
    writer.Line("export UiDataEmbeddedResources",
                TypeText<Platform::EmbeddedResourceTable>() + ", on Linux alone");
    LAYOUT_EACH(LAYOUT_FUNCTION, writer, CalculateSequenceHash, VxGetAtomFromString,
                VxGetStringFromAtom, CreateSingletonStaticData, GetSingletonStaticData,
                IsSingletonStaticDataStorageAvailable, ServiceProviderGetServiceObject,
                VxConvertUnicodeToACP, VxConvertACPToUnicode)
    const std::uint32_t postedCall = SODetails::kPostedCallTag;
    const auto tag = [](const void* bytes) {
        return std::string(static_cast<const char*>(bytes), 4);
    };
    writer.Line("tag kEndOfTableTag", tag(kEndOfTableTag));
    writer.Line("tag kEndOfObjectTag", tag(kEndOfObjectTag));
    writer.Line("tag kPostedCallTag", tag(&postedCall));
    writer.Line("callback PDTextSink", TypeText<PDTextSink>());
    using Event = SODetails::EventDeclaration<ServiceObject, 0, void()>;
    writer.Line("callback EventDeclaration::Subscribe", TypeText<Event::Subscribe>());
    writer.Line("callback EventDeclaration::Unsubscribe", TypeText<Event::Unsubscribe>());
    WriteNumbers(writer);
    WriteInterfaces(writer);
    WriteStructs(writer);
    return writer.Text();
}

}  // namespace SdkLayout
