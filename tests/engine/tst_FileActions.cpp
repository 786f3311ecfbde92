#include "ActionFixture.h"
#include "TestRegistry.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionExcel.h"
#include "actions/clsActionReport.h"
#include "foundation/GlobalBlock.h"
#include "store/MimeMail.h"
#include "store/StoreFixture.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFile>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QXmlStreamReader>
#include <unzip.h>
#include <xlsxwriter.h>

using namespace Qt::StringLiterals;
using namespace ActionTests;

namespace {

// One entry of a zip file, read with minizip; empty when it is not there.
QByteArray ZipEntry(const QString &Path, const char *Name)
{
    unzFile zip = unzOpen64(QFile::encodeName(Path).constData());
    QByteArray bytes;
    if (zip && unzLocateFile(zip, Name, 1) == UNZ_OK && unzOpenCurrentFile(zip) == UNZ_OK) {
        char buffer[4096];
        int read = 0;
        while ((read = unzReadCurrentFile(zip, buffer, sizeof buffer)) > 0)
            bytes.append(buffer, read);
        unzCloseCurrentFile(zip);
    }
    if (zip)
        unzClose(zip);
    return bytes;
}

// The cells of the workbook's first sheet, row by row, "|" between cells:
// texts as written (shared or inline), numbers as the sheet holds them.
QStringList SheetRows(const QString &Path)
{
    QStringList shared;
    QXmlStreamReader strings(ZipEntry(Path, "xl/sharedStrings.xml"));
    while (!strings.atEnd())
        if (strings.readNext() == QXmlStreamReader::StartElement && strings.name() == u"t")
            shared << strings.readElementText();
    const QByteArray sheet = ZipEntry(Path, "xl/worksheets/sheet1.xml");
    if (sheet.isEmpty())
        return {u"no sheet"_s};
    QXmlStreamReader xml(sheet);
    QStringList rows;
    QStringList cells;
    QString type;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement() && xml.name() == u"row") {
            rows << cells.join(u'|');
            cells.clear();
        } else if (xml.isStartElement() && xml.name() == u"c") {
            type = xml.attributes().value(u"t"_s).toString();
        } else if (xml.isStartElement() && (xml.name() == u"v" || xml.name() == u"t")) {
            const QString text = xml.readElementText();
            cells << (type == u"s" ? shared.value(text.toInt()) : text);
        }
    }
    return rows;
}

// A workbook written the usual way, with shared strings, as another
// program leaves it.
void WriteWorkbook(const QString &Path, int Sheets)
{
    lxw_workbook *book = workbook_new(QFile::encodeName(Path).constData());
    lxw_worksheet *sheet = workbook_add_worksheet(book, "Invoices");
    worksheet_write_string(sheet, 0, 0, "InvoiceNo", nullptr);
    worksheet_write_string(sheet, 0, 5, "Note", nullptr);
    worksheet_write_string(sheet, 1, 0, "OLD-1", nullptr);
    worksheet_write_number(sheet, 1, 1, 7.5, nullptr);
    worksheet_write_string(sheet, 1, 5, "kept", nullptr);
    for (int n = 1; n < Sheets; ++n)
        workbook_add_worksheet(book, nullptr);
    workbook_close(book);
}

// The Outbox gives rows whose due second has passed.
constexpr int DueWithin = 2100;

// The Outbox's rows as "RecordNo|ScheduledDate|Status", for a failure's message.
QString OutboxRows(const StoreFixture &Fixture)
{
    QSqlQuery query(QSqlDatabase::database(Fixture.Store.StoreConnection(), false));
    QStringList rows{QDateTime::currentDateTime().toString(Qt::ISODate)};
    if (query.exec(u"SELECT RecordNo, ScheduledDate, Status FROM Outbox"_s))
        while (query.next())
            rows << query.value(0).toString() + u'|' + query.value(1).toString() + u'|' + query.value(2).toString();
    return rows.join(u", "_s);
}

