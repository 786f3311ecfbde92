#include "ModalCloser.h"
#include "TestRegistry.h"
#include "ViewsFixture.h"
#include "workbench/RibbonBar.h"
#include "workbench/frmViewChecked.h"
#include "workbench/frmViewPreview.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>
#include <QTreeWidget>

// The message browser against a real server. FolderA holds four messages of
// account A01 (two by trigger T1, one by T2, one unmatched) and one of
// account A02; FolderB holds 1200 messages of A01 for the paging; Spam is
// empty.
class tst_frmViewChecked : public QObject
{
    Q_OBJECT
    ServerFixture server;
    QHash<QString, qint64> records; // by subject
    QHash<QString, QDate> dates;    // by subject

    void Store(ViewsFixture::Row Row)
    {
        const qint64 record = ViewsFixture::Insert(server, Row);
        QVERIFY(record > 0);
        records.insert(Row.Subject, record);
        dates.insert(Row.Subject, Row.Date.date());
    }
    // A browser on a folder of account A01, loaded.
    std::unique_ptr<frmViewChecked> Browser(const QString &Folder, const QString &Trigger = QString())
    {
        auto view = std::make_unique<frmViewChecked>();
        view->ShowReadingPane(false);
        view->ShowMessages(QStringLiteral("A01"), Trigger);
        // The folder of the account loads first; its replies are dropped.
        QSignalSpy loaded(view.get(), &frmViewChecked::Loaded);
        view->SelectFolder(QStringLiteral("P") + Folder);
        if (!loaded.wait(20000) || view->FolderID != Folder)
            return nullptr;
        return view;
    }
    static bool Reload(frmViewChecked &View)
    {
        QSignalSpy loaded(&View, &frmViewChecked::Loaded);
        View.LoadView();
        return loaded.wait(20000);
    }
    static QStringList Subjects(const frmViewChecked &View)
    {
        QStringList subjects;
        for (const QTreeWidgetItem *row : View.Rows())
            subjects << row->text(frmViewChecked::ColSubject);
        subjects.sort();
        return subjects;
    }
    QTreeWidgetItem *RowOf(const frmViewChecked &View, const QString &Subject)
    {
        for (QTreeWidgetItem *row : View.Rows())
            if (row->text(frmViewChecked::ColSubject) == Subject)
                return row;
        return nullptr;
    }
    QVariant Stored(const QString &Column, const QString &Subject)
    {
        return ViewsFixture::Value(server, QStringLiteral("SELECT %1 FROM MessageStore WHERE RecordNo=%2")
                                               .arg(Column)
                                               .arg(records.value(Subject)));
    }

private slots:
    void initTestCase()
    {
        QString problem;
        QVERIFY2(ViewsFixture::Start(server, problem), qPrintable(problem));
        const QDateTime now = QDateTime::currentDateTime();
        ViewsFixture::Row row;
        row.Subject = QStringLiteral("Invoice 1001");
        row.Date = now.addDays(-1);
        Store(row);
        row.Subject = QStringLiteral("Invoice 1002");
        row.Date = now;
        row.Succeeded = false;
        row.Error = QStringLiteral("the action failed");
        row.Flags = 2;
        Store(row);
        row = ViewsFixture::Row();
        row.Subject = QStringLiteral("Newsletter");
        row.TriggerID = QStringLiteral("-");
        row.Matched = false;
        row.Date = now.addDays(-400);
        row.Flags = 2;
        Store(row);
        row = ViewsFixture::Row();
        row.Subject = QStringLiteral("Order form");
        row.TriggerID = QStringLiteral("T2");
        row.Date = now.addDays(-45);
        Store(row);
        row = ViewsFixture::Row();
        row.Subject = QStringLiteral("Pop message");
        row.AccountID = QStringLiteral("A02");
        row.TriggerID = QStringLiteral("-");
        Store(row);
        // The bulk, newest first: Bulk 0 is the newest.
        QSqlDatabase store = ViewsFixture::Database(server, QStringLiteral("MessageStore"));
        store.transaction();
        for (int i = 0; i < 1200; ++i) {
            ViewsFixture::Row bulk;
            bulk.FolderID = QStringLiteral("FolderB");
            bulk.Subject = QStringLiteral("Bulk %1").arg(i);
            bulk.Date = now.addSecs(-60 * (i + 1));
            bulk.Mime = QStringLiteral("Subject: x\r\n\r\nx\r\n");
            QVERIFY(ViewsFixture::Insert(server, bulk) > 0);
        }
        store.commit();
    }

