#include "ui-engine/ElementAccess.h"

#include "service-common/WideText.h"
#include "ui-engine/internal/EventTask.h"

#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace {

using Engine = UIHtmlEngine;

// A call of the engine that is not checked, but counted when it fails.
template <class M, class... Args>
CallResult CallCounted(UIHtmlEngine* engine, Args... arguments)
{
    const CallResult result = CallMethodUnchecked<M>(engine, arguments...);
    if (!IsExpectedResult(result.code)) {
        CountFailedCall();
    }
    return result;
}

bool BeginUse(UIHtmlEngine* engine, HtmlElementHandle element)
{
    return element != nullptr && CallCounted<Engine::UseElement>(engine, element).Succeeded();
}

// Called by destructors: nothing is thrown.
void EndUse(UIHtmlEngine* engine, HtmlElementHandle element) noexcept
{
    SODetails::RunEventTask("ElementReference::EndUse",
                            [&] { CallMethodUnchecked<Engine::UnuseElement>(engine, element); });
}

std::uint32_t LengthForEngine(std::size_t length)
{
    if (length > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the HTML engine takes no more than 4 GiB at once");
    }
    return static_cast<std::uint32_t>(length);
}

struct Collected {
    std::vector<UIElement> elements;
    bool failed = false;  // not all could be kept
};

// Collector of UIWnd::SelectElements. An element whose use the engine refuses keeps its place with
// a null handle. Throws nothing through the host.
void Collect(void* context, HtmlElementHandle handle, UIHtmlEngine* engine) noexcept
{
    auto& collected = *static_cast<Collected*>(context);
    try {
        collected.elements.push_back({nullptr, engine});
        if (BeginUse(engine, handle)) {
            collected.elements.back().handle = handle;
        }
    } catch (...) {
        collected.failed = true;
    }
}

}  // namespace

ElementSet::ElementSet(std::vector<UIElement> elements, WeakServiceObjectPtr<UIWnd> window)
    : elements_(std::move(elements)), window_(std::move(window))
{
}

ElementSet::~ElementSet()
{
    ForEach([](const UIElement& element) { EndUse(element.engine, element.handle); });
}

template <class Operation>
const ElementSet& ElementSet::ForEach(Operation operation) const
{
    if (elements_.empty()) {
        return *this;
    }
    const auto window = window_.Lock();
    if (window) {
        for (const UIElement& element : elements_) {
            if (element.handle != nullptr && element.engine != nullptr) {
                operation(element);
            }
        }
    }
    return *this;
}

const ElementSet& ElementSet::Collapse() const
{
    return SetVisibility(u"collapse");
}

const ElementSet& ElementSet::SetVisibility(const char16_t* value) const
{
    return ForEach([value](const UIElement& element) {
        CallCounted<Engine::SetStyleAttribute>(element.engine, element.handle, "visibility", value);
    });
}

const ElementSet& ElementSet::ChangeState(std::uint32_t bitsToSet, std::uint32_t bitsToClear) const
{
    return ForEach([=](const UIElement& element) {
        CallCounted<Engine::SetState>(element.engine, element.handle, bitsToSet, bitsToClear, 1u);
    });
}

const ElementSet& ElementSet::SetHtml(const std::uint8_t* html, std::uint32_t length,
                                      HtmlPosition position) const
{
    return ForEach([=](const UIElement& element) {
        if (html == nullptr || length == 0) {
            CallCounted<Engine::SetText>(element.engine, element.handle, u"", 0u);
        } else {
            CallCounted<Engine::SetHtml>(element.engine, element.handle, html, length, position);
        }
    });
}

const ElementSet& ElementSet::Update(std::uint32_t flags) const
{
    return ForEach([flags](const UIElement& element) {
        CallMethodUnchecked<Engine::UpdateElement>(element.engine, element.handle, flags);
    });
}

void ElementSet::Delete() const
{
    ForEach([](const UIElement& element) {
        CallMethod<Engine::DeleteElement>(element.engine, element.handle);
    });
}

bool ElementSet::AllInState(std::uint32_t bits) const
{
    bool all = true;
    ForEach([&](const UIElement& element) {
        if (all) {
            std::uint32_t state = 0;
            CallCounted<Engine::GetState>(element.engine, element.handle, &state);
            all = (state & bits) == bits;
        }
    });
    return all;
}

ElementReference::ElementReference(const UIElement& element,
                                   const WeakServiceObjectPtr<UIWnd>& window)
{
    const auto held = window.Lock();
    if (!held || element.handle == nullptr) {
        return;
    }
    window_ = WeakServiceObjectPtr<UIWnd>(held.Get());
    if (window_.IsEmpty()) {  // the use could not be ended
        CountFailedCall();
    } else if (BeginUse(element.engine, element.handle)) {
        element_ = element.handle;
        engine_ = element.engine;
    } else {
        window_.Reset();
    }
}

ElementReference::ElementReference(const ElementReference& other)
    : ElementReference(other.AsElement(), other.window_)
{
}

ElementReference::ElementReference(ElementReference&& other) noexcept
    : element_(std::exchange(other.element_, nullptr)),
      engine_(std::exchange(other.engine_, nullptr)),
      window_(std::move(other.window_))
{
}

ElementReference& ElementReference::operator=(ElementReference other) noexcept
{
    std::swap(element_, other.element_);
    std::swap(engine_, other.engine_);
    WeakServiceObjectPtr<UIWnd> window = std::move(window_);
    window_ = std::move(other.window_);
    other.window_ = std::move(window);
    return *this;
}

ElementReference::~ElementReference()
{
    const auto window = Lock();
    if (window) {
        EndUse(engine_, element_);
    }
}

BasicServiceObjectPtr<UIWnd> ElementReference::Lock() const
{
    return element_ == nullptr ? nullptr : window_.Lock();
}

