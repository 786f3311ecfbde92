#pragma once
#include "actions/ActionItem.h"
#include "actions/colActions.h"
#include "engine/actions/DataActions.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "store/clsMessage.h"

#include <QStringList>
#include <memory>

using namespace Qt::StringLiterals;

// The data actions run on their own: a trigger of invoice fields whose one
// action is the fragment given, and messages put through it.
namespace ActionTests {

struct Column
{
    QString Name;
    qint16 Type;
    bool Key = false;
};

// Invoice number (the key), amount, due date, paid, quantity and a note.
const QList<Column> InvoiceColumns{{u"InvoiceNo"_s, 0, true}, {u"Amount"_s, 1}, {u"Due"_s, 2},
                                   {u"Paid"_s, 8},            {u"Qty"_s, 6},     {u"Note"_s, 0}};

// A trigger whose fields go to the table Invoices, and its one action.
struct Fixture
{
    clsAccount Account;
    clsAccountTrigger *Trigger = nullptr;

    explicit Fixture(const QString &ActionXML)
    {
        Account.AccountID = u"ACC1"_s;
        Account.Name = u"Billing"_s;
        auto trigger = std::make_unique<clsAccountTrigger>();
        trigger->TriggerID = u"TRG1"_s;
        trigger->Name = u"Invoices"_s;
        Trigger = trigger.get();
        Account.Triggers.Add(std::move(trigger));
        Trigger->Parent = &Account;
        for (const Column &column : InvoiceColumns) {
            auto field = std::make_unique<clsTriggerField>();
            field->Name = column.Name;
            field->InsertInto = u"Invoices"_s;
            field->InsertFieldName = column.Name;
            field->FieldType = column.Type;
            field->KeyExists = column.Key;
            Trigger->FieldsToProcess().Add(std::move(field));
        }
        Trigger->ActionList().AddXML(ActionXML);
    }

    // Runs the trigger's action on a message with these values; the log lines.
    QStringList Run(const QStringList &Values, const QString &MessageID = u"MSG-1"_s, clsMessageStore *Store = nullptr)
    {
        ReplaceCurrentMessage(std::make_unique<clsMessage>());
        clsMessage &message = CurrentMessage();
        message.Account = &Account;
        message.MessageID = MessageID;
        message.setTrigger(Trigger);
        for (int n = 0; n < Values.size(); ++n)
            message.ExtractedFields().Item(n + 1)->Value = Values.at(n);
        QStringList lines;
        const bool ran = DataActions::Run(*Trigger->ActionList().Item(1), *Trigger, message, Store,
                                          [&lines](const QString &Text) { lines << Text; });
        if (!ran)
            lines << u"* not a data action"_s;
        return lines;
    }
};

} // namespace ActionTests
