#include "EditorSession.h"
#include "TestRegistry.h"
#include "editors/frmRunWith.h"
#include "model/clsAccountTrigger.h"
#include "store/MimeMail.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

// The sample message window: its two modes, the message it builds and the
// way a message of a size takes to the server.
class tst_frmRunWith : public QObject
{
    Q_OBJECT
    clsAccount account;
    clsAccountTrigger *trigger = nullptr;

private slots:
    void initTestCase()
    {
        account.AccountID = QStringLiteral("ACC1");
        account.Name = QStringLiteral("Shop");
        auto owned = std::make_unique<clsAccountTrigger>();
        owned->Name = QStringLiteral("Orders");
        owned->HelperSubject = QStringLiteral("Order 4711");
        owned->HelperMessage = QStringLiteral("Total: 12 EUR\r\n");
        owned->HelperTo = QStringLiteral("orders@shop.example, copy@shop.example");
        trigger = account.Triggers.Add(std::move(owned));
    }

    void theSizeDecidesTheWay()
    {
        QCOMPARE(frmRunWith::RouteFor(99999), frmRunWith::ByRequest);
        QCOMPARE(frmRunWith::RouteFor(100000), frmRunWith::ByWebService);
        QCOMPARE(frmRunWith::RouteFor(10485760), frmRunWith::ByWebService);
        QCOMPARE(frmRunWith::RouteFor(10485761), frmRunWith::TooBig);
    }

    void aTestRunStartsFromTheTriggersSample()
    {
        frmRunWith window;
        window.Trigger = trigger;
        window.Prepare(nullptr);
        QCOMPARE(window.windowTitle(), QStringLiteral("Shop - Orders"));
        QCOMPARE(window.btnOK->text(), QStringLiteral("Send"));
        QCOMPARE(window.txtTo->text(), QStringLiteral("orders@shop.example"));
        QCOMPARE(window.txtSubject->text(), QStringLiteral("Order 4711"));

        QTemporaryDir files;
        const QString attached = files.filePath(QStringLiteral("order.csv"));
        QFile csv(attached);
        QVERIFY(csv.open(QIODevice::WriteOnly));
        csv.write("no;amount\r\n4711;12\r\n");
        csv.close();
        window.txtFrom->setText(QStringLiteral("Jane Roe <jane@example.org>"));
        window.txtAttach->setText(attached + QStringLiteral("; ") + files.filePath(QStringLiteral("missing.pdf")));
        MimeMail message;
        window.BuildMessage(message, true);
        QCOMPARE(message.Header(QStringLiteral("Postvane-AccountID")), QStringLiteral("ACC1"));
        QCOMPARE(message.Header(QStringLiteral("Postvane-TriggerID")), trigger->TriggerID);
        QCOMPARE(message.Header(QStringLiteral("Postvane-Source")), QStringLiteral("Admin"));
        QVERIFY(!message.Header(QStringLiteral("Postvane-UID")).isEmpty());
        QCOMPARE(message.Header(QStringLiteral("Message-ID")).remove(u'<').remove(u'>'),
                 message.Header(QStringLiteral("Postvane-UID")));
        QCOMPARE(message.Header(QStringLiteral("Subject")), QStringLiteral("Order 4711"));
        QCOMPARE(message.TextBody().trimmed(), QStringLiteral("Total: 12 EUR"));
        QCOMPARE(message.Attachments().size(), 1); // the missing file is passed over
        QCOMPARE(message.Attachments().at(0).Name, QStringLiteral("order.csv"));
    }

    void autoRunKeepsTheMessageOnTheAccount()
    {
        {
            frmRunWith window;
            window.Prepare(&account);
            QCOMPARE(window.windowTitle(), QStringLiteral("Auto Run With Shop"));
            QCOMPARE(window.btnOK->text(), QStringLiteral("OK"));
            window.txtTo->setText(QStringLiteral("in@shop.example"));
            window.txtFrom->setText(QStringLiteral("robot@example.org"));
            window.txtSubject->setText(QStringLiteral("Nightly"));
            window.txtBody->setPlainText(QStringLiteral("Run me"));
            QVERIFY(window.Accept());
        }
        QVERIFY(!account.AutoRunMessageMime.contains(QStringLiteral("Postvane-TriggerID")));
        frmRunWith again;
        again.Prepare(&account);
        QCOMPARE(again.txtSubject->text(), QStringLiteral("Nightly"));
        QCOMPARE(again.txtTo->text(), QStringLiteral("in@shop.example"));
        QCOMPARE(again.txtBody->toPlainText().trimmed(), QStringLiteral("Run me"));
    }

    void noIsAnswerKeepsTheWindow()
    {
        frmRunWith window;
        window.Trigger = trigger;
        window.Prepare(nullptr);
        ModalHandler modal(QMessageBox::No);
        QVERIFY(!window.Accept());
        QCOMPARE(modal.Texts, QStringList{QStringLiteral(
                                  "Send Message?\nThe message will be added to the Edge Queue and be processed "
                                  "immediately.")});
    }
};

POSTVANE_TEST(tst_frmRunWith)
#include "tst_frmRunWith.moc"
