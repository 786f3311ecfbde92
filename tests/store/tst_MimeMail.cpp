#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "store/MimeMail.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

QByteArray MailFile(const QString &name)
{
    QFile file(QFINDTESTDATA(QStringLiteral("mail/") + name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("test message %s is missing", qPrintable(name));
    return file.readAll();
}

template <typename Text> MimeMail Loaded(const Text &mime)
{
    MimeMail mail;
    mail.LoadMime(mime);
    return mail;
}

QString Md5(const QByteArray &data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Md5).toHex());
}

// Name, type, content id, the content as size and MD5 (or "message"), and
// "related" for an item of the HTML body.
QStringList Described(const QList<MimeAttachment> &attachments)
{
    QStringList described;
    for (const MimeAttachment &item : attachments) {
        const QString content = item.IsAttachedMessage ? QStringLiteral("message")
                                                       : QString::number(item.Size()) + u' ' + Md5(item.Data);
        described.append(QStringList({item.Name, item.ContentType, item.ContentID, content,
                                      item.IsRelatedItem ? QStringLiteral("related") : QString()})
                             .join(u'|'));
    }
    return described;
}

QStringList Names(const QList<MimeHeader> &headers)
{
    QStringList names;
    for (const MimeHeader &header : headers)
        names.append(header.Name);
    return names;
}

// The header names as they stand in the written text, folded lines skipped.
QStringList WrittenNames(const QByteArray &mime)
{
    QStringList names;
    for (const QString &line : QString::fromUtf8(mime.left(mime.indexOf("\r\n\r\n"))).split(QStringLiteral("\r\n"))) {
        if (!line.startsWith(u' ') && !line.startsWith(u'\t'))
            names.append(line.section(u':', 0, 0));
    }
    return names;
}

const QString PdfMd5 = QStringLiteral("2baff05297ecad549b053a2abbc0e9c0");

} // namespace

class tst_MimeMail : public QObject
{
    Q_OBJECT
    ErrorCapture errors;

private slots:
    void init() { errors.clear(); }

    void headersAreDecodedAndListedInOrder()
    {
        const MimeMail mail = Loaded(MailFile(QStringLiteral("alternative.eml")));
        QCOMPARE(Names(mail.Headers()),
                 QStringList({"Return-Path", "Received", "Received", "From", "To", "Subject", "Date", "Message-ID",
                              "MIME-Version", "Content-Type", "X-Mailer", "Thread-Index", "Content-Language"}));
        QCOMPARE(mail.Header(QStringLiteral("subject")), QStringLiteral("Grüße aus München: Ihre Bestellung ist unterwegs"));
        QCOMPARE(mail.Header(QStringLiteral("From")),
                 QStringLiteral("Anna Schmidt – Lieferant GmbH <anna.schmidt@lieferant.example.de>"));
        QCOMPARE(mail.Header(QStringLiteral("X-Missing")), QString());
        QCOMPARE(mail.Date(), QDateTime(QDate(2024, 3, 12), QTime(9, 41, 15), Qt::OffsetFromUTC, 3600));

        QCOMPARE(Loaded(MailFile(QStringLiteral("mixed_nested.eml"))).Header(QStringLiteral("Subject")),
                 QStringLiteral("Re: Anfrage über die Lieferung – Bestellung #4711"));
        // 0xA4 is the euro sign in ISO-8859-15 but the currency sign in ISO-8859-1.
        QCOMPARE(Loaded(MailFile(QStringLiteral("latin9_8bit.eml"))).Header(QStringLiteral("Subject")),
                 QStringLiteral("Tagesabschluss über 1.250 €"));
    }

