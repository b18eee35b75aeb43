// Machinery of the interface adapters: turns member functions of a class into the static thunks of
// its method table. An adapter (CppUIHandlerBase and its like) derives its table from
// ServiceObjectBase, declares one `<Method>Impl` per slot and hands the list to FillTable.
#pragma once

#include "service-common/ErrorRecord.h"
#include "service-common/ServiceObjectException.h"
#include "service-common/ServiceObjectImplementation.h"

#include <concepts>
#include <exception>
#include <string>
#include <tuple>
#include <utility>

namespace SODetails {

// What every service object of the module shares: how its thunks report a code.
struct ServiceObjectTraits {
    static ResultCode Report(ResultCode code, const char* interfaceName, const char* methodName,
                             const char* function, const char* file, std::uint32_t line)
    {
        return ReportMethodResult(code, interfaceName, methodName, function, file, line);
    }
};

// Exceptions pass through the thunk to the host.
struct PassExceptions {
    template <class Body>
    static ResultCode Run(Body&& body)
    {
        return body();
    }
};

// No exception leaves the thunk: ServiceObjectException becomes its code, any other becomes
// kResultUnexpected, and so does a code that would read as success.
struct ContainExceptions {
    template <class Body>
    static ResultCode Run(Body&& body) noexcept
    {
        try {
            return body();
        } catch (const ServiceObjectException& failure) {
            return IsExpectedResult(failure.Code()) ? kResultUnexpected : failure.Code();
        } catch (...) {
            return kResultUnexpected;
        }
    }
};

// Full name of a thunk as error records tell it, with every compiler alike:
// "SOImpl::CppUIHandlerBase<class Name,struct
// SODetails::ServiceObjectTraits>::AttachedImpl::staticF". `typeName` is the class's as run-time
// type information has it.
std::string ThunkName(const char* interfaceName, const char* typeName, const char* methodName);

// One slot: `Impl` provides `static ResultCode Unpack(T& object, arguments...)`, which checks the
// pointers that the host must give, calls the member function and stores its outputs.
template <class Impl, class T, class Traits, class M, class Exceptions,
          class Function = typename M::Function>
struct MethodThunk;

template <class Impl, class T, class Traits, class M, class Exceptions, class I, class... Args>
struct MethodThunk<Impl, T, Traits, M, Exceptions, ResultCode (*)(I*, Args...)> {
    using Method = M;

    static ResultCode staticF(I* self, Args... arguments)
    {
        static_assert(
            requires(T & object, Args... values) {
                {
                    Impl::Unpack(object, values...)
                    } -> std::same_as<ResultCode>;
            },
            "the class does not offer this method with the interface's arguments and a result "
            "code");
        T& object = *T::FromInterface(self);
        const ResultCode code =
            Exceptions::Run([&]() -> ResultCode { return Impl::Unpack(object, arguments...); });
        if (IsExpectedResult(code)) {
            return code;
        }
        std::string function;  // stays empty when memory is short
        try {
            function = ThunkName(I::kName, TypeName<T>(), M::kName);
        } catch (const std::exception&) {
        }
        return Traits::Report(code, I::kName, M::kName, function.c_str(), I::kHeader, M::kLine);
    }

    static ResultCode CallWithArguments(ServiceObject* self, ArgumentReader& reader)
    {
        // Braces: the arguments are read from left to right.
        const std::tuple<Args...> values{reader.Next<Args>()...};
        return std::apply(
            [self](Args... arguments) { return staticF(static_cast<I*>(self), arguments...); },
            values);
    }

    // Enters the thunk in the module's list of named methods, once.
    static void RegisterName()
    {
        static NamedMethod record{nullptr, 0, TypeId<T>(), &CallWithArguments};
        static const bool done = [] {
            RegisterNamedMethod(record, M::kName);
            return true;
        }();
        static_cast<void>(done);
    }
};

// Base of an adapter for interface `I` and class `T`.
template <class T, class Traits, class I>
class InterfaceAdapter : public ServiceObjectBase<I> {
public:
    // The object that an interface pointer belongs to.
    static T* FromInterface(ServiceObject* header) noexcept
    {
        return static_cast<T*>(ServiceObjectBase<I>::FromHeader(header));
    }

protected:
    InterfaceAdapter() = default;
    ~InterfaceAdapter() = default;

    // Fills one slot per `Impl`.
    template <class... Impl>
    void FillTable()
    {
        static_assert(sizeof...(Impl) == I::Catalogue::kMethodCount,
                      "the adapter does not fill every slot of its interface");
        (FillSlot<Impl>(), ...);
    }

private:
    template <class Impl>
    void FillSlot()
    {
        this->template SetMethod<typename Impl::Method>(&Impl::staticF);
        Impl::RegisterName();
    }
};

}  // namespace SODetails
