#include "services/FailureLog.h"

#include "service-common/ServiceObjectException.h"

#include <utility>

namespace Workbench {

void FailureLog::Add(Failure failure)
{
    const std::lock_guard lock(mutex_);
    failures_.push_back(std::move(failure));
}

void FailureLog::Add(std::string_view where, const std::exception_ptr& exception)
{
    Failure failure;
    failure.where = where;
    try {
        std::rethrow_exception(exception);
    } catch (const ServiceObjectException& error) {
        failure.code = error.Code();
        failure.message = error.what();
    } catch (const std::exception& error) {
        failure.message = error.what();
    } catch (...) {
        failure.message = "an unknown exception";
    }
    Add(std::move(failure));
}

std::vector<Failure> FailureLog::Take()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(failures_, {});
}

std::string Describe(const Failure& failure)
{
    return failure.where + ": " + failure.message + " (code " + std::to_string(failure.code) + ")";
}

}  // namespace Workbench