    void bodiesAndAttachmentsAreFound_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("textHas");
        QTest::addColumn<QString>("textCharset");
        QTest::addColumn<QStringList>("htmlHas");
        QTest::addColumn<QString>("htmlCharset");
        QTest::addColumn<QStringList>("attachments");
        // Labelled Latin-1, the text has a windows-1252 euro sign, as much mail does.
        QTest::newRow("alternative, quoted-printable")
            << "alternative.eml"
            << QStringList({"Die Sendungsnummer lautet 00340434161094042557.\r\n", "Versandkosten: 4,90 €\r\n",
                            "Grüße aus München\r\nAnna Schmidt"})
            << "iso-8859-1"
            << QStringList({"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">",
                            "<p>Grüße aus München<br>"})
            << "utf-8" << QStringList();
        QTest::newRow("nested mixed, windows-1252 and base64")
            << "mixed_nested.eml"
            << QStringList({"Rechnung für März – Betrag 1.250,00 €.", "den Hinweis „Zahlbar in 14 Tagen“."})
            << "windows-1252" << QStringList({"Betrag 1.250,00\u00a0€", "Grüße aus Zürich ✓"}) << "UTF-8"
            << QStringList({"logo.png|image/png|part1.8C2E7A41.5B3D9F02@lieferant.example.de|69 "
                            "3ab739d7d4d7296eeafd3b9303b5121b|related",
                            "Rechnung März.pdf|application/pdf||589 " + PdfMd5 + "|",
                            "Lieferschein 4711.eml|message/rfc822||message|"});
        QTest::newRow("single part, 8-bit ISO-8859-15, LF line ends")
            << "latin9_8bit.eml" << QStringList({"Umsatz bar:    1.250,00 €\n", "Kassierer: Jürgen Šimek\n"})
            << "ISO-8859-15" << QStringList() << QString() << QStringList();
        QTest::newRow("no headers")
            << "no_headers.eml"
            << QStringList({"Bestellung 4711 ist eingegangen.\r\nBitte pruefen Sie den Lieferschein.\r\n"}) << QString()
            << QStringList() << QString() << QStringList();
        // An unknown charset is read as UTF-8 when the bytes are; a named text
        // part is an attachment even when shown inline; a related item may be
        // found by its location alone.
        QTest::newRow("HTML only, unknown charset, inline text file")
            << "shop_order.eml" << QStringList() << QString()
            << QStringList({"<p>Kunde: Zoë Müller, Straße des 17. Juni 3"}) << "unknown-8bit"
            << QStringList({"attachment1.gif|image/gif||42 d89746888da2d9510b64a9f031eaecd5|related",
                            "Bestellung-4712.txt|text/plain||46 bd97c1a2401d28ac89bdc6522e016954|"});
    }

    void bodiesAndAttachmentsAreFound()
    {
        QFETCH(QString, file);
        QFETCH(QStringList, textHas);
        QFETCH(QString, textCharset);
        QFETCH(QStringList, htmlHas);
        QFETCH(QString, htmlCharset);
        QFETCH(QStringList, attachments);
        const MimeMail mail = Loaded(MailFile(file));
        const QString text = mail.TextBody();
        QCOMPARE(text.isEmpty(), textHas.isEmpty());
        for (const QString &expected : textHas)
            QVERIFY2(text.contains(expected), qPrintable(text));
        QCOMPARE(mail.TextCharset(), textCharset);
        const QString html = mail.HtmlBody();
        QCOMPARE(html.isEmpty(), htmlHas.isEmpty());
        for (const QString &expected : htmlHas)
            QVERIFY2(html.contains(expected), qPrintable(html));
        QCOMPARE(mail.HtmlCharset(), htmlCharset);
        QCOMPARE(Described(mail.Attachments()), attachments);
    }

    void attachedMessageStaysWholeAndAttachmentsSave()
    {
        const MimeMail mail = Loaded(MailFile(QStringLiteral("mixed_nested.eml")));
        const QList<MimeAttachment> attachments = mail.Attachments();
        const MimeMail inner = Loaded(attachments.at(2).Data);
        QCOMPARE(inner.Header(QStringLiteral("Subject")), QStringLiteral("Lieferschein 4711"));
        QVERIFY(inner.TextBody().startsWith(QStringLiteral("Lieferschein 4711: 3 Paletten")));
        QVERIFY(!mail.TextBody().contains(QStringLiteral("Paletten")));

        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("Rechnung.pdf"));
        QVERIFY(attachments.at(1).SaveTo(path));
        QFile saved(path);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(Md5(saved.readAll()), PdfMd5);
        QVERIFY(errors.isEmpty());
        QVERIFY(!attachments.at(1).SaveTo(folder.filePath(QStringLiteral("missing/Rechnung.pdf"))));
        QCOMPARE(errors.size(), 1);
    }

    void emptyHeaderlessAndCutTextsLoadSensibly()
    {
        MimeMail empty;
        QVERIFY(!empty.LoadMime(MailFile(QStringLiteral("empty.eml"))));
        QVERIFY(empty.Headers().isEmpty() && empty.TextBody().isEmpty() && empty.Attachments().isEmpty());
        empty.AddAttachment(QString(), "Delivery report", QStringLiteral("text/plain"));
        const MimeMail filled = Loaded(empty.GetMime());
        QVERIFY(filled.TextBody().isEmpty()); // an attachment without a name is still no body
        QCOMPARE(Described(filled.Attachments()), QStringList("attachment1.txt|text/plain||15 " + Md5("Delivery report") + "|"));

        const QByteArray bare = MailFile(QStringLiteral("no_headers.eml"));
        MimeMail headerless;
        QVERIFY(headerless.LoadMime(bare));
        QVERIFY(headerless.Headers().isEmpty());
        QCOMPARE(Loaded(headerless.GetMime()).TextBody(), QString::fromLatin1(bare));

        const QByteArray whole = MailFile(QStringLiteral("mixed_nested.eml"));
        const MimeMail full = Loaded(whole);
        const MimeMail cut = Loaded(MailFile(QStringLiteral("truncated.eml")));
        QCOMPARE(cut.Headers().size(), full.Headers().size());
        QCOMPARE(cut.TextBody(), full.TextBody());
        QCOMPARE(cut.HtmlBody(), full.HtmlBody());
        const QList<MimeAttachment> kept = cut.Attachments();
        QCOMPARE(kept.size(), 2);
        QCOMPARE(kept.at(1).Name, QStringLiteral("Rechnung März.pdf"));
        QVERIFY(kept.at(1).Size() > 0 && kept.at(1).Size() < 589);
        QVERIFY(full.Attachments().at(1).Data.startsWith(kept.at(1).Data));

        // Cut anywhere: no crash, no invented part, and once the header block
        // is whole all its headers are there.
        const qsizetype bodyStart = whole.indexOf("\r\n\r\n") + 4;
        for (qsizetype length = 0; length < whole.size(); ++length) {
            const MimeMail part = Loaded(whole.left(length));
            QVERIFY(part.Attachments().size() <= 3);
            if (length >= bodyStart)
                QCOMPARE(part.Headers().size(), full.Headers().size());
        }
    }

    void headerEditsAreWrittenAndReadBack()
    {
        MimeMail mail = Loaded(MailFile(QStringLiteral("alternative.eml")));
        mail.AddHeader(QStringLiteral("Postvane-AccountID"), QStringLiteral("A1"));
        mail.RemoveHeader(QStringLiteral("received"));
        mail.RemoveHeader(QStringLiteral("X-Mailer"));
        mail.RemoveHeader(QStringLiteral("Content-Language"));
        mail.SetHeader(QStringLiteral("Subject"), QStringLiteral("Grüße ✓ neu"));
        mail.SetHeader(QStringLiteral("Postvane-TriggerError"), QStringLiteral("first line\r\nsecond line\nthird"));
        mail.AddHeader(QStringLiteral("Postvane-AccountID"), QStringLiteral("A2"));
        mail.AddHeader(QStringLiteral("Content-Description"), QStringLiteral("Versandbestätigung"));

        const QByteArray written = mail.GetMime();
        QCOMPARE(WrittenNames(written), Names(mail.Headers()));
        QVERIFY(written.contains("\r\nPostvane-TriggerError: first line second line third\r\n"));
        const MimeMail back = Loaded(written);
        const QStringList names = Names(back.Headers());
        QCOMPARE(names.filter(QStringLiteral("Received")), QStringList());
        QVERIFY(!names.contains(QStringLiteral("X-Mailer")) && !names.contains(QStringLiteral("Content-Language")));
        QCOMPARE(names.count(QStringLiteral("Postvane-AccountID")), 2);
        QCOMPARE(back.Header(QStringLiteral("Postvane-AccountID")), QStringLiteral("A1"));
        QCOMPARE(back.Header(QStringLiteral("Subject")), QStringLiteral("Grüße ✓ neu"));
        QCOMPARE(back.Header(QStringLiteral("Content-Description")), QStringLiteral("Versandbestätigung"));

        // A content header belongs to the top part: replacing it changes how the body reads.
        MimeMail single = Loaded(MailFile(QStringLiteral("latin9_8bit.eml")));
        single.SetHeader(QStringLiteral("content-type"), QStringLiteral("text/plain; charset=iso-8859-1"));
        QCOMPARE(Names(single.Headers()).count(QStringLiteral("Content-Type")), 1);
        QVERIFY(single.TextBody().contains(QStringLiteral("1.250,00 ¤")));
    }

    void roundTripKeepsPartsAndAddsAttachments()
    {
        const QString log = QStringLiteral("2024-03-15:16:02:44 Trigger \"Rechnung\" matched\r\n"
                                           "2024-03-15:16:02:45 *Insert failed: Betrag 1.250,00 €\r\n");
        const QString logDescribed = "ProcessLog.log|text/plain||" + QString::number(log.toUtf8().size()) + u' '
                                     + Md5(log.toUtf8()) + u'|';
        const QByteArray original = MailFile(QStringLiteral("mixed_nested.eml"));
        MimeMail mail = Loaded(original);
        // Unchanged, the headers are written as they came and writing again changes nothing.
        const qsizetype headerEnd = original.indexOf("\r\n\r\n");
        QCOMPARE(mail.GetMime().left(headerEnd), original.left(headerEnd));
        QCOMPARE(Loaded(mail.GetMime()).GetMime(), mail.GetMime());

        const QStringList before = Described(mail.Attachments());
        mail.AddHeader(QStringLiteral("Postvane-Reprocess"), QStringLiteral("1"));
        mail.AddTextAttachment(QStringLiteral("ProcessLog.log"), log);
        for (const MimeMail &back : {Loaded(mail.GetMime()), Loaded(mail.GetMimeText())}) {
            QCOMPARE(back.Header(QStringLiteral("Postvane-Reprocess")), QStringLiteral("1"));
            QCOMPARE(back.TextBody(), mail.TextBody());
            QCOMPARE(back.HtmlBody(), mail.HtmlBody());
            QCOMPARE(Described(back.Attachments()), before + QStringList(logDescribed));
        }

        // A single 8-bit part is put in a multipart/mixed, and its bytes survive the text form.
        MimeMail single = Loaded(MailFile(QStringLiteral("latin9_8bit.eml")));
        const QString text = single.TextBody();
        single.AddTextAttachment(QStringLiteral("ProcessLog.log"), log);
        single.AddAttachment(QStringLiteral("Rechnung.pdf"), mail.Attachments().at(1).Data, QStringLiteral("application/pdf"));
        const MimeMail back = Loaded(single.GetMimeText());
        QVERIFY(back.Header(QStringLiteral("Content-Type")).startsWith(QStringLiteral("multipart/mixed")));
        QCOMPARE(back.Header(QStringLiteral("MIME-Version")), QStringLiteral("1.0"));
        QCOMPARE(back.TextBody().remove(u'\r'), text);
        QCOMPARE(Described(back.Attachments()),
                 QStringList({logDescribed, "Rechnung.pdf|application/pdf||589 " + PdfMd5 + u'|'}));

        MimeMail alternative = Loaded(MailFile(QStringLiteral("alternative.eml")));
        const QString html = alternative.HtmlBody();
        alternative.AddTextAttachment(QStringLiteral("ProcessLog.log"), log);
        const MimeMail wrapped = Loaded(alternative.GetMime());
        QVERIFY(wrapped.Header(QStringLiteral("Content-Type")).startsWith(QStringLiteral("multipart/mixed")));
        QCOMPARE(wrapped.HtmlBody(), html);
        QCOMPARE(Described(wrapped.Attachments()), QStringList(logDescribed));
    }

    // An attached file comes back byte for byte whatever its line ends, in
    // the stored form and in the text form the Outbox keeps; a process log
    // stays readable in the text.
    void attachedFilesKeepTheirBytes()
    {
        const QByteArray rows("InvoiceNo,Amount\nA-1,5\r\nA-2,6\rlast row without an end");
        const QString log = QStringLiteral("2024-03-15:16:02:44 Trigger matched\r\n");
        MimeMail mail;
        mail.Compose(QStringLiteral("server@example.org"), QStringLiteral("accounts@example.com"),
                     QStringLiteral("rows.csv"), QDateTime::currentDateTime(), QStringLiteral("The file is attached."));
        mail.AddAttachment(QStringLiteral("rows.csv"), rows, QStringLiteral("text/csv"));
        mail.AddTextAttachment(QStringLiteral("ProcessLog.log"), log);
        QVERIFY(mail.GetMimeText().contains(log));
        for (const MimeMail &back : {Loaded(mail.GetMime()), Loaded(mail.GetMimeText())}) {
            QCOMPARE(back.Attachments().size(), 2);
            QCOMPARE(back.Attachments().at(0).Data, rows);
            QCOMPARE(back.Attachments().at(0).ContentType, QStringLiteral("text/csv"));
            QCOMPARE(back.Attachments().at(1).Data, log.toUtf8());
        }
    }

    void composedMessageReadsBack()
    {
        const QDateTime date(QDate(2024, 3, 5), QTime(14, 7, 9), Qt::OffsetFromUTC, -5 * 3600);
        const QString text = QStringLiteral("Auftrag 4711 über 1.250,00 € ist eingegangen.\r\n"
                                            "Eine sehr lange Zeile, die länger als achtundsiebzig Zeichen ist, damit sie "
                                            "umbrochen werden muss.\r\n");
        const QString html = QStringLiteral("<p>Auftrag 4711 über 1.250,00 € ✓</p>");
        MimeMail mail;
        mail.Compose(QStringLiteral("Jürgen Müller <jm@postvane.example.com>"),
                     QStringLiteral("a@kunde.example.de, \"Weber, Klaus\" <kw@kunde.example.de>"),
                     QStringLiteral("Auftrag über 1.250 € ✓"), date, text, html);
        const QByteArray written = mail.GetMime();
        QVERIFY(std::all_of(written.begin(), written.end(), [](char c) { return uchar(c) < 0x80; }));
        QCOMPARE(written.count('\n'), written.count("\r\n"));

        const MimeMail back = Loaded(written);
        QCOMPARE(back.Header(QStringLiteral("From")), QStringLiteral("Jürgen Müller <jm@postvane.example.com>"));
        QCOMPARE(back.Header(QStringLiteral("To")),
                 QStringLiteral("a@kunde.example.de, \"Weber, Klaus\" <kw@kunde.example.de>"));
        QCOMPARE(back.Header(QStringLiteral("Subject")), QStringLiteral("Auftrag über 1.250 € ✓"));
        QCOMPARE(back.Date(), date);
        QCOMPARE(back.Date().offsetFromUtc(), -5 * 3600);
        QVERIFY(back.Header(QStringLiteral("Message-Id")).endsWith(QStringLiteral("@postvane.example.com>")));
        QVERIFY(back.Header(QStringLiteral("Content-Type")).startsWith(QStringLiteral("multipart/alternative")));
        QCOMPARE(back.TextBody(), text);
        QCOMPARE(back.HtmlBody(), html);

        const QString from = QStringLiteral("jm@postvane.example.com");
        mail.Compose(from, from, QStringLiteral("Nur HTML"), date, QString(), html);
        QCOMPARE(Loaded(mail.GetMime()).TextBody(), QString());
        QCOMPARE(Loaded(mail.GetMime()).HtmlBody(), html);
    }
};

POSTVANE_TEST(tst_MimeMail)
#include "tst_MimeMail.moc"
