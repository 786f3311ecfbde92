#include "Formatting.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStringList>
#include <QUuid>
#include <limits>
#include <optional>

namespace {

// Upper-case hexadecimal, at least that many digits.
QString Hex(quint32 value, int digits)
{
    while (digits < 8 && (value >> (4 * digits)) != 0)
        ++digits;
    QString text(digits, Qt::Uninitialized);
    for (int i = digits - 1; i >= 0; --i, value >>= 4)
        text[i] = QLatin1Char("0123456789ABCDEF"[value & 0xF]);
    return text;
}

QString CountOf(qint64 count, const char *singular, const char *plural)
{
    return QString::number(count) + QLatin1String(count == 1 ? singular : plural);
}

std::optional<QTime> ReadTime(const QString &text)
{
    for (const char *format : {"H:m:s", "H:m", "h:m:s AP", "h:m AP", "H:m:s.z"}) {
        const QTime time = QTime::fromString(text, QLatin1String(format));
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

std::optional<QDate> ReadDate(const QString &text)
{
    for (const char *format : {"yyyy-M-d", "yyyy/M/d", "M/d/yyyy"}) {
        const QDate date = QDate::fromString(text, QLatin1String(format));
        if (date.isValid())
            return date;
    }
    return std::nullopt;
}

std::optional<QDateTime> ReadDateTime(const QString &value)
{
    const QString text = value.trimmed();
    for (const QDateTime &whole : {QDateTime::fromString(text, Qt::ISODate),
                                   QDateTime::fromString(text, Qt::RFC2822Date),
                                   QDateTime::fromString(text, QStringLiteral("yyyy-MM-dd:HH:mm:ss"))}) {
        if (whole.isValid())
            return whole.toLocalTime();
    }
    const qsizetype blank = text.indexOf(u' ');
    const auto date = ReadDate(blank < 0 ? text : text.left(blank));
    if (!date)
        return std::nullopt;
    if (blank < 0)
        return QDateTime(*date, QTime(0, 0));
    const auto time = ReadTime(text.mid(blank + 1).trimmed());
    if (!time)
        return std::nullopt;
    return QDateTime(*date, *time);
}

} // namespace

QDateTime LocalWallClock()
{
    thread_local qint64 offsetMSecs = 0;
    thread_local qint64 lookedUpAt = std::numeric_limits<qint64>::min();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (now < lookedUpAt || now - lookedUpAt >= 1000) {
        offsetMSecs = qint64(QDateTime::fromMSecsSinceEpoch(now).offsetFromUtc()) * 1000;
        lookedUpAt = now;
    }
    return QDateTime::fromMSecsSinceEpoch(now + offsetMSecs, Qt::UTC);
}

QString FormatBytes(qint64 Bytes)
{
    if (Bytes >= 1048576)
        return QString::number(double(Bytes) / 1048576.0, 'f', 2) + QStringLiteral(" Mb");
    if (Bytes < 1025)
        return QString::number(Bytes) + QStringLiteral(" Bytes");
    return QString::number(qRound64(double(Bytes) / 1024.0)) + QStringLiteral(" K");
}

QString FormatDuration(qint64 Seconds)
{
    if (Seconds < 0)
        return QString();
    const qint64 days = Seconds / 86400;
    const qint64 hours = Seconds % 86400 / 3600;
    const qint64 minutes = Seconds % 3600 / 60;
    QString text;
    if (days > 0)
        text += CountOf(days, " Day ", " Days ");
    if (hours > 0)
        text += CountOf(hours, " Hour ", " Hours ");
    text += CountOf(minutes, " Min ", " Mins ");
    return text.trimmed();
}

QString FormatOffset(int Minutes)
{
    const int magnitude = qAbs(Minutes);
    return QStringLiteral("%1:%2").arg(magnitude / 60, 2, 10, QChar(u'0')).arg(magnitude % 60, 2, 10, QChar(u'0'));
}

QDateTime NoDate()
{
    return QDateTime(QDate(1900, 1, 1), QTime(0, 0));
}

QDateTime SafeDate(const QVariant &Value)
{
    if (Value.isNull())
        return NoDate();
    switch (Value.typeId()) {
    case QMetaType::QDateTime:
        return Value.toDateTime().isValid() ? Value.toDateTime() : NoDate();
    case QMetaType::QDate:
        return Value.toDate().isValid() ? QDateTime(Value.toDate(), QTime(0, 0)) : NoDate();
    default:
        return ReadDateTime(Value.toString()).value_or(NoDate());
    }
}

QTime SafeTime(const QVariant &Value)
{
    if (Value.isNull())
        return QTime(0, 0);
    switch (Value.typeId()) {
    case QMetaType::QTime:
        return Value.toTime().isValid() ? Value.toTime() : QTime(0, 0);
    case QMetaType::QDateTime:
        return Value.toDateTime().isValid() ? Value.toDateTime().time() : QTime(0, 0);
    default:
        break;
    }
    const QString text = Value.toString().trimmed();
    if (const auto time = ReadTime(text))
        return *time;
    if (const auto whole = ReadDateTime(text))
        return whole->time();
    return QTime(0, 0);
}

bool IsNumeric(const QString &Text)
{
    static const QRegularExpression number(QStringLiteral(R"(^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$)"));
    return number.match(Text.trimmed()).hasMatch();
}

bool IsDate(const QString &Text)
{
    return ReadDateTime(Text).has_value();
}

QString UniqueName(const QDateTime &Now)
{
    return Now.toString(QStringLiteral("yyyyMMdd_HHmmss_")) + Hex(QRandomGenerator::global()->bounded(0x10000u), 4);
}

QString GetGUID()
{
    return QUuid::createUuid().toString(QUuid::WithBraces).toUpper();
}

QString GUIDDigits()
{
    return QUuid::createUuid().toString(QUuid::Id128).toUpper();
}

QString NewUniqueID()
{
    return NewUniqueID(LocalWallClock());
}

// Records are made by the thousand while a configuration is read, so each
// thread draws from a generator of its own and the digits go straight into
// the text.
QString NewUniqueID(const QDateTime &Now)
{
    thread_local QRandomGenerator random(QRandomGenerator::global()->generate());
    const quint32 dayPart = quint32(qint64(Now.time().msecsSinceStartOfDay()) * 65536 / 86400000);
    const quint32 parts[] = {random.bounded(0x10000u), dayPart, quint32(Now.date().dayOfYear())};
    const int widths[] = {4, 4, 3};
    QString id(11, Qt::Uninitialized);
    QChar *digit = id.data() + id.size();
    for (int part = 2; part >= 0; --part) {
        quint32 value = parts[part];
        for (int n = 0; n < widths[part]; ++n, value >>= 4)
            *--digit = QLatin1Char("0123456789ABCDEF"[value & 0xF]);
    }
    return id;
}

QString TimeZoneList()
{
    // "Nepa" and "Nnewfoundland" are stored as written; a correction would
    // no longer match the names already kept in configurations.
    static const QStringList cities = {
        QStringLiteral("Midway Island"), QStringLiteral("Hawaii"), QStringLiteral("Alaska"),
        QStringLiteral("Tijuana"), QStringLiteral("Arizona"), QStringLiteral("Chihuahua"),
        QStringLiteral("Mazatlan"), QStringLiteral("Central America"), QStringLiteral("Guadalajara"),
        QStringLiteral("Mexico City"), QStringLiteral("Monterrey"), QStringLiteral("Saskatchewan"),
        QStringLiteral("Bogota"), QStringLiteral("Lima"), QStringLiteral("Quito"),
        QStringLiteral("Indiana"), QStringLiteral("Caracas"), QStringLiteral("La Paz"),
        QStringLiteral("Santiago"), QStringLiteral("Atlantic"), QStringLiteral("Nnewfoundland"),
        QStringLiteral("Brasilia"), QStringLiteral("Buenos Aires"), QStringLiteral("Georgetown"),
        QStringLiteral("Greenland"), QStringLiteral("Mid-Atlantic"), QStringLiteral("Azores"),
        QStringLiteral("Cape Verde"), QStringLiteral("Casablanca"), QStringLiteral("Monrovia"),
        QStringLiteral("Dublin"), QStringLiteral("Edinburgh"), QStringLiteral("Lisbon"),
        QStringLiteral("London"), QStringLiteral("Amsterdam"), QStringLiteral("Berlin"),
        QStringLiteral("Bern"), QStringLiteral("Rome"), QStringLiteral("Stockholm"),
        QStringLiteral("Vienna"), QStringLiteral("Belgrade"), QStringLiteral("Bratislava"),
        QStringLiteral("Budapest"), QStringLiteral("Ljubljana"), QStringLiteral("Prague"),
        QStringLiteral("Brussels"), QStringLiteral("Copenhagen"), QStringLiteral("Madrid"),
        QStringLiteral("Paris"), QStringLiteral("Sarajevo"), QStringLiteral("Skopje"),
        QStringLiteral("Warsaw"), QStringLiteral("Zagreb"), QStringLiteral("West Central Africa"),
        QStringLiteral("Athens"), QStringLiteral("Bucharest"), QStringLiteral("Istanbul"),
        QStringLiteral("Minsk"), QStringLiteral("Cairo"), QStringLiteral("Harare"),
        QStringLiteral("Pretoria"), QStringLiteral("Helsinki"), QStringLiteral("Kyiv"),
        QStringLiteral("Riga"), QStringLiteral("Sofia"), QStringLiteral("Tallinn"),
        QStringLiteral("Vilnius"), QStringLiteral("Jerusalem"), QStringLiteral("Baghdad"),
        QStringLiteral("Kuwait"), QStringLiteral("Riyadh"), QStringLiteral("Moscow"),
        QStringLiteral("St. Petersburg"), QStringLiteral("Volgograd"), QStringLiteral("Nairobi"),
        QStringLiteral("Tehran"), QStringLiteral("Abu Dhabi"), QStringLiteral("Muscat"),
        QStringLiteral("Baku"), QStringLiteral("Tbilisi"), QStringLiteral("Yerevan"),
        QStringLiteral("Kabul"), QStringLiteral("Ekaterinburg"), QStringLiteral("Islamabad"),
        QStringLiteral("Karachi"), QStringLiteral("Tashkent"), QStringLiteral("Chennai"),
        QStringLiteral("Kolkata"), QStringLiteral("Mumbai"), QStringLiteral("New Delhi"),
        QStringLiteral("Nepa"), QStringLiteral("Almaty"), QStringLiteral("Novosibirsk"),
        QStringLiteral("Astana"), QStringLiteral("Dhaka"), QStringLiteral("Sri Jayawardenepura"),
        QStringLiteral("Rangoon"), QStringLiteral("Bangkok"), QStringLiteral("Hanoi"),
        QStringLiteral("Jakarta"), QStringLiteral("Krasnoyarsk"), QStringLiteral("Beijing"),
        QStringLiteral("Chongqing"), QStringLiteral("Hong Kong"), QStringLiteral("Urumqi"),
        QStringLiteral("Irkutsk"), QStringLiteral("Ulaan Bataar"), QStringLiteral("Kuala Lumpur"),
        QStringLiteral("Singapore"), QStringLiteral("Perth"), QStringLiteral("Taipei"),
        QStringLiteral("Osaka"), QStringLiteral("Sapporo"), QStringLiteral("Tokyo"),
        QStringLiteral("Seoul"), QStringLiteral("Yakutsk"), QStringLiteral("Adelaide"),
        QStringLiteral("Darwin"), QStringLiteral("Brisbane"), QStringLiteral("Canberra"),
        QStringLiteral("Melbourne"), QStringLiteral("Sydney"), QStringLiteral("Guam"),
        QStringLiteral("Port Moresby"), QStringLiteral("Hobart"), QStringLiteral("Vladivostok"),
        QStringLiteral("Magadan"), QStringLiteral("Solomon Is."), QStringLiteral("New Caledonia"),
        QStringLiteral("Auckland"), QStringLiteral("Wellington"), QStringLiteral("Fiji"),
        QStringLiteral("Kamchatka"), QStringLiteral("Marshall Is."), QStringLiteral("UTC"),
    };
    return QStringLiteral("GMT,Eastern,Central,Mountain,Pacific,") + cities.join(u',');
}
