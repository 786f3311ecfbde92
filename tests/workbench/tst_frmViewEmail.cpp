#include "ModalCloser.h"
#include "TestRegistry.h"
#include "ViewsFixture.h"
#include "workbench/HtmlView.h"
#include "workbench/MessageDocument.h"
#include "workbench/frmViewEmail.h"
#include "workbench/frmViewPreview.h"

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>
#include <QTextDocument>

namespace {

// A red dot, as a 1x1 PNG.
const QByteArray Dot = QByteArray::fromBase64(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mP8z8DwHwAFBQIAX8jx0gAAAABJRU5ErkJggg==");

// An HTML message with an inline image by "cid:", a remote image, a script
// and a PDF attachment, built by GMime from its parts.
QString HtmlMessage()
{
    const QString html = QStringLiteral(
        "<html><body><p>Dear customer, <b>order 77</b> is ready.</p><img src=\"cid:<dot@alpha.test>\">"
        "<img src=\"cid:dot@alpha.test\"><img src=\"http://tracker.example/pixel.png\">"
        "<script>document.write('owned')</script><a href=\"https://alpha.test/o/77\">Order</a></body></html>");
    const QString mime = QStringLiteral(
        "From: Ann Buyer <ann@orders.example>\r\nTo: \"In, Box\" <in@alpha.test>, sales@alpha.test\r\n"
        "Cc: Carl <carl@alpha.test>\r\nSubject: Order 77 =?iso-8859-1?Q?r=E9ady?=\r\nDate: Mon, 02 Sep 2024 10:00:00 +0000\r\n"
        "X-Mailer: Tester\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"outer\"\r\n\r\n"
        "--outer\r\nContent-Type: multipart/related; boundary=\"inner\"\r\n\r\n"
        "--inner\r\nContent-Type: text/html; charset=utf-8\r\n\r\n%1\r\n"
        "--inner\r\nContent-Type: image/png\r\nContent-ID: <dot@alpha.test>\r\nContent-Transfer-Encoding: base64\r\n\r\n%2\r\n"
        "--inner--\r\n"
        "--outer\r\nContent-Type: application/pdf; name=\"report.pdf\"\r\nContent-Disposition: attachment; filename=\"report.pdf\"\r\n"
        "Content-Transfer-Encoding: base64\r\n\r\n%3\r\n--outer--\r\n")
        .arg(html, QString::fromLatin1(Dot.toBase64()), QString::fromLatin1(QByteArray("%PDF-1.4 fake").toBase64()));
    MimeMail mail;
    mail.LoadMime(mime);
    return QString::fromUtf8(mail.GetMime());
}

} // namespace

// The reader and the reading pane on messages of a real server's store, and
// the reading of hostile or damaged messages.
class tst_frmViewEmail : public QObject
{
    Q_OBJECT
    ServerFixture server;
    qint64 htmlRecord = 0;
    qint64 plainRecord = 0;
    qint64 strippedRecord = 0;

    std::unique_ptr<frmViewEmail> Reader(qint64 Record)
    {
        auto reader = std::make_unique<frmViewEmail>(QStringLiteral("FolderA"), qint32(Record), QStringLiteral("A01"));
        reader->setAttribute(Qt::WA_DeleteOnClose, false);
        reader->GetMessage();
        return reader;
    }

private slots:
    void initTestCase()
    {
        QString problem;
        QVERIFY2(ViewsFixture::Start(server, problem), qPrintable(problem));
        ViewsFixture::Row row;
        row.Subject = QStringLiteral("Order 77");
        row.Mime = HtmlMessage();
        row.UID = QStringLiteral("uid-77");
        htmlRecord = ViewsFixture::Insert(server, row);
        ViewsFixture::LogLine(server, row.UID, QStringLiteral("Trigger Orders matched"));
        row = ViewsFixture::Row();
        row.Subject = QStringLiteral("Plain note");
        row.Matched = false;
        row.Succeeded = false;
        row.Mime = ViewsFixture::PlainMime(row.Subject, QStringLiteral("bob@beta.test"), row.Date,
                                           QStringLiteral("First paragraph.\r\n\r\nSecond <paragraph>."));
        plainRecord = ViewsFixture::Insert(server, row);
        // A message whose text was taken out of the store: headers alone.
        row = ViewsFixture::Row();
        row.Subject = QStringLiteral("Stripped");
        row.Mime = QStringLiteral("From: x@y.example\r\nSubject: Stripped\r\n\r\n");
        strippedRecord = ViewsFixture::Insert(server, row);
        QVERIFY(htmlRecord > 0 && plainRecord > 0 && strippedRecord > 0);
    }