ElementReference ElementReference::SameWindow(HtmlElementHandle handle) const
{
    return ElementReference({handle, engine_}, window_);
}

ElementSet ElementReference::SelectAll(const char* selector) const
{
    const auto window = Lock();
    if (!window || engine_ == nullptr || selector == nullptr || *selector == '\0') {
        return {};
    }
    // The set ends the uses that were begun when the host fails midway.
    ElementSet set({}, WeakServiceObjectPtr<UIWnd>::Require(window.Get()));
    Collected collected;
    const auto result = CallMethodUnchecked<UIWnd::SelectElements>(
        window.Get(), element_, selector, &Collect, static_cast<void*>(&collected));
    set.elements_ = std::move(collected.elements);
    if (result.called) {
        CheckServiceCall(window.Get(), result.code);
    }
    if (collected.failed) {
        throw std::bad_alloc();
    }
    return set;
}

ElementReference ElementReference::SelectFirst(const char* selector) const
{
    const auto window = Lock();
    HtmlElementHandle found = nullptr;
    if (window) {
        CallMethod<Engine::SelectFirst>(engine_, element_, selector, &found);
    }
    return SameWindow(found);
}

ElementReference ElementReference::Enclosing(const char* selector) const
{
    const auto window = Lock();
    HtmlElementHandle found = nullptr;
    if (window) {
        CallMethod<Engine::SelectEnclosing>(engine_, element_, selector, &found);
    }
    return SameWindow(found);
}

bool ElementReference::Matches(const char* selector) const
{
    const auto window = Lock();
    bool matches = false;
    if (window) {
        CallMethod<Engine::TestSelector>(engine_, element_, selector, &matches);
    }
    return matches;
}

ElementReference ElementReference::Parent() const
{
    const auto window = Lock();
    HtmlElementHandle parent = nullptr;
    if (window) {
        CallMethod<Engine::GetParent>(engine_, element_, &parent);
    }
    return SameWindow(parent);
}

ElementReference ElementReference::NextSibling() const
{
    return Sibling(true);
}

ElementReference ElementReference::PreviousSibling() const
{
    return Sibling(false);
}

ElementReference ElementReference::Sibling(bool next) const
{
    const auto window = Lock();
    if (!window) {
        return {};
    }
    std::uint32_t index = 0;
    const bool known = CallMethod<Engine::GetIndex>(engine_, element_, &index).Succeeded();
    const ElementReference parent = Parent();
    if (!known || !parent) {
        return {};
    }
    std::uint32_t count = 0;
    CallMethod<Engine::GetChildCount>(engine_, parent.element_, &count);
    const std::uint32_t wanted = next ? index + 1 : index - 1;  // wraps below 0, out of range then
    if (wanted >= count) {
        return {};
    }
    HtmlElementHandle sibling = nullptr;
    CallMethod<Engine::GetNthChild>(engine_, parent.element_, wanted, &sibling);
    return SameWindow(sibling);
}

std::wstring ElementReference::Attribute(const char* name, bool* present) const
{
    const auto window = Lock();
    const char16_t* value = nullptr;
    std::uint32_t length = 0;
    if (window) {
        CallMethod<Engine::GetAttribute>(engine_, element_, name, &value, &length);
    }
    if (present != nullptr) {
        *present = value != nullptr;
    }
    return value == nullptr ? std::wstring() : FromUtf16(std::u16string_view(value, length));
}

std::uint32_t ElementReference::State() const
{
    const auto window = Lock();
    std::uint32_t state = 0;
    if (window) {
        CallMethod<Engine::GetState>(engine_, element_, &state);
    }
    return state;
}

void ElementReference::SetState(std::uint32_t bitsToSet, std::uint32_t bitsToClear) const
{
    const auto window = Lock();
    if (window) {
        CallCounted<Engine::SetState>(engine_, element_, bitsToSet, bitsToClear, 1u);
    }
}

void ElementReference::SetStyle(const char* name, const char16_t* value) const
{
    const auto window = Lock();
    if (window) {
        CallCounted<Engine::SetStyleAttribute>(engine_, element_, name, value);
    }
}

void ElementReference::SetHtml(std::string_view utf8, HtmlPosition position) const
{
    const auto window = Lock();
    if (!window) {
        return;
    }
    if (utf8.empty()) {
        if (position == HtmlPosition::kReplaceContent) {
            SetText({});
        }
        return;
    }
    CallMethod<Engine::SetHtml>(engine_, element_,
                                reinterpret_cast<const std::uint8_t*>(utf8.data()),
                                LengthForEngine(utf8.size()), position);
}

void ElementReference::SetText(std::wstring_view text) const
{
    const auto window = Lock();
    if (window) {
        const std::u16string units = ToUtf16(text);
        CallMethod<Engine::SetText>(engine_, element_, units.c_str(),
                                    LengthForEngine(units.size()));
    }
}

void ElementReference::Update(std::uint32_t flags) const
{
    const auto window = Lock();
    if (window) {
        CallMethod<Engine::UpdateElement>(engine_, element_, flags);
    }
}

void ElementReference::ScrollIntoView() const
{
    const auto window = Lock();
    if (window) {
        SODetails::RunEventTask("ElementReference::ScrollIntoView",
                                [&] { CallMethod<Engine::ScrollIntoView>(engine_, element_, 0u); });
    }
}

void ElementReference::AttachHandler(UIHandler* handler) const
{
    const auto window = Lock();
    if (window) {
        CallMethod<Engine::AttachHandler>(engine_, element_, handler);
    }
}

void ElementReference::Delete() const
{
    const auto window = Lock();
    if (window) {
        CallMethod<Engine::DeleteElement>(engine_, element_);
    }
}
