#include "TestRegistry.h"
#include "ViewsFixture.h"
#include "workbench/HtmlView.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmViewPendingScheduled.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

// The scheduled messages view on Outbox rows of a real server: two rows of
// trigger T1 of account A01 due in 2099, one of T2, one already sent
// (not scheduled).
class tst_frmViewPendingScheduled : public QObject
{
    Q_OBJECT
    ServerFixture server;
    QList<qint64> rows;

    qint64 Outbox(const QString &Trigger, const QString &Subject, bool Scheduled, const QString &Mime)
    {
        QSqlQuery query(ViewsFixture::Database(server, QStringLiteral("MessageStore")));
        query.prepare(QStringLiteral("INSERT INTO Outbox (AccountID, TriggerID, DateAdded, ScheduledDate, Scheduled, Subject, "
                                     "MailTo, MailFrom, Importance, Attachments, Mime, Status) VALUES ('A01', ?, "
                                     "'2026-01-01 00:00:00', '2099-01-01 09:00:00', ?, ?, 'to@alpha.test', "
                                     "'from@alpha.test', 0, ?, ?, 0)"));
        query.addBindValue(Trigger);
        query.addBindValue(Scheduled ? 1 : 0);
        query.addBindValue(Subject);
        query.addBindValue(Mime.contains(QStringLiteral("filename=")) ? 1 : 0);
        query.addBindValue(Mime);
        return query.exec() ? query.lastInsertId().toLongLong() : 0;
    }
    std::unique_ptr<frmViewPendingScheduled> View(const QString &Trigger = QString())
    {
        auto view = std::make_unique<frmViewPendingScheduled>();
        view->setAttribute(Qt::WA_DeleteOnClose, false);
        QSignalSpy loaded(view.get(), &frmViewPendingScheduled::Loaded);
        view->ShowMessages(QStringLiteral("A01"), Trigger);
        return loaded.wait(20000) ? std::move(view) : nullptr;
    }
    QTreeWidgetItem *RowOf(frmViewPendingScheduled &View, qint64 Record)
    {
        for (int i = 0; i < View.Grid->topLevelItemCount(); ++i)
            if (frmViewPendingScheduled::RecordOf(View.Grid->topLevelItem(i)) == Record)
                return View.Grid->topLevelItem(i);
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        QString problem;
        QVERIFY2(ViewsFixture::Start(server, problem), qPrintable(problem));
        MimeMail withFile;
        withFile.Compose(QStringLiteral("from@alpha.test"), QStringLiteral("to@alpha.test"), QStringLiteral("Reminder"),
                         QDateTime::currentDateTime(), QStringLiteral("Pay the invoice."));
        withFile.AddAttachment(QStringLiteral("invoice.pdf"), QByteArray("%PDF"), QStringLiteral("application/pdf"));
        rows << Outbox(QStringLiteral("T1"), QStringLiteral("Reminder"), true, QString::fromUtf8(withFile.GetMime()))
             << Outbox(QStringLiteral("T1"), QStringLiteral("Second notice"), true,
                       ViewsFixture::PlainMime(QStringLiteral("Second notice"), QStringLiteral("from@alpha.test"),
                                               QDateTime::currentDateTime(), QStringLiteral("Still due.")))
             << Outbox(QStringLiteral("T2"), QStringLiteral("Other trigger"), true, QString())
             << Outbox(QStringLiteral("T1"), QStringLiteral("Sent already"), false, QString());
        QVERIFY(!rows.contains(0));
    }

