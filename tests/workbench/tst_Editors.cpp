#include "ModalCloser.h"
#include "ShellFixture.h"
#include "TestRegistry.h"
#include "editors/frmFolder.h"
#include "editors/frmUser.h"
#include "editors/frmUserOrganization.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTreeWidget>

using namespace ShellFixture;

namespace {

void SetRows(QTableWidget *Grid, const QList<QStringList> &Rows)
{
    Grid->setRowCount(int(Rows.size()));
    for (int row = 0; row < Rows.size(); ++row)
        for (int column = 0; column < Rows[row].size(); ++column)
            Grid->setItem(row, column, new QTableWidgetItem(Rows[row][column]));
}

QTreeWidgetItem *Node(QTreeWidget *Tree, const QString &Text)
{
    const QList<QTreeWidgetItem *> found = Tree->findItems(Text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.value(0);
}

} // namespace

// The user, folder and organization editors: what each saves, read back
// from a real server, and what each refuses before anything is sent.
class tst_Editors : public QObject
{
    Q_OBJECT
    ServerFixture server;

    std::unique_ptr<clsUser> ServerUser(const QString &ID)
    {
        auto user = std::make_unique<clsUser>();
        user->setXML(server.Get(Requests::GetUser(ID)).Text());
        return user;
    }
    bool CanLogOn(const QString &Name, const QString &Password)
    {
        const HttpReply reply = server.Get(Requests::GetSession(), Name, Password);
        return reply.Status == 200 && !reply.Text().startsWith(QStringLiteral("Error:"));
    }
    const clsUserFolder *FolderNamed(const QString &Name)
    {
        for (const clsUserFolder *folder : UserFolders())
            if (folder->Name == Name)
                return folder;
        return nullptr;
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QVERIFY(Fill(server));
        QVERIFY(LogOn(server));
    }

    void cleanupTestCase() { Remote().Close(); }

    void folderSavesItsParentAndAddresses()
    {
        {
            frmFolder editor(nullptr);
            ModalCloser closer;
            QVERIFY(!editor.Save());
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("You must enter a folder name."));
        }
        QVERIFY(!FolderNamed(QString()));

        frmFolder invoices(nullptr);
        invoices.txtName->setText(QStringLiteral("Invoices"));
        SetRows(invoices.EmailGrid, {{QStringLiteral("inv@alpha.test")}, {QStringLiteral("billing")}});
        QVERIFY(invoices.Save());
        const clsUserFolder *saved = FolderNamed(QStringLiteral("Invoices"));
        QVERIFY(saved);
        QCOMPARE(saved->Parent, QString());
        QCOMPARE(saved->EmailAddresses(), (QStringList{QStringLiteral("inv@alpha.test"), QStringLiteral("billing")}));
        const QString invoicesID = saved->ID;

        frmFolder year(nullptr);
        year.txtName->setText(QStringLiteral("2024"));
        QVERIFY(year.SelectParent(QStringLiteral("P") + invoicesID));
        year.show();
        Picture(&year, QStringLiteral("folder"));
        QVERIFY(year.Save());
        QCOMPARE(FolderNamed(QStringLiteral("2024"))->Parent, invoicesID);
        // The server's own list agrees.
        colUserFolders onServer;
        onServer.setXML(server.Get(Requests::GetFolders()).Text());
        QCOMPARE(onServer.Item(FolderNamed(QStringLiteral("2024"))->ID)->Parent, invoicesID);
    }

    void newUserSavesAndLogsOn()
    {
        const clsUserFolder *invoices = FolderNamed(QStringLiteral("Invoices"));
        QVERIFY(invoices);
        const QString invoicesID = invoices->ID; // the save fetches the folders anew
        frmUser editor(nullptr);
        QVERIFY(editor.txtPassword->text().isEmpty());
        editor.txtUserName->setText(QStringLiteral("carol"));
        QTest::keyClicks(editor.txtPassword, QStringLiteral("s3cret"));
        editor.txtFullName->setText(QStringLiteral("Carol <C&C>"));
        editor.cmboOrg->setCurrentIndex(editor.cmboOrg->findData(invoices->OrganizationID));
        SetRows(editor.EmailGrid, {{QStringLiteral("carol@alpha.test")}, {QStringLiteral("c2")}});
        QTreeWidgetItem *node = Node(editor.FolderTree, QStringLiteral("Invoices"));
        QVERIFY(node);
        Node(editor.FolderTree, QStringLiteral("All Folders"))->setCheckState(0, Qt::Unchecked);
        node->setCheckState(0, Qt::Checked);
        editor.show();
        Picture(&editor, QStringLiteral("user"));
        QVERIFY(editor.Save());

        const auto saved = ServerUser(editor.Edited.ID);
        QCOMPARE(saved->Username, QStringLiteral("carol"));
        QCOMPARE(saved->Fullname, QStringLiteral("Carol <C&C>"));
        QCOMPARE(saved->Email, QStringLiteral("carol@alpha.test,c2"));
        QCOMPARE(saved->Folders, invoicesID);
        QVERIFY(CanLogOn(QStringLiteral("carol"), QStringLiteral("s3cret")));
        QVERIFY(Users().Item(editor.Edited.ID));
    }

