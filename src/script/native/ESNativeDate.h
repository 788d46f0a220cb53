// The constructor `Date` and its objects. A time value is the Julian day number times 86400000 plus the
// milliseconds of the day; local time and UTC are the same.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"
#include "support/QAzDate.h"

class ESNativeDate : public ESNative {
public:
    ESNativeDate() : ESNative("Date") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

    // The operations of date arithmetic; NaN goes in and out for "no date".
    static double MakeTime(double hour, double min, double sec, double ms);
    static double MakeDay(double year, double month, double date);
    static double MakeDate(double day, double time);
    static double TimeClip(double time);
    static double Day(double time);
    static double TimeWithinDay(double time);
    static double HourFromTime(double time);
    static double MinFromTime(double time);
    static double SecFromTime(double time);
    static double msFromTime(double time);
    static double YearFromTime(double time);
    static double MonthFromTime(double time);
    static double DateFromTime(double time);
    static double WeekDay(double time);
    static bool leapYear(double year);
    static double LocalTime(double time) { return time; }
    static double UTC(double time) { return time; }

    // Between a finite time value and a date with a time of day.
    static QAzDateTime qdate(double time);
    static double esdate(const QAzDateTime& date);
};
