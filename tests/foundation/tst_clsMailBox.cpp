#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Registry.h"
#include "foundation/clsMailBox.h"

#include <QFile>
#include <QTest>

class tst_clsMailBox : public QObject
{
    Q_OBJECT

private slots:
    void init() { QFile::remove(MachineSettingsFile()); }
    void cleanup() { QFile::remove(MachineSettingsFile()); }

    void registryUsesThePerMachineStore()
    {
        clsMailBox box;
        QCOMPARE(box.GetRegistry(QStringLiteral("Scripts"), QStringLiteral("Counter"), QStringLiteral("none")),
                 QStringLiteral("none"));
        QVERIFY(box.SetRegistry(QStringLiteral("Scripts"), QStringLiteral("Counter"), 42));
        QCOMPARE(box.GetRegistry(QStringLiteral("Scripts"), QStringLiteral("Counter"), QStringLiteral("none")),
                 QStringLiteral("42"));
        QCOMPARE(GetMachineSetting(QStringLiteral("Scripts"), QStringLiteral("Counter")), QStringLiteral("42"));
        QVERIFY(GetUserSetting(QStringLiteral("Scripts"), QStringLiteral("Counter")).isEmpty());
    }

    void globalVariablesAreSharedByTrimmedLowerCaseName()
    {
        clsMailBox writer;
        clsMailBox reader;
        QVERIFY(!reader.GlobalVariable(QStringLiteral("tst_clsMailBox.unknown")).isValid());

        writer.setGlobalVariable(QStringLiteral("  tst_clsMailBox.Count "), 1);
        QCOMPARE(reader.GlobalVariable(QStringLiteral("TST_CLSMAILBOX.COUNT")), QVariant(1));
        writer.setGlobalVariable(QStringLiteral("tst_clsmailbox.count"), QStringLiteral("two"));
        QCOMPARE(reader.GlobalVariable(QStringLiteral("tst_clsMailBox.Count\t")), QVariant(QStringLiteral("two")));
    }

    void addToLogWritesToTheAttachedLog()
    {
        clsMailBox box;
        box.AddToLog(QStringLiteral("dropped: no message attached"));

        QStringList log;
        box.TriggerLog = [&log](const QString &line) { log << line; };
        box.AddToLog(QStringLiteral("first"));
        box.AddToLog(QStringLiteral("*error"));
        QCOMPARE(log, (QStringList{QStringLiteral("first"), QStringLiteral("*error")}));
    }
};

POSTVANE_TEST(tst_clsMailBox)
#include "tst_clsMailBox.moc"
