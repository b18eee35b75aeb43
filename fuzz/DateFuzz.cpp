// Any date record and any format: the text is empty where a field is out of range, and nothing
// worse happens. Input: the record's bytes, the time zone, then the format.

#include "AnnotDate.h"
#include "FuzzTarget.h"

#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

void SetTimeZone(unsigned number)
{
#if defined(_WIN32)
    static_cast<void>(number);
#else
    constexpr const char* kZones[] = {"UTC0", "EST5EDT,M3.2.0,M11.1.0", "<+14>-14", "<-12>12"};
    static unsigned present = std::size(kZones);
    if (number % std::size(kZones) != present) {
        present = number % std::size(kZones);
        setenv("TZ", kZones[present], 1);
        tzset();
    }
#endif
}

bool IsInCalendar(const _PDDateRec& date)
{
    const bool isLeap = date.year % 4 == 0 && (date.year % 100 != 0 || date.year % 400 == 0);
    const unsigned days[] = {31, isLeap ? 29U : 28U, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return date.year >= 1400 && date.year <= 9999 && date.month >= 1 && date.month <= 12 &&
           date.day >= 1 && date.day <= days[date.month - 1] && date.hour < 24 &&
           date.minute < 60 && date.second < 60;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    _PDDateRec date{};
    if (size < sizeof date) {
        return 0;
    }
    std::memcpy(&date, data, sizeof date);
    const std::string_view input = TextOf(data, size);
    InputReader reader(input.substr(sizeof date));
    SetTimeZone(reader.Byte());
    std::wstring text = L"former";
    WriteAnnotDate(date, Widened(reader.Rest()), text);
    if (!IsInCalendar(date) && !text.empty()) {
        EndWithFault("A date that no calendar has is shown.", input);
    }
    WriteAnnotDate(date, L"%Y-%m-%d %H:%M:%S", text);
    if (IsInCalendar(date) && text.size() != 19 && text != L"not-a-date-time") {
        EndWithFault("A date is not shown in the usual format.", input);
    }
    return 0;
}
