#include "TestRegistry.h"
#include "model/clsTriggerField.h"

#include <QTest>

namespace {

// Every property away from its new-field value, with texts that need escaping.
clsTriggerField PopulatedField()
{
    clsTriggerField f;
    f.ID = QStringLiteral("F-0001");
    f.Name = QStringLiteral("OrderNo");
    f.Enabled = f.TrimBlanks = f.Until_EndOfLine = false;
    f.ExtractBuiltIn = f.CheckSubjectLine = f.CaseSensitive = f.Until_EndOfBody = f.Until_NextBlankLine =
        f.Until_AnyChars = f.Until_ThisMany = f.Until_TheseWords = f.Until_EndTag = f.ExtractMask =
            f.SBScriptExtractEnabled = f.EnvironmentVarSet = f.KeyExists = f.Lookup = f.LookupCancelOnFail =
                f.Validate = f.Block = true;
    f.ExtractBuiltInField = QStringLiteral("%msg_date%");
    f.StartFromLastExtractPoint = 0;
    f.LookFor = QStringLiteral("Order No:\\s*<b>");
    f.ThenLookFor = QStringLiteral("#\"quoted\" & 'single'");
    f.StartAfterLookFor = 3;
    f.UntilAnyOfTheseChars = QStringLiteral(";,\t");
    f.UntilThisManyChars = 12;
    f.UntilTheseWords = QStringLiteral("Regards\r\nTeam");
    f.RemoveFirstXChars = 2;
    f.RemoveLastXChars = 1;
    f.FieldType = 4;
    f.SBScriptExtract = QStringLiteral("Sub Main\r\n\tValue = \"x\"\r\nEnd Sub");
    f.InsertInto = QStringLiteral("Orders");
    f.InsertFieldName = QStringLiteral("OrderNo");
    f.MaxLength = 40;
    f.EnvironmentVarName = QStringLiteral("ORDERNO");
    f.MapToOutLookContact = QStringLiteral("BusinessTelephoneNumber");
    f.LookupConnection = QStringLiteral("Driver={SQLite3};Database=c:\\data\\crm.db3");
    f.LookupSQL = QStringLiteral("SELECT Name FROM Customers WHERE No = '%OrderNo%'");
    f.LookupField = QStringLiteral("Name");
    f.DefaultValue = QStringLiteral("n/a");
    f.ChangeCase = 2;
    f.ValidateOption = 1;
    f.ValidateLow = Currency::FromDouble(-12.5);
    f.ValidateHigh = Currency::FromDouble(99999.1234);
    f.ValidateList = QStringLiteral("A\r\nB\r\nÄ€");
    f.ValidateAction = 1;
    f.PassToTrigger = QStringLiteral("T-42");
    f.PassToSubject = QStringLiteral("Item %fieldvalue%");
    f.PassToBody = QStringLiteral("%msg_body%");
    return f;
}

} // namespace

class tst_clsTriggerField : public QObject
{
    Q_OBJECT
private slots:
    void populatedFieldSurvivesRoundTrip()
    {
        const clsTriggerField original = PopulatedField();
        const QString written = original.XML();

        clsTriggerField copy;
        copy.setXML(written);
        QCOMPARE(copy.XML(), written);

        QCOMPARE(copy.ID, original.ID);
        QCOMPARE(copy.Enabled, false);
        QCOMPARE(copy.StartFromLastExtractPoint, qint16(0));
        QCOMPARE(copy.ThenLookFor, original.ThenLookFor);
        QCOMPARE(copy.UntilAnyOfTheseChars, original.UntilAnyOfTheseChars);
        QCOMPARE(copy.SBScriptExtract, original.SBScriptExtract);
        QCOMPARE(copy.LookupConnection, original.LookupConnection);
        QCOMPARE(copy.MapToOutLookContact, original.MapToOutLookContact);
        QCOMPARE(copy.ChangeCase, qint16(2));
        QCOMPARE(copy.ValidateLow, Currency::FromDouble(-12.5));
        QCOMPARE(copy.ValidateHigh, Currency::FromDouble(99999.1234));
        QCOMPARE(copy.ValidateList, original.ValidateList);
        QCOMPARE(copy.PassToSubject, original.PassToSubject);
        QCOMPARE(copy.PassToBody, original.PassToBody);
    }

