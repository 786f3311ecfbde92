#pragma once
#include <QDateTime>
#include <QString>
#include <QtGlobal>

// A fixed-point number with four decimals, as counters of bytes are kept.
struct Currency
{
    qint64 TenThousandths = 0;

    static Currency FromDouble(double value) { return Currency{qRound64(value * 10000.0)}; }
    double ToDouble() const { return double(TenThousandths) / 10000.0; }
    bool IsZero() const { return TenThousandths == 0; }
    // Plain text in the C locale, without trailing zeros: "1234.5", "-3", "0".
    QString ToText() const;
    // The number in a text, or false when it is no number.
    static bool FromText(const QString &text, Currency &out);

    friend bool operator==(Currency a, Currency b) { return a.TenThousandths == b.TenThousandths; }
};

// The zero date: what a date without value holds, 1899-12-30 00:00:00.
QDateTime ZeroDate();

// QDateTime(Date, Time) in local time. Reading a configuration makes many
// with the same few values, and each asks the C library for the zone, under
// a lock that all threads share, and the library looks at its file again; so
// each thread keeps the last ones it made, each for a second.
QDateTime LocalDateTime(QDate Date, QTime Time);
