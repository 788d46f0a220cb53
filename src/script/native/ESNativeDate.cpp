#include "script/native/ESNativeDate.h"

#include <QLocale>
#include <cmath>

namespace {

constexpr double DayLength = 86400000;
constexpr double LastTime = 8.64e15;

enum {
    Constructor,
    ToString,
    ToLocaleString,
    ToUTCString,
    ToDateString,
    ToLocaleDateString,
    ToTimeString,
    ToLocaleTimeString,
    ValueOf,
    GetTime,
    GetFullYear,
    GetMonth,
    GetDate,
    GetDay,
    GetHours,
    GetMinutes,
    GetSeconds,
    GetMilliseconds,
    GetTimezoneOffset,
    SetTime,
    SetMilliseconds,
    SetSeconds,
    SetMinutes,
    SetHours,
    SetDate,
    SetMonth,
    SetFullYear,
};

constexpr Builtin constructorRow = {"Date", "Date", 1, true, Constructor};

#define ES_DATE(name, count, id)                                                                             \
    {                                                                                                        \
        name, "Date.prototype." name, count, false, id                                                       \
    }
constexpr Builtin members[] = {
    ES_DATE("toString", 0, ToString),
    ES_DATE("toLocaleString", 0, ToLocaleString),
    ES_DATE("toUTCString", 0, ToUTCString),
    ES_DATE("toDateString", 0, ToDateString),
    ES_DATE("toLocaleDateString", 0, ToLocaleDateString),
    ES_DATE("toTimeString", 0, ToTimeString),
    ES_DATE("toLocaleTimeString", 0, ToLocaleTimeString),
    ES_DATE("valueOf", 0, ValueOf),
    ES_DATE("getTime", 0, GetTime),
    ES_DATE("getFullYear", 0, GetFullYear),
    ES_DATE("getUTCFullYear", 0, GetFullYear),
    ES_DATE("getMonth", 0, GetMonth),
    ES_DATE("getUTCMonth", 0, GetMonth),
    ES_DATE("getDate", 0, GetDate),
    ES_DATE("getUTCDate", 0, GetDate),
    ES_DATE("getDay", 0, GetDay),
    ES_DATE("getUTCDay", 0, GetDay),
    ES_DATE("getHours", 0, GetHours),
    ES_DATE("getUTCHours", 0, GetHours),
    ES_DATE("getMinutes", 0, GetMinutes),
    ES_DATE("getUTCMinutes", 0, GetMinutes),
    ES_DATE("getSeconds", 0, GetSeconds),
    ES_DATE("getUTCSeconds", 0, GetSeconds),
    ES_DATE("getMilliseconds", 0, GetMilliseconds),
    ES_DATE("getUTCMilliseconds", 0, GetMilliseconds),
    ES_DATE("getTimezoneOffset", 0, GetTimezoneOffset),
    ES_DATE("setTime", 1, SetTime),
    ES_DATE("setMilliseconds", 1, SetMilliseconds),
    ES_DATE("setUTCMilliseconds", 1, SetMilliseconds),
    ES_DATE("setSeconds", 2, SetSeconds),
    ES_DATE("setUTCSeconds", 2, SetSeconds),
    ES_DATE("setMinutes", 2, SetMinutes),
    ES_DATE("setUTCMinutes", 3, SetMinutes),
    ES_DATE("setHours", 4, SetHours),
    ES_DATE("setUTCHours", 4, SetHours),
    ES_DATE("setDate", 1, SetDate),
    ES_DATE("setUTCDate", 1, SetDate),
    ES_DATE("setMonth", 2, SetMonth),
    ES_DATE("setUTCMonth", 2, SetMonth),
    ES_DATE("setFullYear", 3, SetFullYear),
    ES_DATE("setUTCFullYear", 3, SetFullYear),
};
#undef ES_DATE

double now()
{
    QDateTime current = QDateTime::currentDateTime();
    return ESNativeDate::esdate(QAzDateTime(QDateTime(current.date(), current.time(), Qt::UTC)));
}

double parse(const QString& text)
{
    QDateTime date = QDateTime::fromString(text.trimmed(), Qt::ISODateWithMs);
    return date.isValid() ? ESNativeDate::esdate(QAzDateTime(QDateTime(date.date(), date.time(), Qt::UTC)))
                          : NaN;
}

double fromFields(ESContext* context, int argc, const ESValue* argv)
{
    double fields[7] = {NaN, NaN, 1, 0, 0, 0, 0};
    for (int i = 0; i < argc && i < 7; ++i)
        fields[i] = context->ToNumber(argv[i]);
    // Two digits are a year of the twentieth century.
    double year = std::trunc(fields[0]);
    if (year >= 0 && year <= 99)
        fields[0] = 1900 + year;
    return ESNativeDate::MakeDate(ESNativeDate::MakeDay(fields[0], fields[1], fields[2]),
                                  ESNativeDate::MakeTime(fields[3], fields[4], fields[5], fields[6]));
}

double modulo(double value, double by)
{
    double rest = std::fmod(value, by);
    return rest < 0 ? rest + by : rest;
}

} // namespace

