#include "script/native/ESNativeDate.h"

#include <QLocale>
#include <cmath>

namespace {

constexpr double DayLength = 86400000;
constexpr double LastTime = 8.64e15;

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

// The time value of the receiver.
double timeOf(const ESCall& call)
{
    if (!call.context->isdateobj(ESValue(call.self)) || !call.self->internal().isNumber())
        call.context->throwTypeError(QStringLiteral("Date object required"));
    return call.self->internal().number();
}

bool isDate(double time)
{
    return std::isfinite(time) && std::fabs(time) <= LastTime;
}

double modulo(double value, double by)
{
    // Times are whole numbers as a rule, and those are quick to divide.
    constexpr double Exact = 9007199254740992.0; // 2 to the 53
    if (std::fabs(value) < Exact && value == double(int64_t(value))) {
        int64_t rest = int64_t(value) % int64_t(by);
        return double(rest < 0 ? rest + int64_t(by) : rest);
    }
    double rest = std::fmod(value, by);
    return rest < 0 ? rest + by : rest;
}

QAzDate dayOf(double time)
{
    return QAzDate::gregorianDate(ESNativeDate::Day(time));
}

} // namespace

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
    return dayOf(time).year();
}

double ESNativeDate::MonthFromTime(double time)
{
    return dayOf(time).month() - 1;
}

