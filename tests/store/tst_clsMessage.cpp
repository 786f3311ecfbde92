#include "ErrorCapture.h"
#include "TestRegistry.h"
#include "foundation/Crypt.h"
#include "foundation/GlobalBlock.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/HtmlToText.h"
#include "store/clsMessage.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString CRLF = QStringLiteral("\r\n");

void WriteFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}

} // namespace

class tst_clsMessage : public QObject
{
    Q_OBJECT

    ErrorCapture m_errors;

private slots:
    void init()
    {
        m_errors.clear();
        ReplaceCurrentMessage(nullptr);
        ResetGlobalCollections();
    }
    void cleanup() { QVERIFY2(m_errors.isEmpty(), qPrintable(m_errors.join(u'\n'))); }

    void newMessageHasItsOwnIdentifier()
    {
        clsMessage a;
        QVERIFY(QRegularExpression(QStringLiteral("^[0-9A-F]{32}$")).match(a.MessageID).hasMatch());
        QVERIFY(a.MessageID != clsMessage().MessageID);
        QCOMPARE(a.LinkGUID(), a.MessageID);
    }

    // A repeated name folds into its slot; a numeric index is a position;
    // removing a slot moves the later ones down.
    void headerSlotsByNameOrPosition()
    {
        clsMessage m;
        m.AddHeader(QStringLiteral(" X-Tag "), QStringLiteral(" one"));
        m.AddHeader(QStringLiteral("x-TAG"), QStringLiteral("   two  "));
        QCOMPARE(m.NoHeaders, qint16(1));
        QCOMPARE(m.HeaderName(1), QStringLiteral("X-Tag"));
        QCOMPARE(m.HeaderValue(QStringLiteral("x-tag")), QStringLiteral(" one two"));
        QCOMPARE(m.MessageHeader(), QStringLiteral("X-Tag:  one two\r\n"));
        m.AddHeader(QStringLiteral("Later"), QStringLiteral("v"), true);
        QCOMPARE(m.NoHeaders, qint16(2));
        QCOMPARE(m.MessageHeader(), QStringLiteral("X-Tag:  one two\r\n"));

        m.AddHeader(QStringLiteral("7"), QStringLiteral("named seven"));
        m.AddHeader(QStringLiteral("B"), QStringLiteral("b"));
        QCOMPARE(m.HeaderValue(QStringLiteral("7")), QString());
        QCOMPARE(m.HeaderValue(QStringLiteral(" 4 ")), QStringLiteral("b"));
        QCOMPARE(m.HeaderName(0), QString());
        QCOMPARE(m.HeaderName(5), QString());
        QCOMPARE(m.HeaderNumber(QStringLiteral("missing")), 0);

        m.RemoveHeader(QStringLiteral("unknown"));
        QCOMPARE(m.NoHeaders, qint16(4));
        m.RemoveHeader(QStringLiteral(" later "));
        QCOMPARE(m.NoHeaders, qint16(3));
        QCOMPARE(m.HeaderName(3), QStringLiteral("B"));
        QCOMPARE(m.MessageHeader(), QStringLiteral("X-Tag:  one two\r\n7: named seven\r\nB: b\r\n"));
    }

    void headerTextEndsInOneBlankLine()
    {
        clsMessage m;
        m.HeaderCRLF();
        QCOMPARE(m.MessageHeader(), CRLF + CRLF);

        m.AddHeader(QStringLiteral("A"), QStringLiteral("1"));
        m.HeaderCRLF();
        QCOMPARE(m.MessageHeader(), QStringLiteral("A: 1\r\n\r\n"));
        m.HeaderCRLF();
        QCOMPARE(m.MessageHeader(), QStringLiteral("A: 1\r\n\r\n"));

        // No header line in it: the text stays as stored, closed by two CR LF.
        m.setMessageHeader(QStringLiteral(" orphan line"));
        QCOMPARE(m.MessageHeader(), QStringLiteral(" orphan line\r\n\r\n"));
        QCOMPARE(m.HeaderValue(1), QStringLiteral("1"));
    }

