#include "TestRegistry.h"
#include "foundation/GlobalBlock.h"
#include "model/TriggerSQL.h"
#include "model/clsAccountTrigger.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariantHash>

namespace {

const QString CRLF = QStringLiteral("\r\n");

struct FieldColumn
{
    QString Table;
    QString Column;
    qint16 Type = 0;
    bool Key = false;
    qint16 MaxLength = 0;
    bool Enabled = true;
};

clsTriggerField *AddField(clsAccountTrigger &trigger, const FieldColumn &wanted)
{
    auto field = std::make_unique<clsTriggerField>();
    field->Name = wanted.Column.trimmed();
    field->InsertInto = wanted.Table;
    field->InsertFieldName = wanted.Column;
    field->FieldType = wanted.Type;
    field->KeyExists = wanted.Key;
    field->MaxLength = wanted.MaxLength;
    field->Enabled = wanted.Enabled;
    return trigger.FieldsToProcess().Add(std::move(field));
}

// Two tables: Orders, named twice in different spellings, with one key, a
// disabled field and a field without table between; Order Lines with a
// reserved column name.
void FillOrders(clsAccountTrigger &t)
{
    AddField(t, {QStringLiteral("Orders"), QStringLiteral("OrderNo"), 6, true});
    AddField(t, {QStringLiteral("orders  "), QStringLiteral("Customer Name")});
    AddField(t, {QStringLiteral("Orders"), QStringLiteral("Skipped"), 0, false, 0, false});
    AddField(t, {QString(), QStringLiteral("Note")});
    AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Value"), 7});
    AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Line"), 6, true});
}

// The statements of a script: a line closed by ";", or the lines up to an
// empty one.
QStringList Statements(const QString &Script)
{
    QStringList statements;
    QString current;
    for (const QString &line : Script.split(CRLF)) {
        current += line.isEmpty() ? QString() : line + u'\n';
        if ((line.isEmpty() || line.endsWith(u';')) && !current.isEmpty()) {
            statements << current;
            current.clear();
        }
    }
    if (!current.isEmpty())
        statements << current;
    return statements;
}

// Prepares and runs one statement, binding each "@name" parameter, in order
// of its first appearance, from Values. Empty on success, else what failed.
QString Exec(QSqlQuery &query, const QString &statement, const QVariantHash &values = {})
{
    static const QRegularExpression parameter(QStringLiteral("@\\w+"));
    if (!query.prepare(statement))
        return statement + query.lastError().text();
    QStringList bound;
    for (const QRegularExpressionMatch &match : parameter.globalMatch(statement)) {
        const QString name = match.captured();
        if (bound.contains(name))
            continue;
        if (!values.contains(name))
            return statement + QStringLiteral(": no value for ") + name;
        bound << name;
        query.addBindValue(values.value(name));
    }
    return query.exec() ? QString() : statement + query.lastError().text();
}

QString RunScript(const QSqlDatabase &db, const QString &script, const QVariantHash &values = {})
{
    for (const QString &statement : Statements(script)) {
        QSqlQuery query(db);
        if (QString failure = Exec(query, statement, values); !failure.isEmpty())
            return failure;
    }
    return QString();
}

// A SQLite database in a temporary file, open while the object lives.
class ScratchDatabase
{
public:
    ScratchDatabase()
    {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), ConnectionName);
        m_db.setDatabaseName(m_dir.filePath(QStringLiteral("internal.db3")));
        m_db.open();
    }
    ~ScratchDatabase()
    {
        m_db.close();
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(ConnectionName);
    }
    const QSqlDatabase &db() const { return m_db; }

    // One column of every row of a PRAGMA that lists a table's parts.
    QStringList PragmaNames(const QString &Pragma, const QString &Table) const
    {
        QSqlQuery query(m_db);
        query.exec(QStringLiteral("PRAGMA %1([%2])").arg(Pragma, Table));
        QStringList names;
        while (query.next())
            names << query.value(QStringLiteral("name")).toString();
        return names;
    }

private:
    static inline const QString ConnectionName = QStringLiteral("tst_TriggerSQL");
    QTemporaryDir m_dir;
    QSqlDatabase m_db;
};

} // namespace

