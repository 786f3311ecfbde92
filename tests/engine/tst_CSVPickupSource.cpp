#include "RecordingSink.h"
#include "TestRegistry.h"

#include "engine/sources/CSVPickupReader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <zip.h>

// CSV files and Excel workbooks taken row by row from a pickup folder.
class tst_CSVPickupSource : public QObject
{
    Q_OBJECT

    // A file in the folder, last changed a minute ago so that it has settled.
    static QString Put(const QString &Folder, const QString &Name, const QByteArray &Content)
    {
        QFile file(QDir(Folder).filePath(Name));
        file.open(QIODevice::WriteOnly | QIODevice::Truncate);
        file.write(Content);
        file.flush();
        file.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
        return file.fileName();
    }

    static void Append(const QString &Path, const QByteArray &Content)
    {
        QFile file(Path);
        file.open(QIODevice::Append);
        file.write(Content);
        file.flush();
        file.setFileTime(QDateTime::currentDateTime().addSecs(-30), QFileDevice::FileModificationTime);
    }

    static SourceAccount Account(const QString &Folder, const QString &Mask = QString())
    {
        SourceAccount account;
        account.AccountID = QStringLiteral("SHEETS");
        account.Name = QStringLiteral("Sheets");
        account.CSVPickupFolder = Folder;
        account.CSVPickupMask = Mask;
        return account;
    }

    static QString Body(const SourceMessage &Message)
    {
        const QByteArray mime = Message.Mime;
        return QString::fromUtf8(mime.mid(mime.indexOf("\r\n\r\n") + 4));
    }

    static QStringList Bodies(const RecordingSink &Sink)
    {
        QStringList bodies;
        for (const SourceMessage &message : Sink.Queued)
            bodies << Body(message);
        return bodies;
    }

    // A zipped part of a workbook.
    static void Part(zipFile Zip, const QString &Name, const QByteArray &Xml)
    {
        const QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\r\n" + Xml;
        zipOpenNewFileInZip(Zip, Name.toUtf8().constData(), nullptr, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            Z_DEFAULT_COMPRESSION);
        zipWriteInFileInZip(Zip, text.constData(), unsigned(text.size()));
        zipCloseFileInZip(Zip);
    }

    // A cell as Excel writes it: a shared string's index, or an inline string.
    static QByteArray Text(const char *Reference, int Shared, const QByteArray &Value, bool Inline)
    {
        return Inline ? QByteArray("<c r=\"") + Reference + "\" t=\"inlineStr\"><is><t>" + Value + "</t></is></c>"
                      : QByteArray("<c r=\"") + Reference + "\" t=\"s\"><v>" + QByteArray::number(Shared) + "</v></c>";
    }