    void headerBlockIsParsedWithFoldedLines()
    {
        clsMessage &m = CurrentMessage();
        m.setMessageHeader(QStringLiteral(" dropped: no header before it\r\n"
                                          "Subject: Hello\r\n\tWorld  \r\n"
                                          "To:  a@b.c \r\n"
                                          "X-Empty:\r\n"
                                          "Subject: Again"));
        QCOMPARE(m.NoHeaders, qint16(3));
        QCOMPARE(m.HeaderValue(QStringLiteral("subject")), QStringLiteral("Again"));
        QCOMPARE(m.HeaderValue(QStringLiteral("to")), QStringLiteral("a@b.c"));
        QCOMPARE(m.HeaderName(3), QStringLiteral("X-Empty"));
        QCOMPARE(m.MessageHeader(), QStringLiteral("Subject: Again\r\nTo: a@b.c\r\nX-Empty: \r\n"));

        ReplaceCurrentMessage(std::make_unique<clsMessage>());
        clsMessage &n = CurrentMessage();
        n.setMessageHeader(QStringLiteral("Subject: Hello\r\n\tWorld"));
        QCOMPARE(n.HeaderValue(1), QStringLiteral("Hello World"));
    }

    void setHeaderValueCountsOnTheCurrentMessage()
    {
        clsMessage &current = CurrentMessage();
        current.AddHeader(QStringLiteral("A"), QStringLiteral("1"));
        current.AddHeader(QStringLiteral("B"), QStringLiteral("2"));

        clsMessage other;
        other.SetHeaderValue(QStringLiteral("X"), QStringLiteral(" v "));
        QCOMPARE(current.NoHeaders, qint16(3));
        QCOMPARE(other.NoHeaders, qint16(0));
        QCOMPARE(other.HeaderValue(QStringLiteral("X")), QString());
        QCOMPARE(other.MessageHeader(), QString());
        other.NoHeaders = 3;
        QCOMPARE(other.HeaderName(3), QStringLiteral("X"));
        QCOMPARE(other.HeaderValue(3), QStringLiteral("v"));

        ReplaceCurrentMessage(std::make_unique<clsMessage>());
        clsMessage &own = CurrentMessage();
        own.AddHeader(QStringLiteral("A"), QStringLiteral("1"));
        own.SetHeaderValue(QStringLiteral("a"), QStringLiteral(" new "));
        own.SetHeaderValue(QStringLiteral("C"), QStringLiteral("3"));
        QCOMPARE(own.MessageHeader(), QStringLiteral("A: new\r\nC: 3\r\n"));
    }

    void mimeHeadAndAddressBracketsAreCut()
    {
        clsMessage m;
        m.MessageText = QStringLiteral("H: v\r\n\r\nbody\r\n\r\nmore");
        m.RemoveHeaderFromMime();
        QCOMPARE(m.MessageText, QStringLiteral("body\r\n\r\nmore"));
        m.MessageText = QStringLiteral("no blank line\r\n");
        m.RemoveHeaderFromMime();
        QCOMPARE(m.MessageText, QStringLiteral("no blank line\r\n"));

        m.From = QStringLiteral(" <a@b.c]");
        m.ToAddress = QStringLiteral("[x@y.z");
        m.RemoveBracketsFromAddress();
        QCOMPARE(m.From, QStringLiteral("a@b.c"));
        QCOMPARE(m.ToAddress, QStringLiteral("x@y.z"));
        QCOMPARE(m.FromFull(), QStringLiteral("a@b.c"));
        m.FromName = QStringLiteral("Ann");
        QCOMPARE(m.FromFull(), QStringLiteral("Ann <a@b.c>"));
    }

