#include "ActionFragmentTags.h"
#include "TestRegistry.h"
#include "actions/ActionItem.h"
#include "actions/clsActionAZ.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionDB.h"
#include "actions/clsActionDBCustom.h"
#include "actions/clsActionDBToken.h"
#include "actions/clsActionExcel.h"
#include "actions/clsActionReport.h"
#include "actions/clsActionText.h"
#include "actions/colActions.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString StoredCondition = u"<Lines><Line>|%a%|=|1</Line></Lines>"_s;

} // namespace

// The records of the data kinds: their fragments, defaults and list lines.
class tst_DataActionRecords : public QObject
{
    Q_OBJECT

private slots:
    void fragmentsHaveTheirTagsInOrderAndReadBack_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QStringList>("tags");
        const QStringList head{u"Class"_s, u"ID"_s, u"Enabled"_s};
        clsActionDB db(u"A1"_s);
        db.ConnectionString = u"Driver=PostgreSQL;Server=h;Database=d;Pwd=secret"_s;
        db.UseInternal = true;
        db.Dialect = 2;
        db.Condition = StoredCondition;
        QTest::newRow("DatabaseUpdate") << db.XML()
                                        << head + QStringList{u"ConnectionString"_s, u"UseInternal"_s, u"Dialect"_s, u"Condition"_s};
        clsActionDBCustom custom(u"A2"_s);
        custom.ConnectionString = u"DSN=x;Pwd=secret"_s;
        custom.SQLStatement = u"INSERT INTO t (a) VALUES (@a)"_s;
        custom.SQLSelectStatement = u"SELECT * FROM t WHERE a = @a"_s;
        custom.SQLUpdateStatement = u"UPDATE t SET a = @a WHERE a = @a"_s;
        custom.Timeout = 45;
        custom.SQLDialect = 1;
        QTest::newRow("DatabaseUpdateCustom")
            << custom.XML()
            << head + QStringList{u"ConnectionString"_s, u"SQLSelectStatement"_s, u"SQLStatement"_s, u"SQLUpdateStatement"_s,
                                  u"SQLDialect"_s, u"TimeOut"_s};
        clsActionCSV csv(u"A3"_s);
        csv.FileName = u"/x/a.csv"_s;
        csv.FileFormat = 2;
        csv.Send = true;
        csv.SendTo = u"ann@example.com"_s;
        csv.SendFreq = 3;
        csv.SendClear = true;
        QTest::newRow("CSV") << csv.XML()
                             << head + QStringList{u"FileName"_s, u"FileFormat"_s, u"LineTerminator"_s, u"Send"_s,
                                                   u"SendClear"_s, u"SendFreq"_s, u"SendTo"_s};
        clsActionExcel excel(u"A4"_s);
        excel.FileName = u"/x/a.xlsx"_s;
        excel.Send = true;
        excel.SendTo = u"b@example.com"_s;
        excel.SendFreq = 1;
        excel.SendClear = true;
        QTest::newRow("Excel") << excel.XML()
                               << head + QStringList{u"FileName"_s, u"Send"_s, u"SendClear"_s, u"SendFreq"_s, u"SendTo"_s};
        clsActionText text(u"A5"_s);
        text.FileName = u"/x/a.txt"_s;
        text.Append = true;
        text.Backup = true;
        text.Text = u"line <1> & 'two'"_s;
        text.Format = 1;
        text.LineTerminator = u"||"_s;
        text.AssignTo = u"Var1"_s;
        QTest::newRow("TextFile") << text.XML()
                                  << head + QStringList{u"FileName"_s, u"Append"_s, u"AssignTo"_s, u"Backup"_s, u"Text"_s,
                                                        u"Format"_s, u"LineTerminator"_s};
        clsActionAZ azure(u"A6"_s);
        azure.Server = u"srv"_s;
        azure.Database = u"db"_s;
        azure.Username = u"u"_s;
        azure.Password = u"secret"_s;
        azure.SQLStatement = u"INSERT"_s;
        azure.SQLSelectStatement = u"SELECT"_s;
        azure.SQLUpdateStatement = u"UPDATE"_s;
        azure.SQLModified = true;
        QTest::newRow("Azure") << azure.XML()
                               << head + QStringList{u"Server"_s, u"Database"_s, u"Username"_s, u"Password"_s,
                                                     u"SQLSelectStatement"_s, u"SQLStatement"_s, u"SQLUpdateStatement"_s,
                                                     u"SQLModified"_s};
        clsActionDBToken token(u"A7"_s);
        token.TokenName = u"Region"_s;
        token.Value = u"%Region%"_s;
        token.AssignResultTo = u"Count"_s;
        QTest::newRow("UpdateToken") << token.XML()
                                     << head + QStringList{u"TokenName"_s, u"Value"_s, u"AssignResultTo"_s};
        clsActionReport report(u"A8"_s);
        report.PrinterToUse = u"Office"_s;
        report.Name = u"Daily"_s;
        report.Data = u"AAEC"_s;
        report.Export = true;
        report.ExportFormat = 2;
        report.ExportFileName = u"/x/r.htm"_s;
        report.ExportCreateTempFile = true;
        report.ExportAssignFilenameTo = u"File"_s;
        QTest::newRow("Report") << report.XML()
                                << head + QStringList{u"PrinterToUse"_s, u"Export"_s, u"ExportDontPrint"_s,
                                                      u"ExportFileName"_s, u"ExportFormat"_s, u"ExportCreateTempFile"_s,
                                                      u"ExportAssignFilenameTo"_s, u"Data"_s, u"Name"_s};
    }
    void fragmentsHaveTheirTagsInOrderAndReadBack()
    {
        QFETCH(QString, fragment);
        QFETCH(QStringList, tags);
        QStringList found = TopTags(fragment);
        found.removeAll(u"Condition"_s);
        tags.removeAll(u"Condition"_s);
        QCOMPARE(found, tags);
        QVERIFY2(!fragment.contains(u"secret"_s), qPrintable(fragment)); // passwords travel enciphered
        colActions list;
        ActionItem *read = nullptr;
        QCOMPARE(Reread(fragment, &read, list), fragment);
        QCOMPARE(read->ClassName(), tags.first() == u"Class"_s ? read->ClassName() : QString());
        QVERIFY(!read->ActionDescription().isEmpty());
    }

    void readingKeepsEveryValue()
    {
        clsActionDBCustom custom;
        custom.ConnectionString = u"Driver=MySQL;Database=d;Pwd={a;b}"_s;
        custom.SQLStatement = u"INSERT INTO t (a) VALUES (@a)\r\n\r\nINSERT INTO u (b) VALUES (@b)"_s;
        custom.Timeout = 90;
        custom.SQLDialect = 2;
        custom.Condition = StoredCondition;
        clsActionDBCustom read;
        read.setXML(custom.XML());
        QCOMPARE(read.ConnectionString, custom.ConnectionString);
        QCOMPARE(read.SQLStatement, custom.SQLStatement);
        QCOMPARE(read.Timeout, 90);
        QCOMPARE(read.SQLDialect, qint16(2));
        QCOMPARE(read.Condition, StoredCondition);
        QCOMPARE(read.ID, custom.ID);

        clsActionReport report;
        QVERIFY(report.ExportDontPrint);
        report.ExportDontPrint = false;
        clsActionReport reportRead;
        reportRead.setXML(report.XML());
        QVERIFY(!reportRead.ExportDontPrint);
        QCOMPARE(clsActionCSV().LineTerminator, u"CRLF"_s);
        QCOMPARE(clsActionText().LineTerminator, u"CRLF"_s);
        QVERIFY(report.ExportTempFile().endsWith(u".pdf"_s));
        report.ExportFormat = 4;
        QVERIFY(report.ExportTempFile().endsWith(u".tiff"_s));
    }

    void theListShowsTheirValues()
    {
        clsActionDB db;
        db.ConnectionString = QString(130, u'c');
        QVERIFY2(db.ActionDescription().contains(QString(100, u'c') + u"..."_s), qPrintable(db.ActionDescription()));
        QVERIFY(!db.ActionDescription().contains(QString(101, u'c')));
        clsActionText text;
        text.FileName = u"a.txt"_s;
        text.Append = true;
        text.AssignTo = u"V"_s;
        QVERIFY(!text.ActionDescription().contains(u"Append"_s)); // nothing is written without a text
        QVERIFY(text.ActionDescription().contains(u"(Read Text File Assign To V)"_s));
        text.Text = u"x"_s;
        QVERIFY(text.ActionDescription().contains(u"a.txt Write"_s));
        QVERIFY(text.ActionDescription().contains(u"(Append)"_s));
        clsActionDBToken token;
        token.TokenName = u"Region"_s;
        token.Value = u"North"_s;
        QVERIFY(token.ActionDescription().contains(u"Region"_s));
        QVERIFY(!token.ActionDescription().contains(u"Assign Result"_s));
        clsActionReport report;
        report.Name = u"Daily"_s;
        report.Export = true;
        report.ExportCreateTempFile = true;
        QVERIFY(report.ActionDescription().contains(u"Export To Temporary File"_s));
        QVERIFY(report.ActionDescription().contains(u"(Dont Print)"_s));
        clsActionCSV csv;
        csv.FileName = u"a.csv"_s;
        csv.SendTo = u"ann@example.com"_s;
        QVERIFY(!csv.ActionDescription().contains(u"ann@"_s));
        csv.Send = true;
        QVERIFY(csv.ActionDescription().contains(u"ann@example.com"_s));
    }

    void azureConnectionStringsCompleteServerAndUser()
    {
        clsActionAZ azure;
        azure.Server = u"myserver"_s;
        azure.Database = u"sales"_s;
        azure.Username = u"ann"_s;
        azure.Password = u"pw"_s;
        QCOMPARE(azure.ConnectionString(),
                 u"Driver={SQL Server Native Client 10.0};Server=tcp:myserver.database.windows.net,1433;Database=sales;"
                 "Uid=ann@myserver;Pwd=pw;Encrypt=yes;"_s);
        QCOMPARE(azure.ConnectionString(u"other.DATABASE.windows.net,1500"_s, QString(), u"bob@x"_s),
                 u"Driver={SQL Server Native Client 10.0};Server=tcp:other.DATABASE.windows.net,1500;Database=sales;"
                 "Uid=bob@x;Pwd=pw;Encrypt=yes;"_s);
    }
};

POSTVANE_TEST(tst_DataActionRecords)
#include "tst_DataActionRecords.moc"
