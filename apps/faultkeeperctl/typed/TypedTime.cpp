#include "faultkeeperctl/typed/TypedTime.h"

#include "common/text/TypedText.h"
#include "faultkeeperctl/Settings.h"
#include "faultkeeperctl/text/TimeText.h"

#include <Core/Time.h>

#include <cstddef>
#include <ctime>

namespace Faultkeeper::Apps
{

namespace
{
constexpr std::int64_t kSecond = 1000000000;
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2261; // later ones are not to be told in nanoseconds
constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;
constexpr int kSecondsPerDay = 86400;
constexpr int kFractionDigits = 9;
constexpr int kMostDigits = 9; // of a number that says how long ago
constexpr int kMillisecondDigits = 3;
constexpr int kLocal = -1000000;

/// A time taken apart; what was not given is as at its beginning.
struct SClock
{
    int year = kFirstYear;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    std::int64_t fraction = 0; // nanoseconds
    int zone = kLocal;         // seconds east of Greenwich
    std::int64_t length = 0;   // nanoseconds, besides these, which need not last as long as others:
    int months = 0;
    int days = 0;
};

/// Reads a text from its beginning to its end.
class CCursor
{
public:
    explicit CCursor(const std::string& text) : m_text(text) {}

    bool AtEnd() const { return m_at == m_text.size(); }
    char Next() const { return AtEnd() ? '\0' : m_text[m_at]; }

    bool Take(char c)
    {
        if (AtEnd() || m_text[m_at] != c)
            return false;
        ++m_at;
        return true;
    }

    bool TakeDigit(int& digit)
    {
        if (Next() < '0' || Next() > '9')
            return false;
        digit = m_text[m_at++] - '0';
        return true;
    }