double ESNativeDate::DateFromTime(double time)
{
    return dayOf(time).day();
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

namespace {

enum class Part { Both, Day, Time };

template <Part part> ESValue toText(const ESCall& call)
{
    double time = timeOf(call);
    if (!isDate(time))
        return ESValue(ESStringPool::intern("Invalid Date"));
    QAzDateTime date = ESNativeDate::qdate(time);
    QString day = date.date().toString(Qt::TextDate);
    QString clock = date.time().toString(Qt::TextDate);
    if (part != Part::Both)
        return ESValue(ESStringPool::text(part == Part::Day ? day : clock));
    // The text format puts the time before the year.
    qsizetype year = day.lastIndexOf(' ');
    return ESValue(ESStringPool::text(day.left(year + 1) + clock + day.mid(year)));
}

ESValue getTime(const ESCall& call)
{
    return ESValue(timeOf(call));
}

ESValue getTimezoneOffset(const ESCall& call)
{
    timeOf(call);
    return ESValue(0.0);
}

template <double (*field)(double)> ESValue get(const ESCall& call)
{
    double time = timeOf(call);
    return ESValue(isDate(time) ? field(time) : NaN);
}

// What a setter was given, and the date that it takes the rest from: the field that it begins with has to
// be there, those behind it may be.
struct Change {
    double time;
    int count;
    double given[4];

    double pick(int index, double (*current)(double)) const
    {
        return index == 0 || index < count ? given[index] : current(time);
    }
};

template <double (*change)(const Change&)> ESValue set(const ESCall& call)
{
    Change the{timeOf(call), std::min(call.argc, 4), {NaN, NaN, NaN, NaN}};
    for (int i = 0; i < the.count; ++i)
        the.given[i] = call.context->ToNumber(call.argv[i]);
    call.self->setInternal(ESValue(isDate(the.time) ? ESNativeDate::TimeClip(change(the)) : NaN));
    return call.self->internal();
}

ESValue setTime(const ESCall& call)
{
    timeOf(call);
    double given = call.argc > 0 ? call.context->ToNumber(call.argv[0]) : NaN;
    for (int i = 1; i < std::min(call.argc, 4); ++i)
        call.context->ToNumber(call.argv[i]);
    call.self->setInternal(ESValue(ESNativeDate::TimeClip(given)));
    return call.self->internal();
}

using D = ESNativeDate;

double changedMilliseconds(const Change& c)
{
    return D::MakeDate(D::Day(c.time), D::MakeTime(D::HourFromTime(c.time), D::MinFromTime(c.time),
                                                   D::SecFromTime(c.time), c.given[0]));
}

double changedSeconds(const Change& c)
{
    return D::MakeDate(D::Day(c.time), D::MakeTime(D::HourFromTime(c.time), D::MinFromTime(c.time),
                                                   c.given[0], c.pick(1, D::msFromTime)));
}

double changedMinutes(const Change& c)
{
    return D::MakeDate(D::Day(c.time), D::MakeTime(D::HourFromTime(c.time), c.given[0],
                                                   c.pick(1, D::SecFromTime), c.pick(2, D::msFromTime)));
}

double changedHours(const Change& c)
{
    return D::MakeDate(D::Day(c.time), D::MakeTime(c.given[0], c.pick(1, D::MinFromTime),
                                                   c.pick(2, D::SecFromTime), c.pick(3, D::msFromTime)));
}

double changedDate(const Change& c)
{
    return D::MakeDate(D::MakeDay(D::YearFromTime(c.time), D::MonthFromTime(c.time), c.given[0]),
                       D::TimeWithinDay(c.time));
}

double changedMonth(const Change& c)
{
    return D::MakeDate(D::MakeDay(D::YearFromTime(c.time), c.given[0], c.pick(1, D::DateFromTime)),
                       D::TimeWithinDay(c.time));
}

double changedFullYear(const Change& c)
{
    return D::MakeDate(D::MakeDay(c.given[0], c.pick(1, D::MonthFromTime), c.pick(2, D::DateFromTime)),
                       D::TimeWithinDay(c.time));
}

} // namespace

void ESNativeDate::install(ESContext* context)
{
    static constexpr auto Member = [](const char* name, const char* fullName, int count, ESHandler handler) {
        return row(name, fullName, count, handler);
    };
#define ES_DATE(name, count, handler) Member(name, "Date.prototype." name, count, handler)
    static constexpr Builtin GetterTable[] = {
        ES_DATE("toString", 0, toText<Part::Both>),
        ES_DATE("toLocaleString", 0, toText<Part::Both>),
        ES_DATE("toUTCString", 0, toText<Part::Both>),
        ES_DATE("toDateString", 0, toText<Part::Day>),
        ES_DATE("toLocaleDateString", 0, toText<Part::Day>),
        ES_DATE("toTimeString", 0, toText<Part::Time>),
        ES_DATE("toLocaleTimeString", 0, toText<Part::Time>),
        ES_DATE("valueOf", 0, getTime),
        ES_DATE("getTime", 0, getTime),
        ES_DATE("getFullYear", 0, ::get<YearFromTime>),
        ES_DATE("getUTCFullYear", 0, ::get<YearFromTime>),
        ES_DATE("getMonth", 0, ::get<MonthFromTime>),
        ES_DATE("getUTCMonth", 0, ::get<MonthFromTime>),
        ES_DATE("getDate", 0, ::get<DateFromTime>),
        ES_DATE("getUTCDate", 0, ::get<DateFromTime>),
        ES_DATE("getDay", 0, ::get<WeekDay>),
        ES_DATE("getUTCDay", 0, ::get<WeekDay>),
        ES_DATE("getHours", 0, ::get<HourFromTime>),
        ES_DATE("getUTCHours", 0, ::get<HourFromTime>),
        ES_DATE("getMinutes", 0, ::get<MinFromTime>),
        ES_DATE("getUTCMinutes", 0, ::get<MinFromTime>),
        ES_DATE("getSeconds", 0, ::get<SecFromTime>),
        ES_DATE("getUTCSeconds", 0, ::get<SecFromTime>),
        ES_DATE("getMilliseconds", 0, ::get<msFromTime>),
        ES_DATE("getUTCMilliseconds", 0, ::get<msFromTime>),
        ES_DATE("getTimezoneOffset", 0, getTimezoneOffset),
    };
    static constexpr Builtin SetterTable[] = {
        ES_DATE("setTime", 1, setTime),
        ES_DATE("setMilliseconds", 1, set<changedMilliseconds>),
        ES_DATE("setUTCMilliseconds", 1, set<changedMilliseconds>),
        ES_DATE("setSeconds", 2, set<changedSeconds>),
        ES_DATE("setUTCSeconds", 2, set<changedSeconds>),
        ES_DATE("setMinutes", 2, set<changedMinutes>),
        ES_DATE("setUTCMinutes", 3, set<changedMinutes>),
        ES_DATE("setHours", 4, set<changedHours>),
        ES_DATE("setUTCHours", 4, set<changedHours>),
        ES_DATE("setDate", 1, set<changedDate>),
        ES_DATE("setUTCDate", 1, set<changedDate>),
        ES_DATE("setMonth", 2, set<changedMonth>),
        ES_DATE("setUTCMonth", 2, set<changedMonth>),
        ES_DATE("setFullYear", 3, set<changedFullYear>),
        ES_DATE("setUTCFullYear", 3, set<changedFullYear>),
    };
#undef ES_DATE
    // `Date()` without `new` has no meaning here.
    installConstructor(context, constructorRow("Date", 1, nullptr), context->datePrototype());
    installMembers(context, context->datePrototype(), GetterTable);
    installMembers(context, context->datePrototype(), SetterTable);
    // A setter takes what it was not given from the date, so it has to see how many arguments there are.
    for (const Builtin& setter : SetterTable)
        nativeFunction(context->get(context->datePrototype(), ESStringPool::intern(setter.name)).object())
            ->formalCount = 0;
}

ESObject* ESNativeDate::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
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