    void existingUserKeepsItsPasswordUnlessTyped()
    {
        frmUser editor(Users().Item(QStringLiteral("UAlice")));
        QCOMPARE(editor.txtPassword->text(), frmUser::PasswordPlaceholder);
        QCOMPARE(editor.txtUserName->text(), QStringLiteral("alice"));
        editor.txtFullName->setText(QStringLiteral("Alice Adams"));
        // Ticking the root means every folder: an empty list.
        Node(editor.FolderTree, QStringLiteral("All Folders"))->setCheckState(0, Qt::Checked);
        QVERIFY(editor.Save()); // its own unchanged name passes the name check
        QCOMPARE(ServerUser(QStringLiteral("UAlice"))->Fullname, QStringLiteral("Alice Adams"));
        QCOMPARE(ServerUser(QStringLiteral("UAlice"))->Folders, QString());
        QVERIFY(CanLogOn(QStringLiteral("alice"), QStringLiteral("pw")));

        frmUser again(Users().Item(QStringLiteral("UAlice")));
        again.txtPassword->clear();
        QTest::keyClicks(again.txtPassword, QStringLiteral("new-pw"));
        QVERIFY(again.Save());
        QVERIFY(!CanLogOn(QStringLiteral("alice"), QStringLiteral("pw")));
        QVERIFY(CanLogOn(QStringLiteral("alice"), QStringLiteral("new-pw")));
    }

    void userRefusalsSendNothing()
    {
        const QString before = server.Get(QStringLiteral("getusers.xml")).Text();
        frmUser editor(Users().Item(QStringLiteral("UAlice")));
        editor.txtUserName->setText(QStringLiteral("bob"));
        {
            ModalCloser closer;
            QVERIFY(!editor.Save());
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("A user already exists with this username."));
        }
        editor.txtUserName->setText(QStringLiteral("  "));
        {
            ModalCloser closer;
            QVERIFY(!editor.Save());
            QCOMPARE(closer.Texts.size(), 1);
        }
        QCOMPARE(server.Get(QStringLiteral("getusers.xml")).Text(), before);
    }

    void foldersOfOtherUsersAreHidden()
    {
        const clsUserFolder *invoices = FolderNamed(QStringLiteral("Invoices"));
        QVERIFY(invoices);
        auto own = std::make_unique<clsUserFolder>();
        own->ID = QStringLiteral("FOwn");
        own->Name = QStringLiteral("Carol's own");
        own->OrganizationID = invoices->OrganizationID;
        auto other = std::make_unique<clsUserFolder>();
        other->ID = QStringLiteral("FOther");
        other->Name = QStringLiteral("Someone else's");
        other->OrganizationID = invoices->OrganizationID;
        other->UserID = QStringLiteral("UNobody");
        const clsUser *carol = Users().Item(Users().UserNoFromName(QStringLiteral("carol")));
        own->UserID = carol->ID;
        UserFolders().Add(std::move(own));
        UserFolders().Add(std::move(other));
        frmUser editor(carol);
        QVERIFY(Node(editor.FolderTree, QStringLiteral("Carol's own")));
        QVERIFY(!Node(editor.FolderTree, QStringLiteral("Someone else's")));
        QVERIFY(Node(editor.FolderTree, QStringLiteral("2024")));
        // The ticked folder of the saved user comes back ticked.
        QCOMPARE(editor.TickedFolders(), QStringList{QStringLiteral("F") + invoices->ID});
        Remote().HTTPGet(Requests::GetFolders());
    }

    void organizationSavesNamedConstantsOnly()
    {
        {
            frmUserOrganization editor(nullptr);
            editor.txtName->clear();
            ModalCloser closer;
            QVERIFY(!editor.Save());
            QCOMPARE(closer.Texts.value(0).section(u'\n', 0, 0), QStringLiteral("Please enter a Name"));
        }
        frmUserOrganization editor(nullptr);
        editor.txtName->setText(QStringLiteral("Gamma & Sons"));
        editor.txtDomain->setText(QStringLiteral("gamma.test"));
        editor.txtMessagesDay->setText(QStringLiteral("50"));
        SetRows(editor.GridConstants, {{QStringLiteral("Host"), QStringLiteral("imap.gamma.test")},
                                       {QString(), QStringLiteral("lost")},
                                       {QStringLiteral(" Port "), QStringLiteral("993")}});
        QCOMPARE(editor.GridConstantsText(), QStringLiteral("Host=imap.gamma.test\tPort=993\t"));
        editor.show();
        Picture(&editor, QStringLiteral("organization"));
        QVERIFY(editor.Save());
        colOrganization onServer;
        onServer.setXML(server.Get(Requests::GetOrganizations()).Text());
        const clsUserOrganization *saved = onServer.Item(editor.Edited.ID);
        QVERIFY(saved);
        QCOMPARE(saved->Name, QStringLiteral("Gamma & Sons"));
        QCOMPARE(saved->Domain, QStringLiteral("gamma.test"));
        QCOMPARE(saved->MaxMessagesDay, 50);
        QCOMPARE(saved->ConstantValue(QStringLiteral("Host")), QStringLiteral("imap.gamma.test"));
        QCOMPARE(saved->NumConstants(), 2);
        QVERIFY(Organizations().Item(editor.Edited.ID));
    }
};

POSTVANE_TEST(tst_Editors)
#include "tst_Editors.moc"