// Takes the Outbox's next row once its due second has passed.
bool TakeDue(clsMessageStore &Store, OutboxMessage &Row)
{
    QDeadlineTimer deadline(DueWithin);
    while (!Store.GetOutBox(Row)) {
        if (deadline.hasExpired())
            return false;
        QTest::qWait(100);
    }
    return true;
}

QByteArray FileBytes(const QString &Path)
{
    QFile file(Path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

// The CSV and Excel actions: rows added to workbooks old and new (read back
// with minizip), and files
// mailed through the Outbox at their frequency.
class tst_FileActions : public QObject
{
    Q_OBJECT

    static QString ExcelAction(const QString &Path)
    {
        clsActionExcel action;
        action.FileName = Path;
        return action.XML();
    }

private slots:
    void excelRowsGoIntoNewAndExistingWorkbooks()
    {
        StoreFixture f;
        const QString fresh = f.Path(u"out/new.xlsx"_s);
        Fixture fixture(ExcelAction(fresh));
        QCOMPARE(fixture.Run({u"X-1"_s, u"1,250.5"_s, u"2024-03-01"_s, u"yes"_s, u"3"_s, u"a <note> & more"_s}),
                 QStringList{u"Update Excel File: a row was added to "_s + fresh});
        fixture.Run({u"X-2"_s, u"not a number"_s, u""_s, u""_s, u""_s, u""_s});
        QCOMPARE(SheetRows(fresh), (QStringList{u"InvoiceNo|Amount|Due|Paid|Qty|Note"_s,
                                                u"X-1|1250.5|2024-03-01|yes|3|a <note> & more"_s,
                                                u"X-2|not a number"_s}));

        const QString existing = f.Path(u"existing.xlsx"_s);
        WriteWorkbook(existing, 1);
        Fixture appending(ExcelAction(existing));
        appending.Run({u"X-3"_s, u"2"_s});
        appending.Run({u"X-4"_s, u"3"_s});
        QCOMPARE(SheetRows(existing), (QStringList{u"InvoiceNo|Note"_s, u"OLD-1|7.5|kept"_s, u"X-3|2"_s, u"X-4|3"_s}));
        QVERIFY(ZipEntry(existing, "xl/workbook.xml").contains("name=\"Invoices\""));
    }

    void workbooksThatCannotBeExtendedAreLeftAlone()
    {
        StoreFixture f;
        const QString twoSheets = f.Path(u"two.xlsx"_s);
        WriteWorkbook(twoSheets, 2);
        const QString notZip = f.Path(u"text.xlsx"_s);
        QFile text(notZip);
        QVERIFY(text.open(QIODevice::WriteOnly) && text.write("InvoiceNo,Amount\n") > 0);
        text.close();
        for (const QString &path : {twoSheets, notZip}) {
            const QByteArray before = FileBytes(path);
            Fixture fixture(ExcelAction(path));
            const QStringList lines = fixture.Run({u"Y-1"_s});
            QCOMPARE(lines.size(), 1);
            QVERIFY2(lines.first().startsWith(u"* Update Excel File "_s) && lines.first().endsWith(u"nothing was written"_s),
                     qPrintable(lines.first()));
            QCOMPARE(FileBytes(path), before);
        }
        QCOMPARE(Fixture(ExcelAction(QString())).Run({}), QStringList{u"* Update Excel File: the action names no file"_s});
    }

    // Every record: each row is mailed with the file attached, and the file
    // then cleared, so the next row starts it again with its header.
    void filesAreMailedThroughTheOutboxAndCleared()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        Global.Settings.DefaultFromAddress = u"server@example.org"_s;
        clsActionCSV csv;
        csv.FileName = f.Path(u"sent.csv"_s);
        csv.LineTerminator = u"LF"_s;
        csv.Send = true;
        csv.SendTo = u"accounts@example.com"_s;
        csv.SendClear = true;
        Fixture fixture(csv.XML());
        QCOMPARE(fixture.Run({u"S-1"_s, u"5"_s}, u"M1"_s, &f.Store),
                 (QStringList{u"Update CSV File: a row was added to "_s + csv.FileName,
                              u"Update CSV File "_s + csv.FileName + u": sent to accounts@example.com and cleared"_s}));
        QVERIFY(!QFile::exists(csv.FileName));
        OutboxMessage sent;
        QVERIFY2(TakeDue(f.Store, sent), qPrintable(OutboxRows(f)));
        QCOMPARE(sent.MailTo, u"accounts@example.com"_s);
        QCOMPARE(sent.MailFrom, u"server@example.org"_s);
        QCOMPARE(sent.AccountID, u"ACC1"_s);
        MimeMail mail;
        QVERIFY(mail.LoadMime(sent.Mime));
        QCOMPARE(mail.Attachments().size(), 1);
        QCOMPARE(mail.Attachments().first().Name, u"sent.csv"_s);
        QCOMPARE(mail.Attachments().first().Data, QByteArray("InvoiceNo,Amount,Due,Paid,Qty,Note\nS-1,5,,,,\n"));

        // Without an address to send to the row stays and the line says why.
        csv.SendTo = u"%NoAddress%"_s;
        Fixture nowhere(csv.XML());
        const QStringList lines = nowhere.Run({u"S-2"_s}, u"M2"_s, &f.Store);
        QVERIFY2(lines.last().startsWith(u"* "_s) && lines.last().contains(u"address to send to"_s), qPrintable(lines.last()));
        QVERIFY(QFile::exists(csv.FileName));
    }

    // Every hour: the first row starts the hour, a row within it waits, a
    // row after it sends the whole file, the rows of the hour together.
    void aFrequencyGathersRowsUntilItIsDue()
    {
        StoreFixture f;
        QVERIFY(f.Store.OpenMessageStore());
        Global.Settings.DefaultFromAddress = u"server@example.org"_s;
        clsActionExcel excel;
        excel.FileName = f.Path(u"hourly.xlsx"_s);
        excel.Send = true;
        excel.SendTo = u"accounts@example.com"_s;
        excel.SendFreq = 1;
        Fixture fixture(excel.XML());
        QCOMPARE(fixture.Run({u"H-1"_s}, u"M1"_s, &f.Store).size(), 1);
        QCOMPARE(fixture.Run({u"H-2"_s}, u"M2"_s, &f.Store).size(), 1);
        OutboxMessage sent;
        QTest::qWait(DueWithin);
        QVERIFY(!f.Store.GetOutBox(sent));
        {
            QSettings state(f.Path(u"FileSends.ini"_s), QSettings::IniFormat);
            const QString key = QString::fromLatin1(
                QCryptographicHash::hash(excel.FileName.toUtf8(), QCryptographicHash::Md5).toHex());
            QVERIFY(state.contains(key));
            state.setValue(key, QDateTime::currentDateTime().addSecs(-3601));
        }
        const QStringList lines = fixture.Run({u"H-3"_s}, u"M3"_s, &f.Store);
        QCOMPARE(lines.last(), u"Update Excel File "_s + excel.FileName + u": sent to accounts@example.com"_s);
        QVERIFY2(TakeDue(f.Store, sent), qPrintable(OutboxRows(f)));
        MimeMail mail;
        QVERIFY(mail.LoadMime(sent.Mime));
        QCOMPARE(mail.Attachments().first().Data, FileBytes(excel.FileName));
        QCOMPARE(SheetRows(excel.FileName).size(), 4);
        QCOMPARE(fixture.Run({u"H-4"_s}, u"M4"_s, &f.Store).size(), 1);
        QTest::qWait(DueWithin);
        QVERIFY(!f.Store.GetOutBox(sent));
    }

    // No designer here: the run says so in one error line and goes on.
    void aReportSaysWhyItCannotRun()
    {
        clsActionReport report;
        report.Name = u"Invoice"_s;
        report.Export = true;
        const QStringList lines = Fixture(report.XML()).Run({u"R-1"_s});
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(u"* Run A Report Invoice: "_s) && lines.first().contains(u"no report designer"_s),
                 qPrintable(lines.first()));
    }
};

POSTVANE_TEST(tst_FileActions)
#include "tst_FileActions.moc"