    // Stored configurations hold these tags: a renamed, dropped or moved tag
    // would leave them unread, which no round trip shows.
    void tagsAreWrittenInStoredOrder()
    {
        clsTriggerField f = PopulatedField();
        f.Enabled = true;
        f.TrimBlanks = true;
        f.Until_EndOfLine = true;
        f.StartFromLastExtractPoint = 1;
        const QString written = f.XML();
        QVERIFY(written.startsWith(QStringLiteral("<Trigger.Field>\n")));
        QVERIFY(written.endsWith(QStringLiteral("</Trigger.Field>\n")));
        const QStringList order = {
            "ID", "Enabled", "CaseSensitive", "CheckSubjectLine", "EnvironmentVarName", "EnvironmentVarSet",
            "ExtractBuiltIn", "ExtractBuiltInField", "FieldType", "InsertFieldName", "InsertInto", "KeyExists",
            "LookFor", "MapToOutlookContact", "MaxLength", "Name", "RemoveFirstXChars", "RemoveLastXChars",
            "SBScriptExtract", "SBScriptExtractEnabled", "StartAfterLookFor", "StartFromLastExtractPoint",
            "ThenLookFor", "TrimBlanks", "Until_AnyChars", "Until_EndOfBody", "Until_EndOfLine",
            "Until_NextBlankLine", "Until_TheseWords", "Until_ThisMany", "UntilAnyOfTheseChars",
            "UntilTheseWords", "UntilThisManyChars", "Until_EndTag", "ExtractMask", "Lookup", "LookupConnectioN",
            "LookupSQL", "LookupField", "LookupCancelOnFail", "Case", "DefaultValue", "Validate", "ValidateAction",
            "ValidateHigh", "ValidateList", "ValidateLow", "ValidateOption", "Block", "PassToTrigger",
            "PassToBody", "PassToSubject"};
        qsizetype last = -1;
        for (const QString &tag : order) {
            const qsizetype at = written.indexOf(QStringLiteral("\t<") + tag + u'>');
            QVERIFY2(at > last, qPrintable(tag));
            last = at;
        }
        QCOMPARE(written.count(u'\n'), order.size() + 2);
    }

    void emptyValuesAreLeftOut()
    {
        clsTriggerField f;
        f.ID = QStringLiteral("F1");
        f.Enabled = false;
        f.Until_EndOfLine = false;
        f.TrimBlanks = false;
        f.StartFromLastExtractPoint = 0;
        f.UntilThisManyChars = 0;
        f.UntilAnyOfTheseChars.clear();
        f.PassToSubject.clear();
        f.PassToBody.clear();
        f.ValidateHigh = Currency{};
        f.ValidateLow = Currency::FromDouble(0.25);
        QCOMPARE(f.XML(), QStringLiteral("<Trigger.Field>\n\t<ID>F1</ID>\n\t<ValidateLow>0.25</ValidateLow>\n"
                                         "</Trigger.Field>\n"));
    }

    void absentTagsReadAsEmptyNotAsNewFieldValues()
    {
        clsTriggerField f = PopulatedField();
        f.setXML(QStringLiteral("<Trigger.Field><ID>F7</ID><Name>Total</Name></Trigger.Field>"));
        QCOMPARE(f.ID, QStringLiteral("F7"));
        QCOMPARE(f.Name, QStringLiteral("Total"));
        QVERIFY(!f.Enabled);
        QVERIFY(!f.Until_EndOfLine);
        QVERIFY(!f.TrimBlanks);
        QVERIFY(!f.Block);
        QCOMPARE(f.StartFromLastExtractPoint, qint16(0));
        QCOMPARE(f.UntilThisManyChars, qint16(0));
        QCOMPARE(f.FieldType, qint16(0));
        QVERIFY(f.UntilAnyOfTheseChars.isEmpty());
        QVERIFY(f.PassToSubject.isEmpty());
        QVERIFY(f.PassToBody.isEmpty());
        QVERIFY(f.LookupConnection.isEmpty());
        QVERIFY(f.ValidateHigh.IsZero());
    }

    void brokenFragmentsGiveEmptyFields_data()
    {
        QTest::addColumn<QString>("fragment");
        QTest::newRow("empty") << QString();
        QTest::newRow("no markup") << QStringLiteral("just some text");
        QTest::newRow("unclosed") << QStringLiteral("<Trigger.Field><ID>F1");
        QTest::newRow("misordered") << QStringLiteral("<Name>late</Name><ID>F1</ID>");
        QTest::newRow("nested") << QStringLiteral("<ID><ID>inner</ID></ID>");
        QTest::newRow("non-numeric") << QStringLiteral("<FieldType>abc</FieldType><ValidateLow>x</ValidateLow>");
        QTest::newRow("out of range") << QStringLiteral("<MaxLength>99999999</MaxLength>");
    }

    void brokenFragmentsGiveEmptyFields()
    {
        QFETCH(QString, fragment);
        clsTriggerField f = PopulatedField();
        f.setXML(fragment);
        QCOMPARE(f.FieldType, qint16(0));
        QCOMPARE(f.MaxLength, qint16(0));
        QVERIFY(f.ValidateLow.IsZero());
        QVERIFY(!f.Enabled);
        QVERIFY(f.LookFor.isEmpty());
    }
};

POSTVANE_TEST(tst_clsTriggerField)
#include "tst_clsTriggerField.moc"
