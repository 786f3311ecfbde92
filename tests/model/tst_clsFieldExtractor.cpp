#include "TestRegistry.h"
#include "model/clsFieldExtractor.h"
#include "model/clsTriggerField.h"
#include "model/colFields.h"

#include <QHash>
#include <QTest>

namespace {

using FoundValues = QList<clsFieldExtractor::FoundValue>;
using Option = bool clsTriggerField::*;

const QString OrderSubject = QStringLiteral("Order 12345 confirmed - ref 777");

const QString OrderBody = QStringLiteral("Dear Customer,\r\n"
                                         "\r\n"
                                         "Thank you for your order.\r\n"
                                         "Order No: 12345\r\n"
                                         "Order Date: 2024-03-01\r\n"
                                         "Customer:   Jane   Smith  \r\n"
                                         "Email: jane.smith@example.com; phone 555-0100\r\n"
                                         "Reference: ABCDEFGHIJ\r\n"
                                         "Items:\r\n"
                                         "Item: Widget A\r\n"
                                         "Item: Widget B\r\n"
                                         "Item: Gadget C\r\n"
                                         "\r\n"
                                         "<table><tr><td>Total</td><TD>  99.50 </td></tr></table>\r\n"
                                         "Regards\r\n");

// 1-based position of a piece of the sample body.
qint32 At(const QString &piece)
{
    return qint32(OrderBody.indexOf(piece) + 1);
}

// A field that looks for the expression and ends its value by one option.
clsTriggerField Field(const QString &lookFor, Option option = &clsTriggerField::Until_EndOfLine)
{
    clsTriggerField f;
    f.LookFor = lookFor;
    for (Option o : {&clsTriggerField::Until_EndOfLine, &clsTriggerField::Until_EndOfBody,
                     &clsTriggerField::Until_AnyChars, &clsTriggerField::Until_ThisMany,
                     &clsTriggerField::Until_TheseWords, &clsTriggerField::Until_EndTag,
                     &clsTriggerField::ExtractMask})
        f.*o = false;
    f.*option = true;
    return f;
}

FoundValues Run(const clsTriggerField &field, const QString &body = OrderBody)
{
    clsFieldExtractor extractor;
    extractor.Subject = OrderSubject;
    extractor.Body = body;
    return extractor.Extract(field);
}

QStringList Texts(const FoundValues &values)
{
    QStringList texts;
    for (const auto &v : values)
        texts << v.Value;
    return texts;
}

QString Only(const FoundValues &values)
{
    return values.size() == 1 ? values.first().Value : QStringLiteral("<%1 values>").arg(values.size());
}

} // namespace