    // A workbook of two sheets: "Summary" first, then "Orders" with a header
    // that skips column C, a number, a boolean and a row left empty. Inline
    // keeps the strings in the cells instead of the shared table.
    static void Workbook(const QString &Path, bool Inline)
    {
        zipFile zip = zipOpen64(QFile::encodeName(Path).constData(), APPEND_STATUS_CREATE);
        QVERIFY(zip);
        const QByteArray main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
        const QByteArray relations = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
        Part(zip, QStringLiteral("[Content_Types].xml"),
             "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"/>");
        Part(zip, QStringLiteral("xl/workbook.xml"),
             "<workbook xmlns=\"" + main + "\" xmlns:r=\"" + relations + "\"><sheets>"
             "<sheet name=\"Summary\" sheetId=\"1\" r:id=\"rId2\"/><sheet name=\"Orders\" sheetId=\"2\" r:id=\"rId1\"/>"
             "</sheets></workbook>");
        Part(zip, QStringLiteral("xl/_rels/workbook.xml.rels"),
             "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
             "<Relationship Id=\"rId1\" Type=\"" + relations + "/worksheet\" Target=\"worksheets/sheet2.xml\"/>"
             "<Relationship Id=\"rId2\" Type=\"" + relations + "/worksheet\" Target=\"/xl/worksheets/sheet1.xml\"/>"
             "<Relationship Id=\"rId3\" Type=\"" + relations + "/sharedStrings\" Target=\"sharedStrings.xml\"/>"
             "</Relationships>");
        if (!Inline) {
            Part(zip, QStringLiteral("xl/sharedStrings.xml"),
                 "<sst xmlns=\"" + main + "\" count=\"8\" uniqueCount=\"8\">"
                 "<si><t>Total</t></si><si><t>Order</t></si><si><t>Customer</t></si><si><t>Paid</t></si>"
                 "<si><t>A-1</t></si><si><r><t>Zo\xc3\xab </t></r><r><rPr><b/></rPr><t>\xc3\x84mter</t></r>"
                 "<rPh sb=\"0\" eb=\"1\"><t>ZO</t></rPh></si><si><t>Bob</t></si><si><t>A-2</t></si></sst>");
        }
        Part(zip, QStringLiteral("xl/worksheets/sheet1.xml"),
             "<worksheet xmlns=\"" + main + "\"><sheetData><row r=\"1\">" + Text("A1", 0, "Total", Inline)
                 + "</row><row r=\"2\"><c r=\"A2\"><v>2</v></c></row></sheetData></worksheet>");
        Part(zip, QStringLiteral("xl/worksheets/sheet2.xml"),
             "<worksheet xmlns=\"" + main + "\"><sheetData><row r=\"1\">" + Text("A1", 1, "Order", Inline)
                 + Text("B1", 2, "Customer", Inline) + Text("D1", 3, "Paid", Inline) + "</row><row r=\"2\">"
                 + Text("A2", 4, "A-1", Inline) + Text("B2", 5, "Zo\xc3\xab \xc3\x84mter", Inline)
                 + "<c r=\"C2\" s=\"1\"><v>12.5</v></c><c r=\"D2\" t=\"b\"><v>1</v></c></row><row r=\"3\"/>"
                 "<row r=\"4\">" + Text("A4", 7, "A-2", Inline)
                 + Text("B4", 6, "Bob", Inline) + "</row></sheetData></worksheet>");
        zipClose(zip, nullptr);
    }

private slots:
    void csvRowsBecomeNamedValuesAndRowsAddedLaterComeOnce()
    {
        QTemporaryDir pickup;
        const QString orders = Put(pickup.path(), QStringLiteral("orders.csv"),
                                   "Order;Customer;Note\r\n"
                                   "1;\"Smith; John\";\"said \"\"hi\"\"\r\non two lines\"\r\n"
                                   "\r\n"
                                   "2;Ann;\n");
        Put(pickup.path(), QStringLiteral("people.txt"), "Name\tCity\nEva\t\"Oslo, Norway\"\n");
        Put(pickup.path(), QStringLiteral("skipped.dat"), "A,B\n1,2\n");
        RecordingSink sink;
        SourceAccount account = Account(pickup.path(), QStringLiteral("*.csv; *.txt"));
        CSVPickupReader reader;
        SourceReadResult result = reader.Read(account, sink);
        QVERIFY2(!result.Failed, qPrintable(result.Failure));
        QCOMPARE(result.NewMessages, 3);
        const QStringList bodies = Bodies(sink);
        QVERIFY(bodies.contains(QStringLiteral("Order: 1\r\nCustomer: Smith; John\r\nNote: said \"hi\"\r\non two lines\r\n")));
        QVERIFY(bodies.contains(QStringLiteral("Order: 2\r\nCustomer: Ann\r\nNote: \r\n")));
        QVERIFY(bodies.contains(QStringLiteral("Name: Eva\r\nCity: Oslo, Norway\r\n")));
        for (const SourceMessage &message : sink.Queued) {
            QVERIFY(message.Mime.startsWith("Postvane-AccountID: SHEETS\r\nPostvane-Source: CSV\r\n"));
            QVERIFY(message.Mime.contains("\r\nSubject: "));
        }
        QVERIFY(account.CSVPickupLastStatus.endsWith(QStringLiteral("3 new rows from 2 files")));
        QVERIFY(QFile::exists(orders));

        // The same files again give nothing; a row added gives that row only.
        QCOMPARE(reader.Read(account, sink).NewMessages, 0);
        Append(orders, "3;Cy;late\r\n");
        result = reader.Read(account, sink);
        QCOMPARE(result.NewMessages, 1);
        QCOMPARE(Body(sink.Queued.last()), QStringLiteral("Order: 3\r\nCustomer: Cy\r\nNote: late\r\n"));
        QCOMPARE(sink.Duplicates, 0);
    }

    void aFileIsDeletedOnlyWhenAllItsRowsAreQueued()
    {
        QTemporaryDir pickup;
        const QString report = Put(pickup.path(), QStringLiteral("report.csv"),
                                   "Monthly report\n\nID,Item\n1,apples\n2,pears\n3,plums\n");
        RecordingSink sink;
        SourceAccount account = Account(pickup.path());
        account.CSVPickupHeaderRow = 3;
        account.CSVPickupDelete = true;

        sink.Refuse = true;
        QVERIFY(CSVPickupReader().Read(account, sink).Failed);
        QVERIFY(QFile::exists(report));

        sink.Refuse = false;
        account.MaxMessagesPerRun = 2;
        QCOMPARE(CSVPickupReader().Read(account, sink).NewMessages, 2);
        QVERIFY(QFile::exists(report));
        QCOMPARE(CSVPickupReader().Read(account, sink).NewMessages, 1);
        QVERIFY(!QFile::exists(report));
        QCOMPARE(Bodies(sink),
                 QStringList({QStringLiteral("ID: 1\r\nItem: apples\r\n"), QStringLiteral("ID: 2\r\nItem: pears\r\n"),
                              QStringLiteral("ID: 3\r\nItem: plums\r\n")}));

        // A header row the file does not have.
        Put(pickup.path(), QStringLiteral("short.csv"), "A,B\n1,2\n");
        account.CSVPickupHeaderRow = 9;
        const SourceReadResult missing = CSVPickupReader().Read(account, sink);
        QVERIFY(missing.Failed);
        QVERIFY2(missing.Failure.contains(QStringLiteral("\"short.csv\" has no row 9")), qPrintable(missing.Failure));
    }

    void excelWorkbooksAreReadByWorksheetNameOrTheFirst()
    {
        for (const bool inlineStrings : {false, true}) {
            QTemporaryDir pickup;
            const QString path = QDir(pickup.path()).filePath(QStringLiteral("book.xlsx"));
            Workbook(path, inlineStrings);
            QFile book(path);
            book.open(QIODevice::ReadWrite);
            book.setFileTime(QDateTime::currentDateTime().addSecs(-60), QFileDevice::FileModificationTime);
            book.close();

            RecordingSink sink;
            SourceAccount account = Account(pickup.path());
            account.CSVPickupWorkSheet = QStringLiteral("orders");
            SourceReadResult result = CSVPickupReader().Read(account, sink);
            QVERIFY2(!result.Failed, qPrintable(result.Failure));
            QCOMPARE(Bodies(sink), QStringList({QStringLiteral("Order: A-1\r\nCustomer: Zoë Ämter\r\nColumn3: 12.5\r\nPaid: TRUE\r\n"),
                                                QStringLiteral("Order: A-2\r\nCustomer: Bob\r\n")}));

            RecordingSink first;
            account.CSVPickupWorkSheet.clear();
            QCOMPARE(CSVPickupReader().Read(account, first).NewMessages, 1);
            QCOMPARE(Body(first.Queued.first()), QStringLiteral("Total: 2\r\n"));

            account.CSVPickupWorkSheet = QStringLiteral("Invoices");
            result = CSVPickupReader().Read(account, first);
            QVERIFY(result.Failed);
            QVERIFY2(result.Failure.contains(QStringLiteral("no worksheet \"Invoices\" (it has \"Summary\", \"Orders\")")),
                     qPrintable(result.Failure));
        }
    }

    void filesThatAreNotCSVAreNamedAndLeftWhileTheOthersAreTaken()
    {
        QTemporaryDir pickup;
        QByteArray binary("\x89PNG\r\n\x1a\n", 8);
        binary += QByteArray(64, '\0');
        Put(pickup.path(), QStringLiteral("picture.csv"), binary);
        Put(pickup.path(), QStringLiteral("broken.csv"), "A,B\n1,\"never closed\n2,3\n");
        Put(pickup.path(), QStringLiteral("fake.xlsx"), "A,B\n1,2\n");
        Put(pickup.path(), QStringLiteral("good.csv"), "A,B\n1,2\n");
        RecordingSink sink;
        SourceAccount account = Account(pickup.path());
        account.CSVPickupDelete = true;
        const SourceReadResult result = CSVPickupReader().Read(account, sink);
        QCOMPARE(result.NewMessages, 1);
        QVERIFY(result.Failed);
        QVERIFY2(result.Failure.contains(QStringLiteral("\"picture.csv\" is not a CSV file: it holds binary data")),
                 qPrintable(result.Failure));
        QVERIFY2(result.Failure.contains(QStringLiteral("\"broken.csv\" is not a CSV file: a quoted value that begins on line 2 is never closed")),
                 qPrintable(result.Failure));
        QVERIFY2(result.Failure.contains(QStringLiteral("\"fake.xlsx\" is not an Excel workbook")), qPrintable(result.Failure));
        QCOMPARE(QDir(pickup.path()).entryList(QDir::Files),
                 QStringList({QStringLiteral("broken.csv"), QStringLiteral("fake.xlsx"), QStringLiteral("picture.csv")}));
        QVERIFY(account.CSVPickupLastStatus.contains(QStringLiteral("picture.csv")));
    }
};

POSTVANE_TEST(tst_CSVPickupSource)
#include "tst_CSVPickupSource.moc"
