#include "ServerFixture.h"
#include "TestRegistry.h"
#include "model/colUsers.h"

#include <QFile>
#include <QHostAddress>
#include <QTest>
#include <QtEndian>

namespace {

// The addresses the port is listened on, from the kernel's socket tables.
QStringList ListeningAddresses(quint16 Port)
{
    QStringList addresses;
    for (const QString &table : {QStringLiteral("/proc/net/tcp"), QStringLiteral("/proc/net/tcp6")}) {
        QFile file(table);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        file.readLine();
        while (!file.atEnd()) {
            const QStringList fields = QString::fromLatin1(file.readLine()).simplified().split(u' ');
            const QStringList local = fields.value(1).split(u':');
            if (fields.value(3) != QStringLiteral("0A") || local.value(1).toUInt(nullptr, 16) != Port)
                continue;
            const QByteArray raw = QByteArray::fromHex(local.value(0).toLatin1());
            if (raw.size() == 4) {
                addresses << QHostAddress(qFromLittleEndian<quint32>(raw.constData())).toString();
            } else {
                QByteArray bytes; // the kernel writes each 32-bit word in host order
                for (int word = 0; word < 16; word += 4)
                    for (int i = 3; i >= 0; --i)
                        bytes += raw.at(word + i);
                addresses << QHostAddress(reinterpret_cast<const quint8 *>(bytes.constData())).toString();
            }
        }
    }
    addresses.sort();
    return addresses;
}

} // namespace

// A server whose system administrator has no password yet can only be
// reached from its own machine; it opens up once the password is set.
class tst_ServerFirstStart : public QObject
{
    Q_OBJECT
    ServerFixture server;

    QString AdminFragment(const QString &Password)
    {
        colUsers users;
        users.setXML(server.Get(QStringLiteral("getusers.xml"), QStringLiteral("Admin"), m_password).Text());
        clsUser *admin = users.Item(users.UserNoFromName(QStringLiteral("Admin")));
        if (!admin)
            return QString();
        m_adminID = admin->ID;
        admin->Password = Password;
        return admin->XML();
    }
    QString ServerLog() const
    {
        QFile log(server.DataPath() + QStringLiteral("PostvaneServerLog.LOG"));
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }
    QString m_password;
    QString m_adminID;

private slots:
    void initTestCase()
    {
        server.BindTo = QStringLiteral("0.0.0.0");
        QVERIFY2(server.Start(), qPrintable(server.Problem));
    }

    void loopbackOnlyUntilTheAdministratorHasAPassword()
    {
        QCOMPARE(ListeningAddresses(server.Port), QStringList{QStringLiteral("127.0.0.1")});
        // The reason follows the listening line that the fixture waits for.
        QTRY_COMPARE(ServerLog().count(QStringLiteral("has no password, so only this machine can connect")), 1);

        const QString fragment = AdminFragment(QStringLiteral("s3cret"));
        QVERIFY(!fragment.isEmpty());
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=") + m_adminID, fragment.toUtf8()).Text(),
                 QStringLiteral("OK"));
        m_password = QStringLiteral("s3cret");
        QCOMPARE(ListeningAddresses(server.Port), QStringList{QStringLiteral("0.0.0.0")});
        QCOMPARE(server.Get(QStringLiteral("getsession.xml"), QStringLiteral("Admin"), m_password).Status, 200);
    }

    void aNewAdministratorWithoutPasswordClosesItAgain()
    {
        clsUser second;
        second.ID = QStringLiteral("Second1");
        second.Username = QStringLiteral("second");
        second.Admin = true;
        colUsers users;
        users.setXML(server.Get(QStringLiteral("getusers.xml"), QStringLiteral("Admin"), m_password).Text());
        second.OrganizationID = users.Item(1)->OrganizationID;
        QCOMPARE(server.Post(QStringLiteral("postuser.htm?userid=Second1"), second.XML().toUtf8(), QStringLiteral("Admin"),
                             m_password)
                     .Text(),
                 QStringLiteral("OK"));
        QCOMPARE(ListeningAddresses(server.Port), QStringList{QStringLiteral("127.0.0.1")});
        QCOMPARE(server.Get(QStringLiteral("deleteuser.xml?userid=Second1"), QStringLiteral("Admin"), m_password).Text(),
                 QStringLiteral("OK"));
        QCOMPARE(ListeningAddresses(server.Port), QStringList{QStringLiteral("0.0.0.0")});
    }

    void aRestartKeepsTheConfiguredAddress()
    {
        QCOMPARE(server.Stop(), 0);
        QVERIFY2(server.Start(), qPrintable(server.Problem));
        QCOMPARE(ListeningAddresses(server.Port), QStringList{QStringLiteral("0.0.0.0")});
    }

    void cleanupTestCase() { server.Stop(); }
};

POSTVANE_TEST(tst_ServerFirstStart)
#include "tst_ServerFirstStart.moc"