    void theReaderShowsEveryPartOfAnHtmlMessage()
    {
        auto reader = Reader(htmlRecord);
        reader->show(); // images are asked for as the page is laid out
        QTRY_COMPARE_WITH_TIMEOUT(reader->lblSubject->text(), QStringLiteral("Order 77 r\u00e9ady"), 20000);
        QCOMPARE(reader->windowTitle(), QStringLiteral("Order 77 r\u00e9ady - Message %1").arg(htmlRecord));
        QCOMPARE(reader->lblTo->text(), QStringLiteral("In, Box, sales@alpha.test"));
        QCOMPARE(reader->lblCC->text(), QStringLiteral("Carl"));
        QCOMPARE(reader->lblStatus->text(), QStringLiteral("Success"));
        QCOMPARE(reader->CurrentView(), frmViewEmail::ViewHtml);

        // The page: text shown, both forms of the cid address resolved, the
        // remote image refused, the script not run.
        const QString page = reader->Browser->toPlainText();
        QVERIFY(page.contains(QStringLiteral("order 77 is ready")));
        QVERIFY(!page.contains(QStringLiteral("owned")));
        QTRY_COMPARE(reader->Browser->Refused, QStringList{QStringLiteral("http://tracker.example/pixel.png")});
        const QVariant image = reader->Browser->document()->resource(QTextDocument::ImageResource, QUrl(QStringLiteral("cid:dot@alpha.test")));
        QVERIFY(image.isValid());
        QVERIFY(reader->Document.Html.contains(QStringLiteral("<a href=\"https://alpha.test/o/77\" target='_blank'>")));

        // Headers without the process headers; the attachments without the
        // image and the log; the log in its grid.
        const QString headers = reader->txtHeaders->toPlainText();
        QVERIFY(headers.contains(QStringLiteral("Subject: Order 77")));
        QVERIFY(!headers.contains(QStringLiteral("Postvane-"), Qt::CaseInsensitive));
        QVERIFY(!headers.contains(QStringLiteral("X-Mailer")));
        QCOMPARE(reader->lstAttachments->count(), 1);
        QVERIFY(reader->lstAttachments->item(0)->text().startsWith(QStringLiteral("report.pdf (")));
        QVERIFY(reader->GridLog->rowCount() >= 1);
        bool logged = false;
        for (int row = 0; row < reader->GridLog->rowCount(); ++row)
            logged = logged || reader->GridLog->item(row, 1)->text().contains(QStringLiteral("Trigger Orders matched"));
        QVERIFY(logged);

        // Saving writes the bytes; Save As leaves the log out.
        QTemporaryDir folder;
        QVERIFY(reader->SaveAttachmentTo(0, folder.filePath(QStringLiteral("r.pdf"))));
        QFile saved(folder.filePath(QStringLiteral("r.pdf")));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), QByteArray("%PDF-1.4 fake"));
        QVERIFY(reader->Document.Mime.contains(QStringLiteral("ProcessLog.log")));
        QVERIFY(!reader->Document.MimeWithoutLog().contains(QStringLiteral("ProcessLog.log")));
        QVERIFY(reader->Document.MimeWithoutLog().contains(QStringLiteral("report.pdf")));
        QVERIFY(reader->PrintHtml().contains(QStringLiteral("Trigger Match</b></td><td>Yes")));
        ShellFixture::Picture(reader.get(), QStringLiteral("reader"));
    }

    void aPlainMessageShowsItsTextAndTheMatchState()
    {
        auto reader = Reader(plainRecord);
        QTRY_COMPARE_WITH_TIMEOUT(reader->lblSubject->text(), QStringLiteral("Plain note"), 20000);
        QCOMPARE(reader->CurrentView(), frmViewEmail::ViewText);
        QVERIFY(reader->txtText->toPlainText().startsWith(QStringLiteral("First paragraph.")));
        QCOMPARE(reader->lblStatus->text(), QStringLiteral("Did not match trigger conditions"));
        QVERIFY(!reader->lblCC->isVisibleTo(reader.get()));
        QVERIFY(!reader->lstAttachments->isVisibleTo(reader.get()));

        frmViewPreview pane;
        QSignalSpy shown(&pane, &frmViewPreview::Shown);
        pane.ShowMessage(QStringLiteral("FolderA"), qint32(plainRecord));
        QVERIFY(shown.wait(20000));
        // Paragraphs between blank lines, escaped.
        QCOMPARE(pane.Browser->document()->blockCount(), 2);
        QVERIFY(pane.Browser->toPlainText().contains(QStringLiteral("Second <paragraph>.")));
    }

    void aStrippedOrMissingMessageShowsWhatThereIs()
    {
        auto stripped = Reader(strippedRecord);
        QTRY_COMPARE_WITH_TIMEOUT(stripped->lblSubject->text(), QStringLiteral("Stripped"), 20000);
        QCOMPARE(stripped->Browser->toPlainText(), QString());

        QSignalSpy bar(&Remote(), &frmRemote::MessageBar);
        auto missing = Reader(999999);
        QTRY_COMPARE_WITH_TIMEOUT(missing->lblSubject->text(), QStringLiteral("There is no message with this number."), 20000);
        QVERIFY(!missing->Forward(QStringLiteral("x@example.com")));
        QCOMPARE(bar.last().first().toString(), QStringLiteral("There is no message with this number."));
    }

    void forwardAndReprocessGoThroughTheServer()
    {
        auto reader = Reader(plainRecord);
        QTRY_COMPARE_WITH_TIMEOUT(reader->lblSubject->text(), QStringLiteral("Plain note"), 20000);
        {
            ModalCloser closer(QMessageBox::No);
            reader->ForwardMessage();
            QCOMPARE(closer.Texts, QStringList{QStringLiteral("Forward Message?\n")});
        }
        QVERIFY(reader->Forward(QStringLiteral("boss@alpha.test")));
        QCOMPARE(ViewsFixture::Value(server, QStringLiteral("SELECT COUNT(*) FROM Outbox WHERE MailTo LIKE '%boss@alpha.test%'")).toInt(), 1);

        QSignalSpy changed(reader.get(), &frmViewEmail::MessageChanged);
        QVERIFY(reader->Reprocess());
        QCOMPARE(changed.size(), 1);
    }

    void hostileMessagesAreShownAsWellAsTheyCanBe()
    {
        MessageDocument document;
        // Ten megabytes of nested tables: shown as text, not laid out.
        QString nested = QStringLiteral("<html><body>");
        for (int i = 0; i < 200; ++i)
            nested += QStringLiteral("<table><tr><td>");
        nested += QStringLiteral("deep") + QString(10'000'000, u'x');
        MimeMail heavy;
        heavy.Compose(QStringLiteral("a@b.example"), QStringLiteral("c@d.example"), QStringLiteral("Heavy"),
                      QDateTime::currentDateTime(), QString(), nested);
        QVERIFY(document.Load(QString::fromUtf8(heavy.GetMime())));
        QVERIFY(document.Html.startsWith(QStringLiteral("<pre>")));
        QVERIFY(MessageDocument::TooHeavy(nested.left(2000)));
        HtmlView view;
        view.ShowHtml(document.Html);

        // Five hundred attachments are all listed.
        MimeMail many;
        many.Compose(QStringLiteral("a@b.example"), QStringLiteral("c@d.example"), QStringLiteral("Many"),
                     QDateTime::currentDateTime(), QStringLiteral("see the files"));
        for (int i = 0; i < 500; ++i)
            many.AddAttachment(QStringLiteral("f%1.txt").arg(i), QByteArray("x"), QStringLiteral("text/plain"));
        QVERIFY(document.Load(QString::fromUtf8(many.GetMime())));
        QCOMPARE(document.Attachments.size(), 500);
        QCOMPARE(document.Text.trimmed(), QStringLiteral("see the files"));

        // A header in a charset nobody knows, and a body in one.
        QVERIFY(document.Load(QStringLiteral("Subject: =?x-unheard-of?Q?caf=E9?=\r\nContent-Type: text/plain; charset=x-unheard-of\r\n\r\ncaf\u00e9\r\n")));
        QVERIFY(!document.Subject.isEmpty());
        QVERIFY(!document.Load(QString()));
        QVERIFY(!document.Load(QStringLiteral("Error:Access Denied")));

        // The cid forms and the links.
        QCOMPARE(MessageDocument::PrepareHtml(QStringLiteral("<img src='cid:&lt;a@b&gt;'><A HREF=x>y</A>")),
                 QStringLiteral("<img src='cid:a@b'><A HREF=x target='_blank'>y</A>"));
        QCOMPARE(MessageDocument::RecipientNames(QStringLiteral("\"Doe, Jane\" <j@x.example>; bob@y.example, plain")),
                 QStringLiteral("Doe, Jane, bob@y.example, plain"));
    }
};

POSTVANE_TEST(tst_frmViewEmail)
#include "tst_frmViewEmail.moc"