    void pagesAndPeriodsAreComputed()
    {
        QCOMPARE(frmViewChecked::PageCaptions(0), QStringList());
        QCOMPARE(frmViewChecked::PageCaptions(500), QStringList());
        QCOMPARE(frmViewChecked::PageCaptions(1000), (QStringList{QStringLiteral("1-500"), QStringLiteral("501-1000")}));
        QCOMPARE(frmViewChecked::PageCaptions(1001).last(), QStringLiteral("1001-1001"));
        QCOMPARE(frmViewChecked::PageCaptions(7, 0).size(), 0); // a page size of 0 is taken as 500

        const QDate day(2024, 3, 15);
        using Range = std::pair<QDate, QDate>;
        QCOMPARE(frmViewChecked::PeriodRange(0, day), (Range{QDate(2000, 1, 1), day}));
        QCOMPARE(frmViewChecked::PeriodRange(2, day), (Range{QDate(2023, 1, 1), QDate(2023, 12, 31)}));
        QCOMPARE(frmViewChecked::PeriodRange(4, day), (Range{QDate(2024, 2, 1), QDate(2024, 2, 29)}));
        QCOMPARE(frmViewChecked::PeriodRange(4, QDate(2024, 1, 10)), (Range{QDate(2023, 12, 1), QDate(2023, 12, 31)}));
        QCOMPARE(frmViewChecked::PeriodRange(5, day).first, QDate(2024, 3, 8));

        QCOMPARE(frmViewChecked::DateBand(day, day), QStringLiteral("Date: Today"));
        QCOMPARE(frmViewChecked::DateBand(QDate(2024, 3, 14), day), QStringLiteral("Date: Yesterday"));
        QCOMPARE(frmViewChecked::DateBand(QDate(2024, 3, 1), day), QStringLiteral("Date: This Month"));
        QCOMPARE(frmViewChecked::DateBand(QDate(2024, 1, 1), day), QStringLiteral("Date: This Year"));
        QCOMPARE(frmViewChecked::DateBand(QDate(2023, 12, 31), day), QStringLiteral("Date: Older"));
    }

    void pagesAreReadByTheirTabs()
    {
        auto view = Browser(QStringLiteral("FolderB"));
        QVERIFY(view);
        QCOMPARE(view->Total, 1200);
        QCOMPARE(view->Rows().size(), 500);
        QVERIFY(!view->PageTabs->isHidden());
        QCOMPARE(view->PageTabs->count(), 3);
        QCOMPARE(view->PageTabs->tabText(2), QStringLiteral("1001-1200"));
        QCOMPARE(view->lblStatus->text().left(46), QStringLiteral("1200 Messages. Retrieved 500 Records From Serv"));

        QSignalSpy loaded(view.get(), &frmViewChecked::Loaded);
        emit view->PageTabs->tabBarClicked(2);
        QVERIFY(loaded.wait(20000));
        QCOMPARE(view->Rows().size(), 200);
        QCOMPARE(view->Rows().first()->text(frmViewChecked::ColSubject), QStringLiteral("Bulk 1000"));
        QCOMPARE(view->Rows().last()->text(frmViewChecked::ColSubject), QStringLiteral("Bulk 1199"));
        // Rows group under their date bands; the record number rides on the row.
        QVERIFY(view->Rows().first()->parent()->text(frmViewChecked::ColFrom).startsWith(QStringLiteral("Date: ")));
        QVERIFY(frmViewChecked::RecordOf(view->Rows().first()) > 0);
    }