    /// A number of exactly so many digits, within a range.
    bool Number(int digits, int least, int most, int& number)
    {
        int read = 0;
        int digit = 0;
        for (int i = 0; i < digits; ++i)
        {
            if (!TakeDigit(digit))
                return false;
            read = read * 10 + digit;
        }
        number = read;
        return read >= least && read <= most;
    }

private:
    const std::string& m_text;
    std::size_t m_at = 0;
};

int DaysIn(int month, int year)
{
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return kDays[month - 1] + (month == 2 && leap ? 1 : 0);
}

bool ReadDate(CCursor& cursor, SClock& clock)
{
    if (!cursor.Number(4, kFirstYear, kLastYear, clock.year) || !cursor.Take('-') ||
        !cursor.Number(2, 1, 12, clock.month))
        return false;
    clock.months = cursor.AtEnd() ? 1 : 0;
    clock.days = 1 - clock.months;
    return cursor.AtEnd() ||
           (cursor.Take('-') && cursor.Number(2, 1, DaysIn(clock.month, clock.year), clock.day));
}

bool ReadFraction(CCursor& cursor, SClock& clock)
{
    int digit = 0;
    clock.length = kSecond;
    for (int i = 0; i < kFractionDigits && cursor.TakeDigit(digit); ++i)
    {
        clock.length /= 10;
        clock.fraction += digit * clock.length;
    }
    return clock.length < kSecond;
}

bool ReadTimeOfDay(CCursor& cursor, SClock& clock)
{
    clock.days = 0;
    clock.length = kSecondsPerHour * kSecond;
    if (!cursor.Number(2, 0, 23, clock.hour))
        return false;
    if (!cursor.Take(':'))
        return true;
    clock.length = kSecondsPerMinute * kSecond;
    if (!cursor.Number(2, 0, 59, clock.minute))
        return false;
    if (!cursor.Take(':'))
        return true;
    clock.length = kSecond;
    return cursor.Number(2, 0, 59, clock.second) && (!cursor.Take('.') || ReadFraction(cursor, clock));
}

bool ReadZone(CCursor& cursor, SClock& clock)
{
    if (cursor.AtEnd())
        return true;
    clock.zone = 0;
    if (cursor.Take('Z'))
        return true;
    const int sign = cursor.Next() == '-' ? -1 : 1;
    int hours = 0;
    int minutes = 0;
    if ((!cursor.Take('-') && !cursor.Take('+')) || !cursor.Number(2, 0, 23, hours))
        return false;
    const bool colon = cursor.Take(':');
    if ((colon || !cursor.AtEnd()) && !cursor.Number(2, 0, 59, minutes))
        return false;
    clock.zone = sign * (hours * kSecondsPerHour + minutes * kSecondsPerMinute);
    return true;
}

bool ReadClock(const std::string& typed, SClock& clock)
{
    CCursor cursor(typed);
    if (!ReadDate(cursor, clock))
        return false;
    if (cursor.AtEnd())
        return true;
    return (cursor.Take('T') || cursor.Take(' ')) && ReadTimeOfDay(cursor, clock) &&
           ReadZone(cursor, clock) && cursor.AtEnd();
}

std::int64_t SecondsOf(const SClock& clock)
{
    if (clock.zone == kLocal)
    {
        struct tm local = {};
        local.tm_year = clock.year - 1900;
        local.tm_mon = clock.month - 1;
        local.tm_mday = clock.day;
        local.tm_hour = clock.hour;
        local.tm_min = clock.minute;
        local.tm_sec = clock.second;
        local.tm_isdst = -1;
        return std::mktime(&local);
    }
    std::int64_t days = 0;
    for (int year = kFirstYear; year < clock.year; ++year)
        days += 337 + DaysIn(2, year);
    for (int month = 1; month < clock.month; ++month)
        days += DaysIn(month, clock.year);
    days += clock.day - 1;
    const int ofDay = clock.hour * kSecondsPerHour + clock.minute * kSecondsPerMinute + clock.second;
    return days * kSecondsPerDay + ofDay - clock.zone;
}

// Not every month is as long as another one, nor is every day.
STypedTime Lasting(const SClock& clock)
{
    SClock after = clock;
    after.month += clock.months;
    after.day += clock.days;
    return {SecondsOf(clock) * kSecond + clock.fraction,
            SecondsOf(after) * kSecond + clock.fraction + clock.length - 1};
}

int SecondsOfUnit(char unit)
{
    switch (unit)
    {
    case 's':
        return 1;
    case 'm':
        return kSecondsPerMinute;
    case 'h':
        return kSecondsPerHour;
    case 'd':
        return kSecondsPerDay;
    default:
        return 0;
    }
}

// "1h30m"
bool ReadAge(const std::string& typed, std::int64_t& seconds)
{
    CCursor cursor(typed);
    seconds = 0;
    do
    {
        std::int64_t number = 0;
        int digit = 0;
        int digits = 0;
        for (; cursor.TakeDigit(digit); ++digits)
            number = digits < kMostDigits ? number * 10 + digit : number;
        const char unit = cursor.Next();
        if (digits == 0 || digits > kMostDigits || SecondsOfUnit(unit) == 0 || typed.size() > 100)
            return false;
        cursor.Take(unit);
        seconds += number * SecondsOfUnit(unit);
    } while (!cursor.AtEnd());
    return true;
}
} // namespace

bool ParseTime(const std::string& typed, std::int64_t now, STypedTime& time, std::string& problem)
{
    std::int64_t age = 0;
    SClock clock;
    if (typed == "now" || ReadAge(typed, age))
    {
        if (age > now / kSecond)
        {
            problem = QuotedTyped(typed) + " ago was before 1970";
            return false;
        }
        time.first = time.last = now - age * kSecond;
        return true;
    }
    if (!ReadClock(typed, clock))
    {
        problem = QuotedTyped(typed) +
                  " is no time: type one as it is printed, such as "
                  "2026-03-01T17:05:09+01:00 or less of it, or how long ago it was, such "
                  "as 90s, 10m, 2h, 1d or 1h30m";
        return false;
    }
    time = Lasting(clock);
    return true;
}

STypedTime TimeTyped(const std::string& typed, std::int64_t now)
{
    STypedTime time;
    std::string problem;
    if (!ParseTime(typed, now, time, problem))
        throw CFailure(epsUsage, problem);
    return time;
}

void RequirePast(const STypedTime& time, std::int64_t latest)
{
    if (time.first > latest)
        throw CFailure(epsUsage, ExactTimeText(Core::Time::FromNanoseconds(time.first), kMillisecondDigits) +
                                     " has not come yet");
}

} // namespace Faultkeeper::Apps
