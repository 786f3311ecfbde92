#include "TestRegistry.h"
#include "foundation/clsConcat.h"

#include <QDateTime>
#include <QTest>

class tst_clsConcat : public QObject
{
    Q_OBJECT
private slots:
    void appendsBeyondTheBufferAndResets()
    {
        clsConcat text;
        text.Append(u"abc");
        text.Append(QString(30000, u'x'));
        QCOMPARE(text.Length(), 30003);
        QCOMPARE(text.Text(), QStringLiteral("abc") + QString(30000, u'x'));
        text.setText(QStringLiteral("reset"));
        text.AppendLine(u"!");
        QCOMPARE(text.Text(), QStringLiteral("reset!\r\n"));
    }

    void delimitersSeparateFieldsAndLines()
    {
        clsConcat rows;
        rows.AppendField(u"1");
        rows.AppendField(u"Y");
        rows.AppendLine(u"");
        rows.setDelimiterField(QStringLiteral("|"));
        rows.setDelimiterLine(QStringLiteral("\n"));
        rows.AppendField(u"2");
        rows.AppendLine(u"N");
        QCOMPARE(rows.Text(), QStringLiteral("1\tY\t\r\n2|N\n"));
    }

    void jsonModeQuotesStringsAndDatesOnly()
    {
        clsConcat json;
        json.JSON = true;
        json.setDelimiterField(QStringLiteral(",\n"));
        json.setDelimiterLine(QStringLiteral("\n"));
        json.JSONObjectStart();
        json.AppendJSONField(QStringLiteral("name"), QStringLiteral("say \"hi\""));
        json.AppendJSONField(QStringLiteral("count"), 3);
        json.AppendJSONField(QStringLiteral("when"), QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)));
        json.JSONObjectEnd();
        json.JSONObjectEnd();
        QCOMPARE(json.Text(), QStringLiteral("{,\n \"name\": \"say \"hi\"\",\n \"count\": 3,\n"
                                             " \"when\": \"2026-01-02 03:04:05\",\n}\n}\n"));

        clsConcat plain;
        plain.AppendJSONField(QStringLiteral("ignored"), QStringLiteral("v"));
        plain.AppendJSONField(QStringLiteral("ignored"), 7);
        QCOMPARE(plain.Text(), QStringLiteral("v\t7\t"));
    }
};

POSTVANE_TEST(tst_clsConcat)
#include "tst_clsConcat.moc"
