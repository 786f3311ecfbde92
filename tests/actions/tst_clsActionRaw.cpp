#include "TestRegistry.h"
#include "actions/ActionCatalogue.h"
#include "actions/clsActionRaw.h"
#include "actions/colActions.h"
#include "foundation/clsXML.h"
#include "model/Condition.h"

#include <QTest>

namespace {

const QString StoredCondition = QStringLiteral("<Lines><Line>|%a%|=|1</Line></Lines>");

bool IsCRM(const QString &className)
{
    return className.startsWith(QStringLiteral("CRM"));
}

// A fragment as a kind's own record writes it: the envelope, own values of
// several types, a nested fragment that has tags of the envelope, and the
// condition last where the kind stores one.
QString KindFragment(const QString &className, bool enabled = true)
{
    clsXML writer;
    writer.Append(className, QStringLiteral("Class"));
    writer.Append(QStringLiteral("R1"), QStringLiteral("ID"));
    writer.Append(enabled, QStringLiteral("Enabled"));
    writer.Append(QStringLiteral("mail <at> example's"), QStringLiteral("SendTo"));
    writer.Append(qint32(2880), QStringLiteral("MaxWaitFor"));
    writer.AppendPassword(QStringLiteral("secret"), QStringLiteral("Password"));
    if (IsCRM(className))
        writer.Append(QStringLiteral("SFDC"), QStringLiteral("CRMType"));
    writer.AppendXML(QStringLiteral("<ID>inner</ID>\n<Enabled>-1</Enabled>\n<Condition>x</Condition>\n<Site>s</Site>"),
                     QStringLiteral("SharePoint"));
    if (!IsCRM(className))
        writer.AppendXML(StoredCondition, QStringLiteral("Condition"));
    return writer.GetXML();
}

// The kinds that the factory holds raw, by class key.
QStringList RawKinds()
{
    QStringList keys;
    QList<ActionKind> kinds = ActionCatalogue();
    kinds += ActionHiddenKinds();
    for (const ActionKind &kind : kinds) {
        const std::unique_ptr<ActionItem> action = colActions::NewObject(kind.Key);
        if (action->As<clsActionRaw>() && !keys.contains(action->ClassName()))
            keys << action->ClassName();
    }
    return keys;
}

} // namespace

class tst_clsActionRaw : public QObject
{
    Q_OBJECT
private slots:
    void everyRawKindWritesItsFragmentUnchanged()
    {
        const QStringList kinds = RawKinds();
        QVERIFY(kinds.size() > 30);
        for (const QString &className : kinds) {
            const QString fragment = KindFragment(className);
            colActions list;
            ActionItem *action = list.AddXML(fragment);
            QVERIFY2(action, qPrintable(className));
            QCOMPARE(action->XML(), fragment);
            QCOMPARE(action->ClassName(), className);
            QCOMPARE(action->ID(), QStringLiteral("R1"));
            QVERIFY(action->Enabled());
            QCOMPARE(action->Condition(), IsCRM(className) ? QString() : StoredCondition);

            colActions again;
            QCOMPARE(again.AddXML(action->XML())->XML(), fragment);
        }
    }

    void enabledIsReadFromTheHeadOnly()
    {
        clsActionRaw action(QStringLiteral("FTP"), QStringLiteral("Upload FTP Files"));
        action.setXML(KindFragment(QStringLiteral("FTP"), false));
        QVERIFY(!action.Enabled);
        QCOMPARE(action.ID, QStringLiteral("R1"));
        QCOMPARE(action.Condition, StoredCondition);
    }