    void theGridListsTheScheduledRowsOfTheView()
    {
        auto view = View(QStringLiteral("T1"));
        QVERIFY(view);
        QCOMPARE(view->Grid->topLevelItemCount(), 2);
        QCOMPARE(view->lblStatus->text(), QStringLiteral("2 Messages"));
        QTreeWidgetItem *first = RowOf(*view, rows[0]);
        QVERIFY(first);
        QCOMPARE(first->text(frmViewPendingScheduled::ColSource), QStringLiteral("Orders <new> & 'old'"));
        QCOMPARE(first->text(frmViewPendingScheduled::ColSubject), QStringLiteral("Reminder"));
        QVERIFY(!first->icon(frmViewPendingScheduled::ColAttachment).isNull());
        QVERIFY(RowOf(*view, rows[1])->icon(frmViewPendingScheduled::ColAttachment).isNull());
        QCOMPARE(view->Grid->headerItem()->text(frmViewPendingScheduled::ColSendDate), QStringLiteral("Send Date"));

        auto all = View();
        QVERIFY(all);
        QCOMPARE(all->Grid->topLevelItemCount(), 3);
        all->txtSearch->setText(QStringLiteral("notice"));
        QSignalSpy loaded(all.get(), &frmViewPendingScheduled::Loaded);
        all->CommandBar->Command(frmViewPendingScheduled::ID_REFRESH)->trigger();
        QVERIFY(loaded.wait(20000));
        QCOMPARE(all->Grid->topLevelItemCount(), 1);

        // The chosen row's message, once the selection has settled.
        view->SettleTimer.setInterval(10);
        view->Grid->setCurrentItem(first);
        QTRY_VERIFY_WITH_TIMEOUT(view->Browser->toPlainText().contains(QStringLiteral("Pay the invoice.")), 20000);
        QCOMPARE(view->lstAttachments->count(), 1);
        QVERIFY(view->lstAttachments->item(0)->text().startsWith(QStringLiteral("invoice.pdf (")));
        view->show();
        ShellFixture::Picture(view.get(), QStringLiteral("scheduled"));
    }

    void sendNowAndDeleteChangeTheOutbox()
    {
        auto view = View(QStringLiteral("T1"));
        QVERIFY(view);
        RowOf(*view, rows[0])->setSelected(true);
        QSignalSpy loaded(view.get(), &frmViewPendingScheduled::Loaded);
        view->SendNow();
        QVERIFY(loaded.wait(20000));
        QCOMPARE(ViewsFixture::Value(server, QStringLiteral("SELECT COUNT(*) FROM Outbox WHERE RecordNo=%1 AND "
                                                            "ScheduledDate > '2090-01-01'").arg(rows[0])).toInt(), 0);

        view->Grid->clearSelection();
        RowOf(*view, rows[1])->setSelected(true);
        view->DeleteSelected(false);
        QVERIFY(!RowOf(*view, rows[1]));
        QVERIFY(!ViewsFixture::Value(server, QStringLiteral("SELECT RecordNo FROM Outbox WHERE RecordNo=%1").arg(rows[1])).isValid());
        QVERIFY(ViewsFixture::Value(server, QStringLiteral("SELECT RecordNo FROM Outbox WHERE RecordNo=%1").arg(rows[2])).isValid());

        // Delete All takes the view's rows only, and on an empty view sends nothing.
        auto other = View(QStringLiteral("T2"));
        QVERIFY(other);
        QSignalSpy reloaded(other.get(), &frmViewPendingScheduled::Loaded);
        other->DeleteAll(false);
        QVERIFY(reloaded.wait(20000));
        QCOMPARE(other->Grid->topLevelItemCount(), 0);
        QVERIFY(!ViewsFixture::Value(server, QStringLiteral("SELECT RecordNo FROM Outbox WHERE RecordNo=%1").arg(rows[2])).isValid());
        QVERIFY(ViewsFixture::Value(server, QStringLiteral("SELECT RecordNo FROM Outbox WHERE RecordNo=%1").arg(rows[3])).isValid());
        other->DeleteAll(false);
        QCOMPARE(other->Client.Pending(), 0);
    }
};

POSTVANE_TEST(tst_frmViewPendingScheduled)
#include "tst_frmViewPendingScheduled.moc"
