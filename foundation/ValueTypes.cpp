#include "ValueTypes.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

QString Currency::ToText() const
{
    const qint64 whole = TenThousandths / 10000;
    qint64 fraction = std::llabs(TenThousandths % 10000);
    QString text = (TenThousandths < 0 && whole == 0 ? QStringLiteral("-") : QString()) + QString::number(whole);
    if (fraction == 0)
        return text;
    QString digits = QStringLiteral("%1").arg(fraction, 4, 10, QChar(u'0'));
    while (digits.endsWith(u'0'))
        digits.chop(1);
    return text + u'.' + digits;
}

bool Currency::FromText(const QString &text, Currency &out)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value) || std::fabs(value) > 922337203685477.0)
        return false;
    out = FromDouble(value);
    return true;
}

QDateTime ZeroDate()
{
    return LocalDateTime(QDate(1899, 12, 30), QTime(0, 0));
}

QDateTime LocalDateTime(QDate Date, QTime Time)
{
    struct Made
    {
        QDate Date;
        QTime Time;
        QDateTime Value;
        qint64 At = std::numeric_limits<qint64>::min();
    };
    // A few values in turn, such as a record's default date and the date read
    // for it, all find their own place.
    thread_local std::array<Made, 64> made;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const std::size_t slot =
        std::size_t((std::uint64_t(Date.toJulianDay()) * 31 + std::uint64_t(Time.msecsSinceStartOfDay())) % made.size());
    Made &last = made[slot];
    if (Date != last.Date || Time != last.Time || now < last.At || now - last.At >= 1000)
        last = {Date, Time, QDateTime(Date, Time), now};
    return last.Value;
}