    void digest_data()
    {
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("length");
        QTest::addColumn<QString>("expected");
        QTest::newRow("61 without blanks, cut") << QString(61, u'x') << 10 << QStringLiteral("xxxxxxx...");
        QTest::newRow("60, not cut but long") << QString(60, u'x') << 10 << QStringLiteral("xxxxxxx...");
        QTest::newRow("cut, short once cleaned") << QStringLiteral("ab") + QString(60, u' ') + QStringLiteral("cd") << 10
                                                 << QStringLiteral("ab...");
        QTest::newRow("cleaned") << QStringLiteral("\ta\tb\r\nc \n\r d\u00a0 ") << 0 << QStringLiteral("a b c d");
        QTest::newRow("0 means 250") << QString(251, u'y') << 0 << QString(247, u'y') + QStringLiteral("...");
        QTest::newRow("fits") << QString(250, u'y') << 0 << QString(250, u'y');
    }
    void digest()
    {
        QFETCH(QString, body);
        QFETCH(int, length);
        QFETCH(QString, expected);
        clsMessage m;
        m.Body = body;
        QCOMPARE(m.Digest(length), expected);
    }

    void wordIndex_data()
    {
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("withCount");
        QTest::addColumn<QString>("sorted");
        QTest::newRow("counts keep first-seen places") << "" << "zeta Alpha, alpha." << "alpha zeta" << "1 alpha 2 zeta"
                                                       << "2 alpha 1 zeta";
        QTest::newRow("9 sorts above 10") << "" << QStringLiteral("bee ").repeated(10) + QStringLiteral("cat ").repeated(9)
                                          << "bee cat" << "10 bee 9 cat" << "9 cat 10 bee";
        QTest::newRow("left out") << "" << QStringLiteral("the hot word was 2024 2024-05-01 3.5 ab --- end... ") +
                                               QString(24, u'k') + u' ' + QString(25, u'l')
                                  << "end " + QString(24, u'k') << "1 end 1 " + QString(24, u'k')
                                  << "1 " + QString(24, u'k') + " 1 end";
        QTest::newRow("punctuation splits, some marks stay") << "" << "it's (fine) $cash! me@home.org a_b"
                                                             << "$cash! fine me@home org" << "1 $cash! 1 fine 1 me@home 1 org"
                                                             << "1 org 1 me@home 1 fine 1 $cash!";
        QTest::newRow("links give their domains")
            << "" << "See http://www.Mail.Example.com/path/page?x=1 or WWW.shop.co.uk/a, again www.shop.co.uk/a"
            << "again example.com see shop.co.uk" << "1 again 1 example.com 1 see 1 shop.co.uk"
            << "1 shop.co.uk 1 see 1 example.com 1 again";
        QTest::newRow("upper-case FW: goes") << "abcFW:def" << "" << "abcdef" << "1 abcdef" << "1 abcdef";
        QTest::newRow("other cases stay") << "abcFw:def" << "" << "abcfw def" << "1 abcfw 1 def" << "1 def 1 abcfw";
        QTest::newRow("nothing left") << "FW: the" << "12" << "" << "" << "";
    }
    void wordIndex()
    {
        QFETCH(QString, subject);
        QFETCH(QString, body);
        clsMessage m;
        m.Subject = subject;
        m.Body = body;
        QTEST(m.WordIndex(), "plain");
        QTEST(m.WordIndexWithCount(), "withCount");
        QTEST(m.WordIndexWithCountSorted(), "sorted");
    }

    void hashNoticesChanges()
    {
        clsMessage m;
        QVERIFY(m.HashChanged());
        m.AddHeader(QStringLiteral("A"), QStringLiteral("1"));
        m.MessageText = QStringLiteral("text");
        QCOMPARE(m.HashMessage(), MD5Hash(QStringLiteral("A: 1\r\ntext")));
        QVERIFY(!m.HashChanged());
        m.MessageText += u'!';
        QVERIFY(m.HashChanged());
        m.MessageText.chop(1);
        QVERIFY(!m.HashChanged());
    }

    void logLinesAreCutPlainAndCountErrors()
    {
        clsAccount account;
        clsAccountTrigger trigger;
        clsMessage m;
        m.Account = &account;
        m.setTrigger(&trigger);

        m.AddToLog(QStringLiteral("caf\u00e9 \u0080\u20ac\r\nnext"));
        m.AddToLog(QString(600, u'z'));
        QCOMPARE(m.ErrorCount, qint16(0));
        m.AddToLog(QStringLiteral("*failed"));
        QCOMPARE(m.ErrorLog(), QStringLiteral("caf&#233; \u0080&#8364; next\r\n") + QString(500, u'z') +
                                   QStringLiteral("\r\n*failed\r\n"));
        QCOMPARE(m.LastError, QStringLiteral("*failed"));
        QCOMPARE(m.ErrorCount, qint16(1));
        QCOMPARE(account.Errors, 1);
        QCOMPARE(trigger.ErrorCount, 1);
    }