class tst_TriggerSQL : public QObject
{
    Q_OBJECT

    QString m_appPath;
    QStringList m_reservedWords;

private slots:
    // The words of SQLRESERVED.TXT come from beside the test program, where
    // the build puts it as it does for every program.
    void initTestCase()
    {
        m_appPath = Global.AppPath;
        m_reservedWords = Global.Settings.ReservedWords;
        Global.AppPath = QCoreApplication::applicationDirPath() + u'/';
        LoadReservedWords();
    }
    void cleanupTestCase()
    {
        Global.AppPath = m_appPath;
        Global.Settings.ReservedWords = m_reservedWords;
    }

    void quoteIdentifier_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain stays") << "Amount" << 1 << "Amount";
        QTest::newRow("blank in brackets") << "Unit Price" << 1 << "[Unit Price]";
        QTest::newRow("reserved in any case") << "vALUE" << 1 << "[vALUE]";
        QTest::newRow("Access always") << "Amount" << 3 << "[Amount]";
        QTest::newRow("MySQL backticks") << "Value" << 2 << "`Value`";
        QTest::newRow("generic double quotes") << "Unit Price" << 0 << "\"Unit Price\"";
        QTest::newRow("SQLite double quotes") << "Order" << 99 << "\"Order\"";
        QTest::newRow("SQLite plain stays") << "Orders" << 99 << "Orders";
        QTest::newRow("word of the file, SQL Server") << "Identity" << 1 << "[Identity]";
        QTest::newRow("word of the file, SQLite") << "Returning" << 99 << "\"Returning\"";
    }
    void quoteIdentifier()
    {
        QFETCH(QString, name);
        QFETCH(int, dialect);
        QFETCH(QString, expected);
        QCOMPARE(QuoteIdentifier(name, dialect), expected);
    }

    void statementsPerTableInFieldOrder()
    {
        clsAccountTrigger t;
        FillOrders(t);
        int dialect = 0;
        QCOMPARE(t.SQLInsertStatement(dialect),
                 "INSERT INTO Orders (OrderNo, [Customer Name]) VALUES (@OrderNo, @Customer_Name)\r\n\r\n"
                 "INSERT INTO [Order Lines] ([Value], Line) VALUES (@Value, @Line)\r\n\r\n");
        QCOMPARE(dialect, 1);

        dialect = 0;
        QCOMPARE(t.SQLUpdateStatement(dialect),
                 "UPDATE Orders SET [Customer Name] = @Customer_Name WHERE OrderNo = @OrderNo\r\n\r\n"
                 "UPDATE [Order Lines] SET [Value] = @Value WHERE Line = @Line\r\n\r\n");
        QCOMPARE(dialect, 1);

        dialect = 0;
        QCOMPARE(t.SQLSelectStatement(dialect),
                 "SELECT * FROM Orders WHERE OrderNo = @OrderNo\r\n\r\n"
                 "SELECT * FROM [Order Lines] WHERE Line = @Line\r\n\r\n");
        QCOMPARE(dialect, 1);
        QCOMPARE(t.SQLSelectStatement(dialect, true),
                 "SELECT * FROM Orders WHERE [pvane_msg_uid] = @UID\r\n\r\n"
                 "SELECT * FROM [Order Lines] WHERE [pvane_msg_uid] = @UID\r\n\r\n");
    }

    void otherDialects_data()
    {
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("insert");
        QTest::addColumn<QString>("update");
        QTest::newRow("MySQL") << 2
                               << "INSERT INTO `Order Lines` (`Value`, Line) VALUES (@Value, @Line) ;\r\n\r\n"
                               << "UPDATE `Order Lines` SET `Value` = @Value WHERE Line = @Line ;\r\n\r\n";
        QTest::newRow("Access JET") << 3
                                    << "INSERT INTO [Order Lines] ([Value], [Line]) VALUES (@Value, @Line)\r\n\r\n"
                                    << "UPDATE [Order Lines] SET [Value] = @Value WHERE [Line] = @Line\r\n\r\n";
    }
    void otherDialects()
    {
        QFETCH(int, dialect);
        QFETCH(QString, insert);
        QFETCH(QString, update);
        clsAccountTrigger t;
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Value"), 7});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Line"), 6, true});
        int used = dialect;
        QCOMPARE(t.SQLInsertStatement(used), insert);
        QCOMPARE(t.SQLUpdateStatement(used), update);
        QCOMPARE(used, dialect);
    }

    void missingTablesAndKeysGiveComments()
    {
        clsAccountTrigger none;
        AddField(none, {QString(), QStringLiteral("Note")});
        int dialect = 0;
        QCOMPARE(none.SQLInsertStatement(dialect), "-- No table names specified against extracted fields.\r\n");
        QCOMPARE(none.SQLInsertStatement(dialect, true), QString());
        dialect = 2;
        QCOMPARE(none.SQLInsertStatement(dialect), "# No table names specified against extracted fields.\r\n");
        QCOMPARE(none.SQLUpdateStatement(dialect), QString());
        QCOMPARE(none.SQLSelectStatement(dialect), QString());

        clsAccountTrigger keyless;
        AddField(keyless, {QStringLiteral("Orders"), QStringLiteral("Amount"), 1});
        dialect = 0;
        const QString comment = QStringLiteral("-- No key fields for table Orders data will only be Inserted.\r\n\r\n");
        QCOMPARE(keyless.SQLUpdateStatement(dialect), comment);
        QCOMPARE(keyless.SQLSelectStatement(dialect), comment);
        QCOMPARE(keyless.SQLSelectStatement(dialect, true), "SELECT * FROM Orders WHERE [pvane_msg_uid] = @UID\r\n\r\n");
        dialect = 2;
        QCOMPARE(keyless.SQLUpdateStatement(dialect),
                 "# No key fields for table Orders data will only be Inserted.\r\n\r\n");

        // Nothing is left to set: the text is broken and given as it stands.
        clsAccountTrigger keysOnly;
        AddField(keysOnly, {QStringLiteral("Orders"), QStringLiteral("OrderNo"), 6, true});
        AddField(keysOnly, {QStringLiteral("Orders"), QStringLiteral("Line"), 6, true});
        dialect = 0;
        QCOMPARE(keysOnly.SQLUpdateStatement(dialect),
                 "UPDATE Orders SE WHERE OrderNo = @OrderNo AND Line = @Line\r\n\r\n");
    }

    void fieldCreate_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("maxLength");
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("expected");
        QTest::newRow("string without limit") << 0 << 0 << 0 << "    [Ship To] [nvarchar] (MAX) ,\r\n";
        QTest::newRow("string with limit") << 0 << 80 << 0 << "    [Ship To] [nvarchar] (80) ,\r\n";
        QTest::newRow("SQLite string without limit") << 0 << 0 << 99 << "    [Ship To] [nvarchar] ,\r\n";
        QTest::newRow("number") << 1 << 80 << 0 << "    [Ship To] [numeric] (12,4) ,\r\n";
        QTest::newRow("text") << 5 << 0 << 99 << "    [Ship To] [ntext] ,\r\n";
        QTest::newRow("decimal") << 7 << 0 << 0 << "    [Ship To] [decimal] (12,2) ,\r\n";
        QTest::newRow("boolean") << 8 << 0 << 0 << "    [Ship To] [bit] ,\r\n";
        QTest::newRow("unknown type") << 9 << 0 << 0 << "    [Ship To] ,\r\n";
    }
    void fieldCreate()
    {
        QFETCH(int, type);
        QFETCH(int, maxLength);
        QFETCH(int, dialect);
        QFETCH(QString, expected);
        clsTriggerField field;
        field.InsertFieldName = QStringLiteral(" Ship To ");
        field.FieldType = qint16(type);
        field.MaxLength = qint16(maxLength);
        QCOMPARE(field.FieldCreate(dialect), expected);
    }

    // A disabled field still makes its column; a field of another table or
    // without a column makes none.
    void internalTableText()
    {
        clsAccountTrigger t;
        AddField(t, {QStringLiteral("Orders"), QStringLiteral("OrderNo"), 6, true});
        AddField(t, {QStringLiteral("Orders"), QStringLiteral("Customer Name"), 0, true, 80, false});
        AddField(t, {QStringLiteral("ORDERS "), QStringLiteral("Total"), 7});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Line"), 6});
        AddField(t, {QStringLiteral("Orders"), QString()});
        QCOMPARE(t.BuildINTCreate(QStringLiteral("Orders"), 0),
                 "CREATE TABLE [Orders] (\r\n"
                 "    [RecordID] [int] IDENTITY(1,1) NOT NULL,\r\n"
                 "    [pvane_msg_uid] [varchar] (250) NOT NULL,\r\n"
                 "    [OrderNo] [int] ,\r\n"
                 "    [Customer Name] [nvarchar] (80) ,\r\n"
                 "    [Total] [decimal] (12,2) ,\r\n"
                 "CONSTRAINT [Orders_pk] PRIMARY KEY ([RecordID])\r\n"
                 ")\r\n"
                 "\r\n"
                 "CREATE INDEX [Orders_OrderNo] ON [Orders] ([OrderNo])\r\n"
                 "CREATE INDEX [Orders_Customer Name] ON [Orders] ([Customer Name])\r\n"
                 "CREATE INDEX [Orders_pvane_msg_uid] ON [Orders] ([pvane_msg_uid])\r\n"
                 "\r\n");

        // Existing names compare exactly: "total" is not "Total".
        QCOMPARE(t.BuildINTAlter(QStringLiteral("Orders"), QStringLiteral("RecordID,pvane_msg_uid,OrderNo,total,"), 0),
                 "ALTER TABLE [Orders]\r\n"
                 "ADD \r\n"
                 "    [Customer Name] [nvarchar] (80) ,\r\n"
                 "    [Total] [decimal] (12,2) \r\n"
                 "CREATE INDEX [Orders_Customer Name] ON [Orders] ([Customer Name])\r\n");
        QCOMPARE(t.BuildINTAlter(QStringLiteral("Orders"),
                                 QStringLiteral("RecordID,pvane_msg_uid,OrderNo,Customer Name,Total,"), 0),
                 QString());
    }

    // The embedded database numbers the rows, indexes the keys and the
    // message, finds a message's rows by the select without keys, and takes
    // new columns while it holds rows.
    void internalTableInSQLite()
    {
        clsAccountTrigger t;
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Line No"), 6, true});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Order")});
        const QString table = QStringLiteral("Order Lines");
        ScratchDatabase scratch;
        QCOMPARE(RunScript(scratch.db(), t.BuildINTCreate(table, 99)), QString());
        QCOMPARE(scratch.PragmaNames(QStringLiteral("table_info"), table),
                 QStringList({"RecordID", "pvane_msg_uid", "Line No", "Order"}));
        QStringList indexes = scratch.PragmaNames(QStringLiteral("index_list"), table);
        indexes.sort();
        QCOMPARE(indexes, QStringList({"Order Lines_Line No", "Order Lines_pvane_msg_uid"}));

        const QString insert =
            QStringLiteral("INSERT INTO [Order Lines] ([pvane_msg_uid], [Line No]) VALUES (@UID, @Line_No)");
        const QList<std::pair<QString, int>> rowsToInsert = {{"m1", 1}, {"m2", 1}, {"m1", 2}};
        for (const auto &[uid, line] : rowsToInsert)
            QCOMPARE(RunScript(scratch.db(), insert, {{"@UID", uid}, {"@Line_No", line}}), QString());

        int dialect = 99;
        const QStringList selects = Statements(t.SQLSelectStatement(dialect, true));
        QCOMPARE(selects.size(), 1);
        QSqlQuery rows(scratch.db());
        QCOMPARE(Exec(rows, selects.first(), {{"@UID", "m1"}}), QString());
        QList<int> records;
        while (rows.next())
            records << rows.value(QStringLiteral("RecordID")).toInt();
        QCOMPARE(records, QList<int>({1, 3}));

        AddField(t, {QStringLiteral("order lines"), QStringLiteral("Limit"), 5, true});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Unit Price"), 7});
        const QString existing = scratch.PragmaNames(QStringLiteral("table_info"), table).join(u',') + u',';
        QCOMPARE(RunScript(scratch.db(), t.BuildINTAlter(table, existing, 99)), QString());
        QCOMPARE(scratch.PragmaNames(QStringLiteral("table_info"), table),
                 QStringList({"RecordID", "pvane_msg_uid", "Line No", "Order", "Limit", "Unit Price"}));
        QVERIFY(scratch.PragmaNames(QStringLiteral("index_list"), table).contains("Order Lines_Limit"));
        const QString extended = scratch.PragmaNames(QStringLiteral("table_info"), table).join(u',') + u',';
        QCOMPARE(t.BuildINTAlter(table, extended, 99), QString());
    }

    // Statements of two tables with reserved and blank names run in SQLite;
    // values with quotes, line ends, tabs and percent signs come back as
    // written, and the update touches only the keyed row.
    void statementsRoundTripInSQLite()
    {
        clsAccountTrigger t;
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Line No"), 6, true});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Order")});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Limit"), 5});
        AddField(t, {QStringLiteral("Group"), QStringLiteral("Check"), 0, true, 20});
        AddField(t, {QStringLiteral("Order Lines"), QStringLiteral("Unit Price"), 7});
        AddField(t, {QStringLiteral("Group"), QStringLiteral("Default")});

        // Tables that stand already, as a user's database has them, extended
        // with the trigger's columns.
        ScratchDatabase scratch;
        for (const QString &table : {QStringLiteral("Order Lines"), QStringLiteral("Group")}) {
            QCOMPARE(RunScript(scratch.db(), QStringLiteral("CREATE TABLE [%1] ([RecordID] INTEGER PRIMARY KEY);").arg(table)),
                     QString());
            QCOMPARE(RunScript(scratch.db(), t.BuildINTAlter(table, QStringLiteral("RecordID,"), 99)), QString());
        }

        const QVariantHash first = {
            {"@Line_No", 1},
            {"@Order", "O'Neil said \"yes\""},
            {"@Limit", "line one\r\nline two\tend\r"},
            {"@Unit_Price", 12.5},
            {"@Check", "100% sure"},
            {"@Default", "'; DROP TABLE [Group]; --"},
        };
        QVariantHash second = first;
        second["@Line_No"] = 2;
        second["@Check"] = "50%";
        int dialect = 99;
        const QString insert = t.SQLInsertStatement(dialect);
        QCOMPARE(Statements(insert).size(), 2);
        QCOMPARE(RunScript(scratch.db(), insert, first), QString());
        QCOMPARE(RunScript(scratch.db(), insert, second), QString());

        QVariantHash changed = first;
        changed["@Order"] = "%Subject% 'again'";
        changed["@Limit"] = "\n";
        changed["@Unit_Price"] = 3.25;
        changed["@Default"] = "tab\there";
        QCOMPARE(RunScript(scratch.db(), t.SQLUpdateStatement(dialect), changed), QString());
        QCOMPARE(dialect, 99);

        const QStringList selects = Statements(t.SQLSelectStatement(dialect));
        QCOMPARE(selects.size(), 2);
        for (const QVariantHash &expected : {changed, second}) {
            QSqlQuery line(scratch.db());
            QCOMPARE(Exec(line, selects.at(0), expected), QString());
            QVERIFY(line.next());
            QCOMPARE(line.value(QStringLiteral("Order")), expected.value("@Order"));
            QCOMPARE(line.value(QStringLiteral("Limit")), expected.value("@Limit"));
            QCOMPARE(line.value(QStringLiteral("Unit Price")).toDouble(), expected.value("@Unit_Price").toDouble());
            QVERIFY(!line.next());

            QSqlQuery group(scratch.db());
            QCOMPARE(Exec(group, selects.at(1), expected), QString());
            QVERIFY(group.next());
            QCOMPARE(group.value(QStringLiteral("Default")), expected.value("@Default"));
            QVERIFY(!group.next());
        }
    }
};

POSTVANE_TEST(tst_TriggerSQL)
#include "tst_TriggerSQL.moc"
