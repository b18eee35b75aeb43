// The text of an annotation's date: local time, by a format, or nothing.
#include "PanelFixture.h"

#include "CommentsContainerHandler.h"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <cstdlib>
#include <ctime>
#include <locale>
#include <optional>
#include <random>
#include <sstream>

namespace PanelTests {
namespace {

constexpr const wchar_t* kFormat = L"%Y-%m-%d %H:%M:%S";

// The computer's time zone, for as long as this lives.
class TimeZone {
public:
    explicit TimeZone(const std::string& zone)
    {
        if (const char* former = std::getenv("TZ")) {
            former_ = former;
        }
        Set(zone);
    }
    ~TimeZone() { Set(former_); }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void Set(const std::optional<std::string>& zone)
    {
#if defined(_WIN32)
        _putenv_s("TZ", zone.value_or("").c_str());
        _tzset();
#else
        zone ? setenv("TZ", zone->c_str(), 1) : unsetenv("TZ");
        tzset();
#endif
    }

    std::optional<std::string> former_;
};

constexpr const char* kUtc = "UTC0";
#if !defined(_WIN32)  // other rules for the changes of a year than the C library's there
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kIndia = "IST-5:30";
constexpr const char* kSamoa = "<+14>-14";
#endif

TEST(Dates, AreLocalTimesOrNothing)
{
    struct Row {
        _PDDateRec date;
        const char* zone;
        const wchar_t* format;
        const wchar_t* expected;
    };
    const Row rows[] = {
        // No date, and fields that no calendar or clock shows.
        {{0, 5, 1, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 0, 1, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 13, 1, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 5, 0, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 5, 32, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 4, 31, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 2, 29, 10, 0, 0, 0}, kUtc, kFormat, L"2024-02-29 10:00:00"},
        {{2023, 2, 29, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{2000, 2, 29, 0, 0, 0, 0}, kUtc, kFormat, L"2000-02-29 00:00:00"},
        {{2100, 2, 29, 0, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 5, 1, 23, 59, 59, 0}, kUtc, kFormat, L"2024-05-01 23:59:59"},
        {{2024, 5, 1, 25, 0, 0, 0}, kUtc, kFormat, L""},
        {{2024, 5, 1, 10, 60, 0, 0}, kUtc, kFormat, L""},
        {{2024, 5, 1, 10, 0, 60, 0}, kUtc, kFormat, L""},
        {{1399, 5, 1, 10, 0, 0, 0}, kUtc, kFormat, L""},
        {{65535, 5, 1, 10, 0, 0, 0}, kUtc, kFormat, L""},
        // The offset is taken off, in whole hours.
        {{2024, 5, 1, 10, 30, 15, 2}, kUtc, kFormat, L"2024-05-01 08:30:15"},
        {{2024, 5, 1, 10, 30, 15, -2}, kUtc, kFormat, L"2024-05-01 12:30:15"},
        {{2024, 1, 1, 0, 30, 0, 1}, kUtc, kFormat, L"2023-12-31 23:30:00"},
        {{2023, 12, 31, 23, 30, 0, -1}, kUtc, kFormat, L"2024-01-01 00:30:00"},
        {{2024, 3, 1, 0, 0, 0, 1}, kUtc, kFormat, L"2024-02-29 23:00:00"},
        {{2024, 5, 1, 10, 0, 0, 23}, kUtc, kFormat, L"2024-04-30 11:00:00"},
        {{2024, 5, 1, 10, 0, 0, -32768}, kUtc, kFormat, L"2028-01-26 18:00:00"},
        {{2024, 5, 1, 10, 0, 0, 32767}, kUtc, kFormat, L"2020-08-05 03:00:00"},
        // What cannot be converted to local time is no time, and says so.
        {{1969, 12, 31, 23, 59, 59, 0}, kUtc, kFormat, L"not-a-date-time"},
        {{1970, 1, 1, 0, 0, 0, 1}, kUtc, kFormat, L"not-a-date-time"},
        {{1970, 1, 1, 0, 0, 0, 0}, kUtc, kFormat, L"1970-01-01 00:00:00"},
        {{1400, 1, 1, 0, 0, 0, 0}, kUtc, kFormat, L"not-a-date-time"},
        // Formats: directives that are written directly, and all the others.
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"%d.%m.%Y, %H:%M:%S", L"01.05.2024, 09:08:07"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"%S%S%Y\x416", L"07072024\x416"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"no date", L"no date"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"", L""},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"%A, %d %B", L"Wednesday, 01 May"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"%a %b %y", L"Wed May 24"},
        {{2024, 5, 1, 21, 8, 7, 0}, kUtc, L"%I:%M %p", L"09:08 PM"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"%j", L"122"},
        {{2024, 5, 1, 9, 8, 7, 0}, kUtc, L"100%% %Y", L"100% 2024"},
        {{2024, 13, 1, 9, 8, 7, 0}, kUtc, L"%A", L""},
#if !defined(_WIN32)
        {{2024, 1, 15, 12, 0, 0, 0}, kNewYork, kFormat, L"2024-01-15 07:00:00"},
        {{2024, 7, 15, 12, 0, 0, 0}, kNewYork, kFormat, L"2024-07-15 08:00:00"},
        {{2024, 1, 1, 3, 0, 0, 0}, kNewYork, kFormat, L"2023-12-31 22:00:00"},
        {{2024, 7, 15, 12, 0, 0, -7}, kNewYork, kFormat, L"2024-07-15 15:00:00"},
        {{2024, 3, 10, 6, 59, 59, 0}, kNewYork, kFormat, L"2024-03-10 01:59:59"},
        {{2024, 3, 10, 7, 0, 0, 0}, kNewYork, kFormat, L"2024-03-10 03:00:00"},
        {{2024, 11, 3, 5, 59, 59, 0}, kNewYork, kFormat, L"2024-11-03 01:59:59"},
        {{2024, 11, 3, 6, 0, 0, 0}, kNewYork, kFormat, L"2024-11-03 01:00:00"},
        {{2024, 3, 31, 0, 59, 59, 0}, kBerlin, kFormat, L"2024-03-31 01:59:59"},
        {{2024, 3, 31, 1, 0, 0, 0}, kBerlin, kFormat, L"2024-03-31 03:00:00"},
        {{2024, 10, 27, 1, 0, 0, 0}, kBerlin, kFormat, L"2024-10-27 02:00:00"},
        {{2024, 5, 1, 20, 0, 0, 0}, kIndia, kFormat, L"2024-05-02 01:30:00"},
        {{2023, 12, 31, 10, 0, 0, 0}, kSamoa, kFormat, L"2024-01-01 00:00:00"},
        {{1970, 1, 1, 0, 0, 0, 0}, kNewYork, kFormat, L"1969-12-31 19:00:00"},
        {{2040, 7, 1, 12, 0, 0, 0}, kBerlin, kFormat, L"2040-07-01 14:00:00"},
        {{9999, 12, 31, 12, 0, 0, 0}, kUtc, kFormat, L"9999-12-31 12:00:00"},
        {{9999, 12, 31, 23, 0, 0, 0}, kSamoa, kFormat, L"not-a-date-time"},
#endif
    };
    for (const Row& row : rows) {
        const TimeZone zone(row.zone);
        EXPECT_EQ(CommentsContainerHandler::FormatAnnotDate(row.date, row.format), row.expected)
            << row.date.year << "-" << row.date.month << "-" << row.date.day << " " << row.date.hour
            << ":" << row.date.minute << " " << row.date.utcOffsetHours << " " << row.zone;
    }
}

TEST(Dates, AreWrittenAsTheOutputFacetWritesThem)
{
    namespace pt = boost::posix_time;
    const TimeZone utc(kUtc);
    const std::wstring formats[] = {kFormat, L"%d.%m.%Y %H:%M", L"%Y%m%d%H%M%S", L"%S %S",
                                    L"%H h", L"\x65E5 %d",      L"text",         L"%m/%d",
                                    L"%",    L"%Y %",           L"%Q %Y",        L"%-d %Y"};
    std::mt19937 random(20240501);
    const auto number = [&](unsigned first, unsigned last) {
        return static_cast<std::uint16_t>(std::uniform_int_distribution(first, last)(random));
    };
    for (int round = 0; round < 5000; ++round) {
        const _PDDateRec date{number(1970, 2037),
                              number(1, 12),
                              number(1, 28),
                              number(0, 23),
                              number(0, 59),
                              number(0, 59),
                              0};
        const std::wstring& format = formats[number(0, std::size(formats) - 1)];
        std::wostringstream stream;
        stream.imbue(std::locale(stream.getloc(), new pt::wtime_facet(format.c_str())));
        stream << pt::ptime(boost::gregorian::date(date.year, date.month, date.day),
                            pt::time_duration(date.hour, date.minute, date.second));
        ASSERT_EQ(CommentsContainerHandler::FormatAnnotDate(date, format), stream.str())
            << "round " << round;
    }
}

}  // namespace
}  // namespace PanelTests