    void bindingATriggerMakesItsFields()
    {
        clsAccountTrigger trigger;
        auto field = std::make_unique<clsTriggerField>();
        field->ID = QStringLiteral("F1");
        field->Name = QStringLiteral("OrderNo");
        field->InsertInto = QStringLiteral("Orders");
        field->InsertFieldName = QStringLiteral("No");
        field->EnvironmentVarName = QStringLiteral("ORDER");
        field->MapToOutLookContact = QStringLiteral("Email1");
        field->KeyExists = true;
        field->FieldType = 6;
        field->MaxLength = 20;
        trigger.FieldsToProcess().Add(std::move(field));
        auto customer = std::make_unique<clsTriggerField>();
        customer->ID = QStringLiteral("F2");
        customer->Name = QStringLiteral("Customer");
        trigger.FieldsToProcess().Add(std::move(customer));

        clsMessage m;
        m.ExtractedFields().Add()->Name = QStringLiteral("stale");
        m.setTrigger(&trigger);
        QCOMPARE(m.Trigger(), &trigger);
        QCOMPARE(m.ExtractedFields().Count(), 2);
        const clsMessageField *first = m.ExtractedFields().Item(1);
        QCOMPARE(first->InsertInto, QStringLiteral("Orders"));
        QCOMPARE(first->InsertField, QStringLiteral("No"));
        QCOMPARE(first->EnvVar, QStringLiteral("ORDER"));
        QCOMPARE(first->OutlookContactField, QStringLiteral("Email1"));
        QVERIFY(first->KeyField);
        QCOMPARE(first->FieldType, qint16(6));
        QCOMPARE(first->FieldLength, 20);
        QCOMPARE(m.ExtractedFields().FieldNoFromName(QStringLiteral(" CUSTOMER ")), 2);
        QCOMPARE(m.ExtractedFields().FieldNoFromName(QStringLiteral("stale")), 0);

        m.setTrigger(nullptr);
        QCOMPARE(m.Trigger(), nullptr);
        QCOMPARE(m.ExtractedFields().Count(), 2);
    }

    void organizationAndAddresses()
    {
        for (const char *id : {"O1", "O2"}) {
            auto organization = std::make_unique<clsUserOrganization>();
            organization->ID = QString::fromLatin1(id);
            Organizations().Add(std::move(organization));
        }
        Users().AddXML(QStringLiteral("<User><ID>U2</ID><OrganizationID>O2</OrganizationID></User>"));
        UserFolders().AddXML(QStringLiteral("<Folder><ID>F2</ID><UserID>U2</UserID></Folder>"));
        clsAccount account;
        account.OrganizationID = QStringLiteral("O1");

        clsMessage m;
        QCOMPARE(m.OrganizationID(), QStringLiteral("O1"));
        m.Account = &account;
        account.OrganizationID = QStringLiteral("O2");
        QCOMPARE(m.OrganizationID(), QStringLiteral("O2"));
        account.OrganizationID = QStringLiteral("O1");
        m.FolderID = QStringLiteral("-");
        QCOMPARE(m.OrganizationID(), QStringLiteral("O1"));
        m.FolderID = QStringLiteral("F2");
        QCOMPARE(m.OrganizationID(), QStringLiteral("O2"));

        const QString savedURL = Global.Settings.WebServicesURL;
        Global.Settings.WebServicesURL = QStringLiteral("https://mail.example.com/pv");
        m.EdgeQueueRecordNo = 12;
        const QString validate = m.ValidateURL();
        QCOMPARE(validate, QStringLiteral("https://mail.example.com/pv/validate.aspx?id=") +
                               URLEncode(QStringLiteral("12-") + MD5Hash(m.MessageID)));
        QVERIFY(validate.endsWith(QStringLiteral("%3D%3D")));
        QCOMPARE(m.ViewURL(), QStringLiteral("https://mail.example.com/pv/viewmessage.aspx?id=O2") + m.LinkGUID());
        Global.Settings.WebServicesURL = savedURL;
    }

