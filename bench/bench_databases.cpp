// Messages through a trigger of ten fields and one DatabaseUpdate action,
// into SQLite and into PostgreSQL, against a loop of prepared inserts of the
// same rows through the same Qt driver. Prints rows per second and the ratio.
//
//   bench_databases [--messages N]
#include "DatabasePeers.h"
#include "actions/clsActionDB.h"
#include "actions/colActions.h"
#include "engine/actions/DataActions.h"
#include "engine/databases/DatabaseConnections.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/clsMessage.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <cstdio>

namespace {

constexpr int FieldCount = 10;

QString Value(int Row, int Field)
{
    return Field % 3 == 1 ? QString::number(Row * 1.25 + Field) : QStringLiteral("value %1 of field %2").arg(Row).arg(Field);
}

struct Bench
{
    clsAccount Account;
    clsAccountTrigger *Trigger = nullptr;

    explicit Bench(const QString &Connection)
    {
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = QStringLiteral("BENCH");
        Trigger = trigger.get();
        Account.Triggers.Add(std::move(trigger));
        for (int n = 0; n < FieldCount; ++n) {
            auto field = std::make_unique<clsTriggerField>();
            field->Name = QStringLiteral("F%1").arg(n);
            field->InsertInto = QStringLiteral("Rows%1").arg(FieldCount);
            field->InsertFieldName = field->Name;
            field->FieldType = n % 3 == 1 ? 1 : 0;
            Trigger->FieldsToProcess().Add(std::move(field));
        }
        clsActionDB action;
        action.ConnectionString = Connection;
        Trigger->ActionList().AddXML(action.XML());
    }

    // Seconds for the messages through the action.
    double RunActions(int Messages)
    {
        QElapsedTimer timer;
        timer.start();
        int failures = 0;
        for (int row = 0; row < Messages; ++row) {
            ReplaceCurrentMessage(std::make_unique<clsMessage>());
            clsMessage &message = CurrentMessage();
            message.Account = &Account;
            message.setTrigger(Trigger);
            for (int n = 0; n < FieldCount; ++n)
                message.ExtractedFields().Item(n + 1)->Value = Value(row, n);
            DataActions::Run(*Trigger->ActionList().Item(1), *Trigger, message, nullptr, [&failures](const QString &Text) {
                if (Text.startsWith(u'*')) {
                    if (++failures == 1)
                        std::fprintf(stderr, "%s\n", qPrintable(Text));
                }
            });
        }
        if (failures)
            std::fprintf(stderr, "%d failures\n", failures);
        return timer.nsecsElapsed() / 1e9;
    }
};

QString CreateTable()
{
    QStringList columns;
    for (int n = 0; n < FieldCount; ++n)
        columns << QStringLiteral("F%1 %2").arg(n).arg(n % 3 == 1 ? QStringLiteral("numeric(12,4)") : QStringLiteral("varchar(200)"));
    return QStringLiteral("CREATE TABLE Rows%1 (%2)").arg(FieldCount).arg(columns.join(QStringLiteral(", ")));
}

// Seconds for the same rows as prepared inserts, each committed on its own.
double RunRaw(const QSqlDatabase &Db, int Messages)
{
    QStringList columns;
    QStringList marks;
    for (int n = 0; n < FieldCount; ++n) {
        columns << QStringLiteral("F%1").arg(n);
        marks << QStringLiteral("?");
    }
    QSqlQuery insert(Db);
    insert.prepare(QStringLiteral("INSERT INTO Raw%1 (%2) VALUES (%3)")
                       .arg(FieldCount)
                       .arg(columns.join(QStringLiteral(", ")), marks.join(QStringLiteral(", "))));
    QElapsedTimer timer;
    timer.start();
    for (int row = 0; row < Messages; ++row) {
        for (int n = 0; n < FieldCount; ++n)
            insert.bindValue(n, n % 3 == 1 ? QVariant(Value(row, n).toDouble()) : QVariant(Value(row, n)));
        if (!insert.exec())
            std::fprintf(stderr, "raw insert failed\n");
    }
    return timer.nsecsElapsed() / 1e9;
}

void Measure(const char *Name, const QString &Connection, int Messages)
{
    {
        QString error;
        QSqlDatabase db = DatabaseConnections::Open(Connection, &error);
        QSqlQuery(db).exec(CreateTable());
        QSqlQuery(db).exec(CreateTable().replace(QStringLiteral("Rows"), QStringLiteral("Raw")));
    }
    Bench bench(Connection);
    // Each way twice, alternating, so that neither has the cold start alone.
    double actions = 0;
    double raw = 0;
    for (int round = 0; round < 2; ++round) {
        actions += bench.RunActions(Messages / 2);
        QString error;
        raw += RunRaw(DatabaseConnections::Open(Connection, &error), Messages / 2);
    }
    std::printf("%-11s %6d messages: action %8.0f rows/s, prepared inserts %8.0f rows/s, ratio %.2f\n", Name, Messages,
                Messages / actions, Messages / raw, raw / actions);
    DatabaseConnections::CloseAll();
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    int messages = 10000;
    const QStringList arguments = app.arguments();
    const int at = arguments.indexOf(QStringLiteral("--messages"));
    if (at > 0 && at + 1 < arguments.size())
        messages = arguments.at(at + 1).toInt();
    QTemporaryDir dir;
    Global.DataPath = dir.path() + u'/';
    Measure("SQLite", QStringLiteral("Driver=SQLite3;Database=") + dir.filePath(QStringLiteral("bench.db")), messages);
    DatabasePeers::PostgreSQL postgres;
    if (!postgres.Start()) {
        std::fprintf(stderr, "PostgreSQL did not start: %s\n", qPrintable(postgres.Problem));
        return 1;
    }
    Measure("PostgreSQL", postgres.Connection(), messages);
    postgres.Remove();
    return 0;
}