class tst_clsFieldExtractor : public QObject
{
    Q_OBJECT
private slots:
    void starFindsFirstVisibleCharacter()
    {
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("  \r\n\tHello"), QStringLiteral("*"), 1, true, false), 6);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("ab  cd"), QStringLiteral("*"), 3, true, true), 5);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral(" \t\r\n "), QStringLiteral("*"), 1, true, false), 0);
        QCOMPARE(clsFieldExtractor::Search(QString(), QStringLiteral("*"), 1, true, false), 0);
    }

    void searchGivesEndOrStartOfMatch()
    {
        const QString text = QStringLiteral("Ref: Order No: 12345");
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("Order No: "), 1, false, false), 16);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("Order No: "), 1, false, true), 6);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("\\d+"), 1, false, false), 21);
        // A lone "." gives the start of its match; longer expressions do not.
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("  x"), QStringLiteral("."), 1, false, false), 1);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("xab"), QStringLiteral("a."), 1, false, false), 4);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("abc"), QStringLiteral("x*"), 1, false, false), 1);
    }

    void searchFromStartCountsInWholeText()
    {
        const QString text = QStringLiteral("a1 b2 a3");
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("a\\d"), 2, false, false), 9);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("a\\d"), 2, false, true), 7);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("b"), 0, false, true), 4);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("b"), -5, false, true), 4);
        QCOMPARE(clsFieldExtractor::Search(text, QStringLiteral("3"), 40, false, true), 0);
        // The searched text begins at the start, so "^" anchors there.
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("xxabc"), QStringLiteral("^abc"), 3, false, true), 3);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("xxabc"), QStringLiteral("^abc"), 1, false, true), 0);
    }

    void searchHonoursCaseFlag()
    {
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("ORDER no"), QStringLiteral("order"), 1, false, true), 0);
        QCOMPARE(clsFieldExtractor::Search(QStringLiteral("ORDER no"), QStringLiteral("order"), 1, true, true), 1);
    }

    void invalidExpressionsFindNothing_data()
    {
        QTest::addColumn<QString>("expression");
        QTest::newRow("open group") << QStringLiteral("(");
        QTest::newRow("unclosed class") << QStringLiteral("[abc");
        QTest::newRow("leading quantifier") << QStringLiteral("*abc");
        QTest::newRow("reversed range") << QStringLiteral("a{2,1}");
        QTest::newRow("trailing backslash") << QStringLiteral("\\");
    }

    void invalidExpressionsFindNothing()
    {
        QFETCH(QString, expression);
        QCOMPARE(clsFieldExtractor::Search(OrderBody, expression, 1, true, false), 0);
        QCOMPARE(clsFieldExtractor::Search(OrderBody, expression, 1, true, true), 0);

        QVERIFY(Run(Field(expression)).isEmpty());
        clsTriggerField then = Field(QStringLiteral("Order No"));
        then.ThenLookFor = expression;
        QVERIFY(Run(then).isEmpty());
    }

    void invalidStopExpressionsTakeTheRest()
    {
        clsTriggerField words = Field(QStringLiteral("Reference: "), &clsTriggerField::Until_TheseWords);
        words.UntilTheseWords = QStringLiteral("(");
        QVERIFY(Only(Run(words)).startsWith(QStringLiteral("ABCDEFGHIJ Items: Item: Widget A")));

        clsTriggerField chars = Field(QStringLiteral("Reference: "), &clsTriggerField::Until_AnyChars);
        chars.UntilAnyOfTheseChars = QStringLiteral("\\");
        QVERIFY(Only(Run(chars)).endsWith(QStringLiteral("</table> Regards")));
    }

    // One value by each way of ending it: the value, where it stood in the
    // sample body (when "at" names a piece of it) and the body's extract
    // point afterwards (when not 0).
    void oneValueByEachStopRule_data()
    {
        QTest::addColumn<QString>("lookFor");
        QTest::addColumn<QString>("rule");
        QTest::addColumn<QString>("stop");
        QTest::addColumn<QString>("flags");
        QTest::addColumn<QString>("body");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("at");
        QTest::addColumn<int>("point");
        const QString code = QStringLiteral("Code: ab.c^d$e+f*g?h[i]j\tk\nl");
        // The extract point steps over the CR that stopped the value.
        QTest::newRow("end of line") << "Order No:" << "EndOfLine" << "" << "" << OrderBody << "12345" << "12345"
                                     << At(QStringLiteral("12345")) + 6;
        QTest::newRow("end of body") << "Gadget C" << "EndOfBody" << "" << "" << OrderBody
                                     << "<table><tr><td>Total</td><TD>  99.50 </td></tr></table> Regards"
                                     << "<table>" << 0;
        QTest::newRow("next blank line") << "Items:" << "NextBlankLine" << "" << "" << OrderBody
                                         << "Item: Widget A Item: Widget B Item: Gadget C" << "" << 0;
        QTest::newRow("any chars") << "Email: " << "AnyChars" << "" << "" << OrderBody << "jane.smith" << "jane"
                                   << At(QStringLiteral("@example")) + 1;
        QTest::newRow("stop at a dot") << "Code: " << "AnyChars" << "." << "" << code << "ab" << "" << 0;
        QTest::newRow("stop at a caret") << "Code: " << "AnyChars" << "^" << "" << code << "ab.c" << "" << 0;
        QTest::newRow("stop at a bracket") << "Code: " << "AnyChars" << "]" << "" << code << "ab.c^d$e+f*g?h[i" << ""
                                           << 0;
        QTest::newRow("stop at a tab") << "Code: " << "AnyChars" << "\t" << "" << code << "ab.c^d$e+f*g?h[i]j" << ""
                                       << 0;
        QTest::newRow("stop at a line feed") << "Code: " << "AnyChars" << "\n" << "" << code
                                             << "ab.c^d$e+f*g?h[i]j k" << "" << 0;
        QTest::newRow("star takes the first word") << "*" << "AnyChars" << "" << "" << OrderBody << "Dear" << "Dear"
                                                   << 0;
        QTest::newRow("star skips blanks") << "*" << "AnyChars" << "" << "" << "\r\n \tHello world" << "Hello" << ""
                                           << 0;
        QTest::newRow("this many") << "Reference: " << "ThisMany" << "4" << "" << OrderBody << "ABCD" << "ABCD" << 0;
        QTest::newRow("this many, beyond the subject") << "ref " << "ThisMany" << "50" << "subject" << OrderBody
                                                       << "777" << "" << 0;
        QTest::newRow("end tag, case") << "<TD>" << "EndTag" << "" << "case" << OrderBody << "99.50" << "99.50" << 0;
        QTest::newRow("end tag, any case") << "<td>" << "EndTag" << "" << "" << OrderBody << "Total" << "" << 0;
        QTest::newRow("end tag, no tag") << "Total</td><TD>" << "EndTag" << "" << "" << OrderBody
                                         << "99.50 </td></tr></table> Regards" << "" << 0;
        QTest::newRow("mask") << "\\d{3}-\\d{4}" << "Mask" << "" << "" << OrderBody << "555-0100" << "555-0100"
                              << At(QStringLiteral("555-0100")) + 8;
    }

    void oneValueByEachStopRule()
    {
        static const QHash<QString, Option> rules = {
            {QStringLiteral("EndOfLine"), &clsTriggerField::Until_EndOfLine},
            {QStringLiteral("EndOfBody"), &clsTriggerField::Until_EndOfBody},
            {QStringLiteral("NextBlankLine"), &clsTriggerField::Until_NextBlankLine},
            {QStringLiteral("AnyChars"), &clsTriggerField::Until_AnyChars},
            {QStringLiteral("ThisMany"), &clsTriggerField::Until_ThisMany},
            {QStringLiteral("EndTag"), &clsTriggerField::Until_EndTag},
            {QStringLiteral("Mask"), &clsTriggerField::ExtractMask},
        };
        QFETCH(QString, lookFor);
        QFETCH(QString, rule);
        QFETCH(QString, stop);
        QFETCH(QString, flags);
        QFETCH(QString, body);
        QFETCH(QString, expected);
        QFETCH(QString, at);
        QFETCH(int, point);
        QVERIFY(rules.contains(rule));
        clsTriggerField f = Field(lookFor, rules.value(rule));
        if (!stop.isEmpty())
            f.UntilAnyOfTheseChars = stop, f.UntilThisManyChars = qint16(stop.toInt());
        f.CaseSensitive = flags.contains(u"case");
        f.CheckSubjectLine = flags.contains(u"subject");
        clsFieldExtractor extractor;
        extractor.Subject = OrderSubject;
        extractor.Body = body;
        const FoundValues values = extractor.Extract(f);
        QCOMPARE(Only(values), expected);
        if (!at.isEmpty())
            QCOMPARE(values.first().Position, At(at));
        if (point)
            QCOMPARE(extractor.LastBodyExtractPoint, point);
    }

    void untilTheseWordsStopsBeforeExpression()
    {
        clsTriggerField f = Field(QStringLiteral("Customer:"), &clsTriggerField::Until_TheseWords);
        f.UntilTheseWords = QStringLiteral("\\s+smith");
        FoundValues values = Run(f);
        QCOMPARE(Only(values), QStringLiteral("Jane"));
        QCOMPARE(values.first().Position, At(QStringLiteral("Jane")));

        f.CaseSensitive = true;
        QVERIFY(Only(Run(f)).startsWith(QStringLiteral("Jane   Smith   Email:")));

        const QString wholeRest = Only(Run(Field(QStringLiteral("Customer:"), &clsTriggerField::Until_EndOfBody)));
        f.UntilTheseWords.clear();
        QCOMPARE(Only(Run(f)), wholeRest);
        f.UntilTheseWords = QStringLiteral("Signature");
        QCOMPARE(Only(Run(f)), wholeRest);
    }

    void thenLookForSearchesBehindFirstMatch()
    {
        clsTriggerField f = Field(QStringLiteral("Order"));
        f.CaseSensitive = true;
        QCOMPARE(Only(Run(f)), QStringLiteral("No: 12345"));
        f.ThenLookFor = QStringLiteral("date: ");
        QVERIFY(Run(f).isEmpty());
        f.CaseSensitive = false;
        QCOMPARE(Only(Run(f)), QStringLiteral("2024-03-01"));
        f.ThenLookFor = QStringLiteral("Invoice");
        QVERIFY(Run(f).isEmpty());
    }

    void trimBlanksCleansTheValue()
    {
        clsTriggerField f = Field(QStringLiteral("Customer:"));
        FoundValues values = Run(f);
        QCOMPARE(Only(values), QStringLiteral("Jane   Smith"));
        QCOMPARE(values.first().Position, At(QStringLiteral("Jane")));

        f.TrimBlanks = false;
        values = Run(f);
        QCOMPARE(Only(values), QStringLiteral("   Jane   Smith  "));
        QCOMPARE(values.first().Position, At(QStringLiteral("   Jane")));

        values = Run(Field(QStringLiteral("Note:"), &clsTriggerField::Until_EndOfBody),
                     QStringLiteral("Note:\t a\tb\r\nc\rd\ne  "));
        QCOMPARE(Only(values), QStringLiteral("a b cde"));
        QCOMPARE(values.first().Position, 8);
    }

    void removesCharactersFromEitherEnd_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<int>("shift");
        QTest::newRow("both") << 2 << 1 << QStringLiteral("34") << 2;
        QTest::newRow("first only") << 1 << 0 << QStringLiteral("2345") << 1;
        QTest::newRow("last only") << 0 << 3 << QStringLiteral("12") << 0;
        QTest::newRow("first equals length") << 5 << 0 << QString() << 0;
        QTest::newRow("last equals length") << 0 << 5 << QString() << 0;
        QTest::newRow("first beyond length") << 9 << 0 << QString() << 0;
        QTest::newRow("together take all") << 3 << 2 << QString() << 3;
    }

    void removesCharactersFromEitherEnd()
    {
        QFETCH(int, first);
        QFETCH(int, last);
        QFETCH(QString, expected);
        QFETCH(int, shift);
        clsTriggerField f = Field(QStringLiteral("Order No: "));
        f.RemoveFirstXChars = qint16(first);
        f.RemoveLastXChars = qint16(last);
        const FoundValues values = Run(f);
        QCOMPARE(Only(values), expected);
        QCOMPARE(values.first().Position, At(QStringLiteral("12345")) + shift);
        QCOMPARE(values.first().Length, qint32(expected.size()));
    }

    void subjectAndBodyKeepTheirOwnExtractPoints()
    {
        clsTriggerField subjectOrder = Field(QStringLiteral("Order "), &clsTriggerField::Until_AnyChars);
        subjectOrder.CheckSubjectLine = true;
        clsTriggerField bodyOrder = Field(QStringLiteral("Order No: "));
        clsTriggerField nextOrderLine = Field(QStringLiteral("Order \\w+: "));
        clsTriggerField subjectNumber = Field(QStringLiteral("\\d+"), &clsTriggerField::ExtractMask);
        subjectNumber.CheckSubjectLine = true;

        clsFieldExtractor extractor;
        extractor.Subject = OrderSubject;
        extractor.Body = OrderBody;
        QCOMPARE(Only(extractor.Extract(subjectOrder)), QStringLiteral("12345"));
        QCOMPARE(extractor.LastSubjectExtractPoint, 13);
        QCOMPARE(extractor.LastBodyExtractPoint, 1);
        QCOMPARE(Only(extractor.Extract(bodyOrder)), QStringLiteral("12345"));
        QCOMPARE(Only(extractor.Extract(nextOrderLine)), QStringLiteral("2024-03-01"));
        QCOMPARE(Only(extractor.Extract(subjectNumber)), QStringLiteral("777"));

        nextOrderLine.StartFromLastExtractPoint = 0;
        QCOMPARE(Only(extractor.Extract(nextOrderLine)), QStringLiteral("12345"));
    }

    void previewReplaysSearchingFieldsBeforeCurrent()
    {
        colFields fields;
        auto add = [&fields](clsTriggerField f) { return fields.Add(std::make_unique<clsTriggerField>(f)); };
        clsTriggerField *subjectOrder = add(Field(QStringLiteral("Order "), &clsTriggerField::Until_AnyChars));
        subjectOrder->CheckSubjectLine = true;
        add(Field(QStringLiteral("Order No: ")));
        clsTriggerField *nextOrderLine = add(Field(QStringLiteral("Order \\w+: ")));
        clsTriggerField *subjectNumber = add(Field(QStringLiteral("\\d+"), &clsTriggerField::ExtractMask));
        subjectNumber->CheckSubjectLine = true;

        clsFieldExtractor extractor;
        extractor.Subject = OrderSubject;
        extractor.Body = OrderBody;
        extractor.LastSubjectExtractPoint = 30;
        QCOMPARE(Only(extractor.Preview(fields, *subjectOrder)), QStringLiteral("12345"));
        QCOMPARE(Only(extractor.Preview(fields, *nextOrderLine)), QStringLiteral("2024-03-01"));
        QCOMPARE(Only(extractor.Preview(fields, *subjectNumber)), QStringLiteral("777"));

        // A field being created is not in the list yet: every field comes before it.
        const clsTriggerField fresh = Field(QStringLiteral("\\d+"), &clsTriggerField::ExtractMask);
        QCOMPARE(Only(extractor.Preview(fields, fresh)), QStringLiteral("555"));

        subjectOrder->Enabled = false;
        QCOMPARE(Only(extractor.Preview(fields, *subjectNumber)), QStringLiteral("12345"));
        subjectOrder->Enabled = true;
        subjectOrder->ExtractBuiltIn = true;
        QCOMPARE(Only(extractor.Preview(fields, *subjectNumber)), QStringLiteral("12345"));
        subjectOrder->ExtractBuiltIn = false;
        subjectOrder->Lookup = true;
        QCOMPARE(Only(extractor.Preview(fields, *subjectNumber)), QStringLiteral("12345"));
    }

    void previewReplaysWholeBlocks()
    {
        colFields fields;
        clsTriggerField *items = fields.Add(std::make_unique<clsTriggerField>(Field(QStringLiteral("Item: "))));
        clsTriggerField *next = fields.Add(std::make_unique<clsTriggerField>(Field(QStringLiteral("Item: "))));
        clsFieldExtractor extractor;
        extractor.Body = OrderBody;
        QCOMPARE(Only(extractor.Preview(fields, *next)), QStringLiteral("Widget B"));
        items->Block = true;
        QVERIFY(extractor.Preview(fields, *next).isEmpty());
    }

    void repeatingBlockFindsEveryItem()
    {
        clsTriggerField f = Field(QStringLiteral("Item: "));
        f.Block = true;
        clsFieldExtractor extractor;
        extractor.Body = OrderBody;
        const FoundValues values = extractor.Extract(f);
        QCOMPARE(Texts(values), (QStringList{"Widget A", "Widget B", "Gadget C"}));
        QCOMPARE(values.at(0).Position, At(QStringLiteral("Widget A")));
        QCOMPARE(values.at(2).Position, At(QStringLiteral("Gadget C")));
        QCOMPARE(extractor.LastBodyExtractPoint, At(QStringLiteral("Gadget C")) + 9);
    }

    void blockResumesBehindMatchWhenValueIsCut()
    {
        clsTriggerField f = Field(QStringLiteral("Item: \\w+"), &clsTriggerField::ExtractMask);
        f.Block = true;
        f.RemoveFirstXChars = 20;
        const FoundValues values = Run(f);
        QCOMPARE(Texts(values), (QStringList{QString(), QString(), QString()}));
        QCOMPARE(values.at(2).Position, At(QStringLiteral("Item: Gadget")));
    }

    void blockEndsWhenPositionDoesNotAdvance_data()
    {
        QTest::addColumn<QString>("lookFor");
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("position");
        QTest::newRow("empty match at start") << QStringLiteral("\\d*") << QStringLiteral("abc") << 1;
        QTest::newRow("lookahead") << QStringLiteral("(?=Item: )") << OrderBody << int(At(QStringLiteral("Item: ")));
    }

    void blockEndsWhenPositionDoesNotAdvance()
    {
        QFETCH(QString, lookFor);
        QFETCH(QString, body);
        QFETCH(int, position);
        clsTriggerField f = Field(lookFor, &clsTriggerField::ExtractMask);
        f.Block = true;
        const FoundValues values = Run(f, body);
        QCOMPARE(values.size(), 1);
        QCOMPARE(values.first().Value, QString());
        QCOMPARE(values.first().Position, position);
    }

    void blockStopsAtPassLimit()
    {
        clsTriggerField f = Field(QStringLiteral("x"), &clsTriggerField::ExtractMask);
        f.Block = true;
        const FoundValues values = Run(f, QStringLiteral("x;").repeated(clsFieldExtractor::MaxBlockPasses + 50));
        QCOMPARE(values.size(), clsFieldExtractor::MaxBlockPasses);
        QCOMPARE(values.last().Position, 2 * clsFieldExtractor::MaxBlockPasses - 1);
    }

    void nothingFoundLeavesExtractPoint()
    {
        clsFieldExtractor extractor;
        extractor.Body = OrderBody;
        extractor.Extract(Field(QStringLiteral("Order No: ")));
        const qint32 point = extractor.LastBodyExtractPoint;
        QVERIFY(extractor.Extract(Field(QStringLiteral("Invoice No: "))).isEmpty());
        QCOMPARE(extractor.LastBodyExtractPoint, point);
    }
};

POSTVANE_TEST(tst_clsFieldExtractor)
#include "tst_clsFieldExtractor.moc"