    void attachmentNamesAndList()
    {
        colMSGAttachments items;
        QCOMPARE(items.List(), QString());
        const auto add = [&](const char *name, qint32 size) {
            clsMessageAttachment *a = items.Add();
            a->Name = QString::fromLatin1(name);
            a->Size = size;
            return a;
        };
        const clsMessageAttachment *report = add("report.pdf", 2048);
        add("a.b.txt", 12);
        const clsMessageAttachment *bare = add("README", 0);
        QCOMPARE(report->FileNameWithoutExtension(), QStringLiteral("report"));
        QCOMPARE(bare->FileNameWithoutExtension(), QStringLiteral("README"));
        QCOMPARE(bare->FileExtension(), QString());
        QCOMPARE(items.AttachmentNoFromName(QStringLiteral("report.pdf")), 1);
        QCOMPARE(items.AttachmentNoFromName(QStringLiteral("README")), 3);
        QCOMPARE(items.AttachmentNoFromName(QStringLiteral("a.b.txt")), 0);
        QCOMPARE(items.List(), QStringLiteral("report.pdf (2 K),a.b.txt (12 Bytes),README (0 Bytes)"));
    }

    void tempFilesAreDeleted()
    {
        QTemporaryDir dir;
        const QString saved = dir.filePath(QStringLiteral("saved.bin"));
        const QString related = dir.filePath(QStringLiteral("logo.png"));
        const QString temp = dir.filePath(QStringLiteral("temp.txt"));
        WriteFile(saved, QByteArray("\x00\x01zip", 5));
        WriteFile(related, "png");
        WriteFile(temp, "t");

        clsMessage m;
        m.Attachments.Add()->SavedTo = saved;
        m.Attachments.Add();
        m.RelatedItems.Add()->SavedTo = related;
        m.TempFiles = dir.filePath(QStringLiteral("gone.txt")) + CRLF + temp + CRLF;
        QCOMPARE(m.Attachments.Item(1)->Data(), QByteArray("\x00\x01zip", 5));
        m.DeleteTempAttachments();
        for (const QString &path : {saved, related, temp})
            QVERIFY2(!QFile::exists(path), qPrintable(path));
        QCOMPARE(m.Attachments.Item(1)->Data(), QByteArray());
    }

    void htmlToText_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("expected");
        QTest::newRow("single-byte chain")
            << "<h1>Title</h1>\r\n<p>Line one<br>line  two</p><table><tr><td>a</td><td>b</td></tr></table>"
               "<style>p{}</style><SCRIPT type=x>var a;</script><!-- note -->&lt;done&gt;&#32;&#32;&amp;amp; &eacute;"
            << QStringLiteral("Title\r\n\r\nLine one\r\nline two\r\na b\r\n\r\n<done>  &amp; \u00e9");
        QTest::newRow("single-byte list and break tags")
            << "<ul><li>one</li></ul><br class=x>two&nbsp;&nbsp;three\tfour"
            << "-one\r\n\r\n\r\ntwo three four";
        QTest::newRow("wide characters rendered")
            << QStringLiteral("<html><head><title>T</title></head><body><p>Prix&nbsp;:\r\n 5 \u20ac</p><ul><li>un</li>"
                              "<li>deux</li></ul>caf<b>\u00e9</b> &eacute;&#8364;<!-- x --></body></html>")
            << QStringLiteral("Prix : 5 \u20ac\r\n\r\n- un\r\n- deux\r\ncaf\u00e9 \u00e9\u20ac");
    }
    void htmlToText()
    {
        QFETCH(QString, html);
        QTEST(HtmlToText(html), "expected");
    }
};

POSTVANE_TEST(tst_clsMessage)
#include "tst_clsMessage.moc"
