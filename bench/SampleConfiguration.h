#pragma once
// The sample configuration the benchmarks build: accounts of 20 triggers,
// each trigger with 10 fields and 10 actions of a realistic mix.
#include "actions/clsActionComment.h"
#include "actions/clsActionLogical.h"
#include "actions/clsActionPassTo.h"
#include "actions/clsActionScript.h"
#include "actions/clsActionSetVariable.h"
#include "foundation/clsXML.h"
#include "model/colAccounts.h"

#include <memory>

namespace SampleConfiguration {

constexpr int TriggersPerAccount = 20;
constexpr int FieldsPerTrigger = 10;
const QString Condition = QStringLiteral("<Lines><Line>AND|%Total%|&gt;|100</Line></Lines>");

// An action of a kind that has no record of its own yet, as a stored
// fragment brings it.
inline QString RawAction(const QString &kind, const QString &id, const QStringList &tagsAndValues)
{
    clsXML writer;
    writer.Append(kind, QStringLiteral("Class"));
    writer.Append(id, QStringLiteral("ID"));
    writer.Append(true, QStringLiteral("Enabled"));
    for (int i = 0; i + 1 < tagsAndValues.size(); i += 2)
        writer.Append(tagsAndValues.at(i + 1), tagsAndValues.at(i));
    return writer.GetXML();
}

template <class T> std::unique_ptr<ActionItem> Action(const QString &key, const QString &id, auto fill)
{
    std::unique_ptr<ActionItem> action = colActions::NewObject(key);
    action->setID(id);
    fill(*action->As<T>());
    return action;
}

// Ten actions: a database update, two Set, an If block around a mail, a web
// post, a script, a comment and a pass-on.
inline void AddActions(colActions &list, const QString &prefix)
{
    const auto id = [&](int n) { return prefix + QStringLiteral("A") + QString::number(n); };
    list.AddXML(RawAction(QStringLiteral("DatabaseUpdate"), id(1),
                          {QStringLiteral("ConnectionString"), QStringLiteral("Driver={SQLite3};Database=/srv/orders.db3"),
                           QStringLiteral("UseInternal"), QStringLiteral("-1"), QStringLiteral("Dialect"),
                           QStringLiteral("99")}));
    list.Add(Action<clsActionSetVariable>(QStringLiteral("Set"), id(2), [](clsActionSetVariable &set) {
        set.Name = QStringLiteral("Total");
        set.Value = QStringLiteral("%Qty% * %Price%");
        set.Operation = 3;
    }));
    list.Add(Action<clsActionLogical>(QStringLiteral("If"), id(3),
                                      [](clsActionLogical &logical) { logical.Condition = Condition; }));
    list.AddXML(RawAction(QStringLiteral("Message"), id(4),
                          {QStringLiteral("SendTo"), QStringLiteral("sales@example.com; %msg_from%"),
                           QStringLiteral("Subject"), QStringLiteral("Large order %OrderNo% from %Customer%"),
                           QStringLiteral("MessageText"),
                           QStringLiteral("Dear team,\r\n\r\nOrder %OrderNo% totals %Total%.\r\n\r\nRegards")}));
    list.Add(Action<clsActionLogical>(QStringLiteral("EndIf"), id(5), [](clsActionLogical &) {}));
    list.Add(Action<clsActionSetVariable>(QStringLiteral("Set"), id(6), [](clsActionSetVariable &set) {
        set.Name = QStringLiteral("LastOrder");
        set.Value = QStringLiteral("%OrderNo%");
        set.Persist = true;
    }));
    list.AddXML(RawAction(QStringLiteral("HTTPPost"), id(7),
                          {QStringLiteral("URL"), QStringLiteral("https://erp.example.com/api/orders?source=mail"),
                           QStringLiteral("PostData"), QStringLiteral("order=%OrderNo%&customer=%Customer%&total=%Total%")}));
    list.Add(Action<clsActionScript>(QStringLiteral("Script"), id(8), [](clsActionScript &script) {
        script.SBScriptToRun = QStringLiteral("Sub Main\r\n\tIf Field(\"Qty\") > 10 Then SetVar \"Bulk\", \"Y\"\r\nEnd Sub");
    }));
    list.Add(Action<clsActionComment>(QStringLiteral("Comment"), id(9), [](clsActionComment &comment) {
        comment.Comment = QStringLiteral("Orders above 100 are reported to sales");
    }));
    list.Add(Action<clsActionPassTo>(QStringLiteral("PassTo"), id(10), [](clsActionPassTo &passTo) {
        passTo.TriggerID = QStringLiteral("ARCHIVE");
        passTo.Value = QStringLiteral("%OrderNo%");
    }));
}

inline std::unique_ptr<clsTriggerField> Field(const QString &id, int n)
{
    auto field = std::make_unique<clsTriggerField>();
    field->ID = id;
    field->Name = QStringLiteral("Field%1").arg(n);
    field->LookFor = QStringLiteral("Field %1:").arg(n);
    field->FieldType = qint16(n % 9);
    field->InsertInto = QStringLiteral("Orders");
    field->InsertFieldName = QStringLiteral("Col%1").arg(n);
    field->MaxLength = 50;
    return field;
}

inline std::unique_ptr<clsAccountTrigger> Trigger(const QString &id, int n)
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = id;
    trigger->Name = QStringLiteral("Order form %1").arg(n);
    trigger->Details = QStringLiteral("Reads the order forms of the web shop");
    trigger->SubjectLineLIKE = QStringLiteral("Order\tForm\t");
    trigger->FromAddressLIKE = QStringLiteral("*@shop.example.com");
    trigger->Condition = Condition;
    for (int f = 1; f <= FieldsPerTrigger; ++f)
        trigger->FieldsToProcess().Add(Field(id + QStringLiteral("F") + QString::number(f), f));
    AddActions(trigger->ActionList(), id);
    return trigger;
}

inline std::unique_ptr<clsAccount> Account(int n)
{
    auto account = std::make_unique<clsAccount>();
    account->AccountID = QStringLiteral("ACC%1").arg(n, 6, 10, QLatin1Char('0'));
    account->Name = QStringLiteral("Web shop orders %1").arg(n);
    account->Details = QStringLiteral("Order forms of the shop, read every five minutes");
    account->GroupName = QStringLiteral("Sales");
    account->SCHEDULE = QStringLiteral("05|YYYYYYY");
    account->IMAP = true;
    account->IMAPServer = QStringLiteral("imap.example.com");
    account->IMAPPort = 993;
    account->IMAPAccount = QStringLiteral("orders%1").arg(n);
    account->IMAPPassword = QStringLiteral("secret%1").arg(n);
    account->IMAPSSL = true;
    account->MailServer = true;
    account->MailServerDomain = QStringLiteral("shop%1.example.com").arg(n);
    account->MailServerAliases = QStringLiteral("orders*;sales");
    account->XMLIncludeTriggers = true;
    for (int t = 1; t <= TriggersPerAccount; ++t)
        account->Triggers.Add(Trigger(account->AccountID + QStringLiteral("T") + QString::number(t), t));
    return account;
}

} // namespace SampleConfiguration