    // Qt's comparison without regard to case decides, also where it folds a
    // character outside ASCII, such as the long s, onto a letter of a tag.
    void envelopeTagsAreFoundWithoutRegardToCase_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("id");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<QString>("condition");
        QTest::newRow("other case") << "<CLASS>FTP</class><id>5</ID><enabled>0</ENABLED><HostName>h</HostName>"
                                       "<condition>c</CONDITION>"
                                    << "5" << false << "c";
        QTest::newRow("folded outside ASCII")
            << QStringLiteral("<Cla\u017F\u017F>FTP</CLA\u017Fs><ID>6</ID><HostName>h</HostName>") << "6" << false << "";
    }
    void envelopeTagsAreFoundWithoutRegardToCase()
    {
        QFETCH(QString, fragment);
        QFETCH(QString, id);
        QFETCH(bool, enabled);
        QFETCH(QString, condition);
        clsActionRaw action(QStringLiteral("FTP"), QStringLiteral("Upload FTP Files"));
        action.setXML(fragment);
        QCOMPARE(action.ID, id);
        QCOMPARE(action.Enabled, enabled);
        QCOMPARE(action.Condition, condition);
        QCOMPARE(action.TagValue(QStringLiteral("HostName")), QStringLiteral("h"));
        QCOMPARE(action.XML(), fragment);
    }

    void ownTagsAreReadable()
    {
        clsActionRaw action(QStringLiteral("Validation"), QStringLiteral("Wait For Validation"));
        action.setXML(KindFragment(QStringLiteral("Validation")));
        QCOMPARE(action.TagValue(QStringLiteral("SendTo")), QStringLiteral("mail <at> example's"));
        QCOMPARE(action.TagValue(QStringLiteral("MaxWaitFor")), QStringLiteral("2880"));
        QCOMPARE(action.TagValue(QStringLiteral("Missing")), QString());
    }

    void changedSharedMembersRewriteTheEnvelopeOnly()
    {
        clsActionRaw action(QStringLiteral("FTP"), QStringLiteral("Upload FTP Files"));
        action.setXML(KindFragment(QStringLiteral("FTP")));
        action.ID = QStringLiteral("R2");
        action.Enabled = false;
        action.Condition = QStringLiteral("<Lines><Line>|%b%|!|</Line></Lines>");
        const QString xml = action.XML();
        QVERIFY(xml.startsWith(QStringLiteral("<Class>FTP</Class>\n<ID>R2</ID>\n<SendTo>")));

        clsActionRaw read(QStringLiteral("FTP"), QStringLiteral("Upload FTP Files"));
        read.setXML(xml);
        QCOMPARE(read.ID, QStringLiteral("R2"));
        QVERIFY(!read.Enabled);
        QCOMPARE(read.Condition, action.Condition);
        QCOMPARE(read.TagValue(QStringLiteral("SendTo")), QStringLiteral("mail <at> example's"));
        QCOMPARE(read.XML(), xml);
        QVERIFY(xml.contains(QStringLiteral("<Site>s</Site>")));
    }

    void crmKindsKeepTheirTypeAndStoreNoCondition()
    {
        std::unique_ptr<ActionItem> action = colActions::NewObject(QStringLiteral("CRMGet.MSD"));
        QCOMPARE(action->As<clsActionRaw>()->CRMType, QStringLiteral("MSD"));
        action->setXML(KindFragment(QStringLiteral("CRMGet")));
        QCOMPARE(action->As<clsActionRaw>()->CRMType, QStringLiteral("SFDC"));
        action->setCondition(StoredCondition);
        QVERIFY(!action->XML().contains(QStringLiteral("<Condition>\n")));
        QCOMPARE(ActionIcon(action->ClassName() + u'.' + action->As<clsActionRaw>()->CRMType), 1213);
    }

    void newRawActionWritesTheBareEnvelope()
    {
        const std::unique_ptr<ActionItem> action = colActions::NewObject(QStringLiteral("ftp"));
        QCOMPARE(action->XML(), "<Class>FTP</Class>\n<ID>" + action->ID() + "</ID>\n<Enabled>-1</Enabled>\n");
        QCOMPARE(action->ClassDesc(), QStringLiteral("Upload FTP Files"));
    }

    void descriptionIsTheHeadAlone()
    {
        clsActionRaw action(QStringLiteral("DNS"), QStringLiteral("DNS Lookup"));
        QCOMPARE(action.ActionDescription(),
                 QStringLiteral("<TextBlock VerticalAlignment='Center'><Bold>DNS Lookup </Bold></TextBlock>"));
        action.Condition = StoredCondition;
        QCOMPARE(action.ActionDescription(),
                 ActionDescriptionHead(QStringLiteral("DNS Lookup"), StoredCondition) + "</TextBlock>");
    }

    void badFragmentsAreKeptAsTheyCame_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("condition");
        QTest::newRow("empty") << "" << "" << "";
        QTest::newRow("unclosed id") << "<Class>FTP</Class><ID>x" << "" << "";
        QTest::newRow("unclosed condition") << "<Class>FTP</Class><ID>1</ID><Condition>abc" << "1" << "";
        QTest::newRow("condition not last") << "<Class>FTP</Class><ID>1</ID><Condition>c</Condition><A>b</A>"
                                            << "1" << "";
        QTest::newRow("no head") << "<HostName>h</HostName><ID>2</ID>" << "" << "";
        QTest::newRow("repeated condition") << "<ID>1</ID><Condition>a</Condition><Condition>b</Condition>" << "1"
                                            << "b";
    }
    void badFragmentsAreKeptAsTheyCame()
    {
        QFETCH(QString, fragment);
        QFETCH(QString, id);
        QFETCH(QString, condition);
        clsActionRaw action(QStringLiteral("FTP"), QStringLiteral("Upload FTP Files"));
        action.setXML(fragment);
        QCOMPARE(action.ID, id);
        QCOMPARE(action.Condition, condition);
        if (!fragment.isEmpty())
            QCOMPARE(action.XML(), fragment);
    }
};

POSTVANE_TEST(tst_clsActionRaw)
#include "tst_clsActionRaw.moc"
