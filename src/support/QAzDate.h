// Dates by Julian day number, for the script engine's own time scale.
#pragma once

#include <QDate>
#include <QDateTime>
#include <QTime>

class QAzDate : public QDate {
public:
    using QDate::QDate;
    QAzDate(const QDate& date) : QDate(date) {}

    // The day number of this proleptic Gregorian date; 2451545 for 1 January 2000.
    long julianDayNumber() const;
    // The inverse, by Fliegel and Van Flandern; the day is floor(jd).
    static QAzDate gregorianDate(double jd);
};

class QAzDateTime : public QDateTime {
public:
    using QDateTime::QDateTime;
    QAzDateTime(const QDateTime& dateTime) : QDateTime(dateTime) {}
    QAzDateTime(const QDate& date, const QTime& time) : QDateTime(date, time, Qt::UTC) {}

    long julianDayNumber() const { return QAzDate(date()).julianDayNumber(); }
};