ESNativeDate::ESNativeDate() : ESNative("Date") {}

void ESNativeDate::install(ESContext* context)
{
    installConstructor(context, constructorRow, context->datePrototype());
    installMembers(context, context->datePrototype(), members);
    // A setter takes what it was not given from the date, so it has to see how many arguments there are.
    for (const Builtin& row : members) {
        if (row.id < SetTime)
            continue;
        ESValue setter = context->get(context->datePrototype(), ESStringPool::intern(row.name));
        setter.object()->call->formalCount = 0;
    }
}

double ESNativeDate::MakeTime(double hour, double min, double sec, double ms)
{
    if (!std::isfinite(hour) || !std::isfinite(min) || !std::isfinite(sec) || !std::isfinite(ms))
        return NaN;
    return std::trunc(hour) * 3600000 + std::trunc(min) * 60000 + std::trunc(sec) * 1000 + std::trunc(ms);
}

double ESNativeDate::MakeDay(double year, double month, double date)
{
    constexpr double Bound = 400000; // years beyond LastTime
    if (!std::isfinite(year) || !std::isfinite(month) || !std::isfinite(date))
        return NaN;
    if (std::fabs(year) > Bound || std::fabs(month) > Bound || std::fabs(date) > Bound)
        return NaN;
    QAzDate day(QDate(int(year), int(month) + 1, int(date)));
    return day.isValid() ? double(day.julianDayNumber()) : NaN;
}

double ESNativeDate::MakeDate(double day, double time)
{
    return std::isfinite(day) && std::isfinite(time) ? day * DayLength + time : NaN;
}

double ESNativeDate::TimeClip(double time)
{
    if (!std::isfinite(time))
        return time;
    return std::fabs(time) > LastTime ? NaN : time + 0;
}

double ESNativeDate::Day(double time)
{
    return std::floor(time / DayLength);
}

double ESNativeDate::TimeWithinDay(double time)
{
    return modulo(time, DayLength);
}

double ESNativeDate::HourFromTime(double time)
{
    return std::floor(TimeWithinDay(time) / 3600000);
}

double ESNativeDate::MinFromTime(double time)
{
    return modulo(std::floor(TimeWithinDay(time) / 60000), 60);
}

double ESNativeDate::SecFromTime(double time)
{
    return modulo(std::floor(TimeWithinDay(time) / 1000), 60);
}

double ESNativeDate::msFromTime(double time)
{
    return modulo(std::floor(TimeWithinDay(time)), 1000);
}

double ESNativeDate::YearFromTime(double time)
{
    return qdate(time).date().year();
}

double ESNativeDate::MonthFromTime(double time)
{
    return qdate(time).date().month() - 1;
}

double ESNativeDate::DateFromTime(double time)
{
    return qdate(time).date().day();
}

double ESNativeDate::WeekDay(double time)
{
    // Day 0 of the Julian count was a Monday.
    return modulo(Day(time) + 1, 7);
}

bool ESNativeDate::leapYear(double year)
{
    return QDate::isLeapYear(int(year));
}

QAzDateTime ESNativeDate::qdate(double time)
{
    QTime timeOfDay = QTime::fromMSecsSinceStartOfDay(int(TimeWithinDay(time)));
    return QAzDateTime(QDateTime(QAzDate::gregorianDate(Day(time)), timeOfDay, Qt::UTC));
}

double ESNativeDate::esdate(const QAzDateTime& date)
{
    return MakeDate(double(date.julianDayNumber()), double(date.time().msecsSinceStartOfDay()));
}