    void filtersSelectTheirRows()
    {
        auto view = Browser(QStringLiteral("FolderA"));
        QVERIFY(view);
        const QStringList ofAccount{QStringLiteral("Invoice 1001"), QStringLiteral("Invoice 1002"),
                                    QStringLiteral("Newsletter"), QStringLiteral("Order form")};
        QCOMPARE(Subjects(*view), ofAccount);
        QTreeWidgetItem *failed = RowOf(*view, QStringLiteral("Invoice 1002"));
        QCOMPARE(failed->text(frmViewChecked::ColError), QStringLiteral("the action failed"));
        QCOMPARE(failed->text(frmViewChecked::ColSuccess), QString());
        QVERIFY(!failed->font(frmViewChecked::ColSubject).bold());
        QVERIFY(RowOf(*view, QStringLiteral("Invoice 1001"))->font(frmViewChecked::ColSubject).bold()); // unread

        view->CommandBar->Command(frmViewChecked::ID_ERRORSONLY)->trigger();
        QVERIFY(QSignalSpy(view.get(), &frmViewChecked::Loaded).wait(20000));
        QCOMPARE(Subjects(*view), QStringList{QStringLiteral("Invoice 1002")});
        view->CommandBar->Command(frmViewChecked::ID_ERRORSONLY)->trigger();
        view->CommandBar->Command(frmViewChecked::ID_MATCHESONLY)->trigger();
        QVERIFY(QSignalSpy(view.get(), &frmViewChecked::Loaded).wait(20000));
        QCOMPARE(Subjects(*view), (QStringList{QStringLiteral("Invoice 1001"), QStringLiteral("Invoice 1002"),
                                               QStringLiteral("Order form")}));
        view->MatchesOnly = false;

        view->AllAccounts = true;
        QVERIFY(Reload(*view));
        QCOMPARE(Subjects(*view).size(), 5);
        QVERIFY(Subjects(*view).contains(QStringLiteral("Pop message")));
        view->AllAccounts = false;

        view->txtSearch->setText(QStringLiteral("Invoice"));
        view->CommandBar->Command(frmViewChecked::ID_REFRESH)->trigger();
        QVERIFY(QSignalSpy(view.get(), &frmViewChecked::Loaded).wait(20000));
        QCOMPARE(Subjects(*view), (QStringList{QStringLiteral("Invoice 1001"), QStringLiteral("Invoice 1002")}));
        QVERIFY(view->Caption().endsWith(QStringLiteral(" (Containing 'Invoice')")));
        view->txtSearch->clear();
        view->SearchText.clear();

        for (int period : {2, 7, 9}) {
            view->SetPeriod(period);
            QVERIFY(Reload(*view));
            QStringList expected;
            for (const QString &subject : ofAccount)
                if (dates.value(subject) >= view->FromDate && dates.value(subject) <= view->ToDate)
                    expected << subject;
            QCOMPARE(Subjects(*view), expected);
        }
        view->SetPeriod(0);

        auto trigger = Browser(QStringLiteral("FolderA"), QStringLiteral("T1"));
        QVERIFY(trigger);
        QCOMPARE(Subjects(*trigger), (QStringList{QStringLiteral("Invoice 1001"), QStringLiteral("Invoice 1002")}));
        QVERIFY(trigger->Caption().contains(QStringLiteral(" - Trigger Orders <new> & 'old'")));
    }

    void aReplyForAFormerViewIsDropped()
    {
        auto view = Browser(QStringLiteral("FolderA"));
        QVERIFY(view);
        QSignalSpy loaded(view.get(), &frmViewChecked::Loaded);
        view->SelectFolder(QStringLiteral("PFolderB"));
        view->SelectFolder(QStringLiteral("PFolderA"));
        QVERIFY(loaded.wait(20000));
        QTest::qWait(500); // the first folder's replies would have come by now
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(view->Total, 4);
        QCOMPARE(view->Rows().size(), 4);
    }

