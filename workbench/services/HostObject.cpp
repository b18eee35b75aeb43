#include "services/HostObject.h"

#include "service-common/UnicodeText.h"
#include "service-common/WideText.h"

namespace Workbench {

namespace {

std::wstring Widened(std::string_view text)
{
    return FromUtf16(UnicodeText::ToUtf16(text));
}

}  // namespace

void FailCall(ResultCode code, std::string_view message)
{
    ErrorRecord record;
    record.code = code;
    record.message = Widened(message);
    throw ServiceObjectException(std::move(record));
}

ResultCode Details::RecordCurrentException(const char* interfaceName, const char* methodName,
                                           const char* header, unsigned line) noexcept
{
    try {
        ErrorRecord record;
        try {
            throw;
        } catch (const ServiceObjectException& exception) {
            record = exception.Record();
        } catch (const std::exception& exception) {
            record.code = kResultUnexpected;
            record.message = Widened(exception.what());
        } catch (...) {
            record.code = kResultUnexpected;
            record.message = L"an unknown exception";
        }
        if (record.function.empty()) {
            record.function = std::string(interfaceName) + "::" + methodName;
            record.file = header;
            record.line = line;
        }
        const ResultCode code = record.code;
        SetThreadLastError(std::move(record));
        return code;
    } catch (...) {  // no memory for the record
        return kResultUnexpected;
    }
}

}  // namespace Workbench