ESValue ESNativeDate::text(int id, double time)
{
    if (!std::isfinite(time) || std::fabs(time) > LastTime)
        return ESValue(ESStringPool::intern("Invalid Date"));
    QAzDateTime date = qdate(time);
    QString day = date.date().toString(Qt::TextDate);
    QString clock = date.time().toString(Qt::TextDate);
    switch (id) {
    case ToDateString:
    case ToLocaleDateString: return ESValue(ESStringPool::intern(day));
    case ToTimeString:
    case ToLocaleTimeString: return ESValue(ESStringPool::intern(clock));
    default: {
        // The text format puts the time before the year.
        qsizetype year = day.lastIndexOf(' ');
        return ESValue(ESStringPool::intern(day.left(year + 1) + clock + day.mid(year)));
    }
    }
}

ESValue ESNativeDate::field(int id, double time)
{
    if (id == ValueOf || id == GetTime)
        return ESValue(time);
    if (id == GetTimezoneOffset)
        return ESValue(0.0);
    if (!std::isfinite(time) || std::fabs(time) > LastTime)
        return ESValue(NaN);
    switch (id) {
    case GetFullYear: return ESValue(YearFromTime(time));
    case GetMonth: return ESValue(MonthFromTime(time));
    case GetDate: return ESValue(DateFromTime(time));
    case GetDay: return ESValue(WeekDay(time));
    case GetHours: return ESValue(HourFromTime(time));
    case GetMinutes: return ESValue(MinFromTime(time));
    case GetSeconds: return ESValue(SecFromTime(time));
    default: return ESValue(msFromTime(time));
    }
}

double ESNativeDate::changed(ESContext* context, int id, double time, int argc, const ESValue* argv)
{
    double given[4] = {NaN, NaN, NaN, NaN};
    int count = std::min(argc, 4);
    for (int i = 0; i < count; ++i)
        given[i] = context->ToNumber(argv[i]);
    if (id == SetTime)
        return TimeClip(given[0]);
    if (!std::isfinite(time) || std::fabs(time) > LastTime)
        return NaN;
    // The field that a setter begins with has to be there; the ones behind it may be.
    auto pick = [&](int index, double current) {
        return index == 0 || index < count ? given[index] : current;
    };

    double day = Day(time);
    double clock = TimeWithinDay(time);
    double hour = HourFromTime(time);
    double minute = MinFromTime(time);
    double second = SecFromTime(time);
    double ms = msFromTime(time);
    switch (id) {
    case SetMilliseconds: clock = MakeTime(hour, minute, second, given[0]); break;
    case SetSeconds: clock = MakeTime(hour, minute, given[0], pick(1, ms)); break;
    case SetMinutes: clock = MakeTime(hour, given[0], pick(1, second), pick(2, ms)); break;
    case SetHours: clock = MakeTime(given[0], pick(1, minute), pick(2, second), pick(3, ms)); break;
    case SetDate: day = MakeDay(YearFromTime(time), MonthFromTime(time), given[0]); break;
    case SetMonth: day = MakeDay(YearFromTime(time), given[0], pick(1, DateFromTime(time))); break;
    default: day = MakeDay(given[0], pick(1, MonthFromTime(time)), pick(2, DateFromTime(time))); break;
    }
    return TimeClip(MakeDate(day, clock));
}

void ESNativeDate::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    int id = function->builtinId;
    if (id <= Constructor || id > SetFullYear)
        badCall(context);
    if (self->cls != this || !self->value.isNumber())
        context->throwTypeError(QStringLiteral("Date object required"));
    double time = self->value.number();
    if (id <= ToLocaleTimeString) {
        argv[0] = text(id, time);
    } else if (id <= GetTimezoneOffset) {
        argv[0] = field(id, time);
    } else {
        self->value = ESValue(changed(context, id, time, argc, argv));
        argv[0] = self->value;
    }
}

ESObject* ESNativeDate::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    double time;
    if (argc == 0) {
        time = now();
    } else if (argc == 1) {
        ESValue value = context->CoerceToVal(argv[0], ESContext::NoHint);
        time = value.isString() ? parse(context->toString(value)) : context->ToNumber(value);
    } else {
        time = fromFields(context, argc, argv);
    }
    return context->mkobj(context->datePrototype(), this, ESValue(TimeClip(time)));
}