    void marksMovesAndDeletesReachTheServer()
    {
        auto view = Browser(QStringLiteral("FolderA"));
        QVERIFY(view);
        QTreeWidgetItem *row = RowOf(*view, QStringLiteral("Invoice 1001"));
        QVERIFY(view->MarkRows({row}, true));
        QCOMPARE(Stored(QStringLiteral("MessageFlags"), QStringLiteral("Invoice 1001")).toInt(), 2);
        QVERIFY(!row->font(frmViewChecked::ColSubject).bold());
        QVERIFY(view->MarkRows({row}, false));
        QCOMPARE(Stored(QStringLiteral("MessageFlags"), QStringLiteral("Invoice 1001")).toInt(), 0);

        QVERIFY(!view->MoveRows({RowOf(*view, QStringLiteral("Newsletter"))}, QStringLiteral("ROOT")));
        QVERIFY(!view->MoveRows({RowOf(*view, QStringLiteral("Newsletter"))}, QStringLiteral("PUBLIC")));
        QVERIFY(view->MoveRows({RowOf(*view, QStringLiteral("Newsletter"))}, QStringLiteral("PSpam")));
        QCOMPARE(Stored(QStringLiteral("FolderID"), QStringLiteral("Newsletter")).toString(), QStringLiteral("Spam"));
        QVERIFY(!RowOf(*view, QStringLiteral("Newsletter")));

        // A No keeps the rows; a Yes deletes the selected one only.
        RowOf(*view, QStringLiteral("Order form"))->setSelected(true);
        {
            ModalCloser closer(QMessageBox::No);
            view->RemoveSelected();
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts.first().startsWith(QStringLiteral("Delete Selected Messages?\nThese messages will be processed again by Postvane")));
        }
        QVERIFY(Stored(QStringLiteral("RecordNo"), QStringLiteral("Order form")).isValid());
        {
            ModalCloser closer(QMessageBox::Yes);
            view->RemoveSelected();
        }
        QVERIFY(!Stored(QStringLiteral("RecordNo"), QStringLiteral("Order form")).isValid());
        QVERIFY(!RowOf(*view, QStringLiteral("Order form")));
        QVERIFY(RowOf(*view, QStringLiteral("Invoice 1001")));

        // Remove All asks first; No leaves the folder as it was.
        auto bulk = Browser(QStringLiteral("FolderB"));
        QVERIFY(bulk);
        {
            ModalCloser closer(QMessageBox::No);
            bulk->RemoveAll();
            QCOMPARE(closer.Texts.size(), 1);
            QVERIFY(closer.Texts.first().startsWith(QStringLiteral("Delete all messages from the current view?")));
        }
        QCOMPARE(ViewsFixture::Value(server, QStringLiteral("SELECT COUNT(*) FROM MessageStore WHERE FolderID='FolderB'")).toInt(),
                 1200);
    }

    void theReadingPaneShowsTheLastRowAndMarksItRead()
    {
        auto view = Browser(QStringLiteral("FolderA"));
        QVERIFY(view);
        view->ShowReadingPane(true);
        view->show();
        view->ReadTimer.setInterval(100);
        QTreeWidgetItem *first = RowOf(*view, QStringLiteral("Invoice 1002"));
        QTreeWidgetItem *last = RowOf(*view, QStringLiteral("Invoice 1001"));
        QVERIFY(IsUnreadOnServer(QStringLiteral("Invoice 1001")));
        QSignalSpy shown(view->Preview, &frmViewPreview::Shown);
        view->Grid->setCurrentItem(first);
        view->Grid->setCurrentItem(last);
        QVERIFY(shown.wait(20000));
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().first().toInt(), records.value(QStringLiteral("Invoice 1001")));
        QCOMPARE(view->Preview->lblSubject->text(), QStringLiteral("Invoice 1001"));
        QTRY_VERIFY(!frmViewChecked::IsUnread(last));
        QVERIFY(!IsUnreadOnServer(QStringLiteral("Invoice 1001")));
        ShellFixture::Picture(view.get(), QStringLiteral("browser"));
    }

private:
    bool IsUnreadOnServer(const QString &Subject) { return Stored(QStringLiteral("MessageFlags"), Subject).toInt() != 2; }
};

POSTVANE_TEST(tst_frmViewChecked)
#include "tst_frmViewChecked.moc"
