#include "FirstStartSample.h"
#include "ConfigStore.h"
#include "actions/clsActionDB.h"
#include "actions/colActions.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"

#include <QDir>
#include <QFile>

namespace {

struct SampleField
{
    const char *Name;
    const char *LookFor;
    qint16 Type; // a position of clsTriggerField::FieldTypeLabels
    bool Key;
};

// Integer, String, Decimal and Date.
const SampleField Fields[] = {{"OrderNo", "Order No:", 6, true},
                              {"Customer", "Customer:", 0, false},
                              {"Amount", "Amount:", 7, false},
                              {"OrderDate", "Order Date:", 2, false}};

struct SampleOrder
{
    int Number;
    const char *Customer;
    const char *Address;
    const char *Amount;
    const char *Date;
};

const SampleOrder Orders[] = {{1001, "Ada Lovelace", "ada@example.com", "125.50", "2026-11-02"},
                              {1002, "Charles Babbage", "charles@example.com", "89.90", "2026-11-03"},
                              {1003, "Grace Hopper", "grace@example.com", "1,240.75", "2026-11-05"}};

std::unique_ptr<clsAccountTrigger> OrdersTrigger()
{
    auto trigger = std::make_unique<clsAccountTrigger>();
    trigger->TriggerID = QString::fromLatin1(FirstStartSample::TriggerID);
    trigger->Name = QStringLiteral("Orders");
    trigger->SubjectLineLIKE = QStringLiteral("Order");
    for (const SampleField &sample : Fields) {
        auto field = std::make_unique<clsTriggerField>();
        field->Name = QString::fromLatin1(sample.Name);
        field->LookFor = QString::fromLatin1(sample.LookFor);
        field->FieldType = sample.Type;
        field->KeyExists = sample.Key;
        field->InsertInto = QStringLiteral("Orders");
        field->InsertFieldName = field->Name;
        trigger->FieldsToProcess().Add(std::move(field));
    }
    clsActionDB update;
    update.UseInternal = true;
    trigger->ActionList().AddXML(update.XML());
    return trigger;
}

} // namespace

QString FirstStartSample::PickupFolder()
{
    return QDir(Global.DataPath).filePath(QStringLiteral("Pickup"));
}

QString FirstStartSample::DatabaseFile()
{
    clsAccountTrigger trigger;
    trigger.TriggerID = QString::fromLatin1(TriggerID);
    return trigger.InternalDatabaseFile();
}

QByteArray FirstStartSample::Message(int Number)
{
    const SampleOrder &order = Orders[qBound(1, Number, MessageCount) - 1];
    return QStringLiteral("From: %2 <%3>\r\n"
                          "To: orders@example.org\r\n"
                          "Subject: Order %1\r\n"
                          "Date: %4\r\n"
                          "Message-ID: <sample-order-%1@example.org>\r\n"
                          "Content-Type: text/plain; charset=utf-8\r\n"
                          "\r\n"
                          "Order No: %1\r\n"
                          "Customer: %2\r\n"
                          "Amount: %5\r\n"
                          "Order Date: %6\r\n")
        .arg(order.Number)
        .arg(QString::fromUtf8(order.Customer), QString::fromUtf8(order.Address))
        .arg(QDateTime::currentDateTime().toString(Qt::RFC2822Date))
        .arg(QString::fromLatin1(order.Amount), QString::fromLatin1(order.Date))
        .toUtf8();
}

bool FirstStartSample::Create(ConfigStore &Store, const QString &OrganizationID)
{
    clsAccount account;
    account.AccountID = QString::fromLatin1(AccountID);
    account.OrganizationID = OrganizationID;
    account.Name = QStringLiteral("Sample Orders");
    account.SCHEDULE = QStringLiteral("01|YYYYYYY"); // every minute
    account.FilePickUp = true;
    account.FilePickupFolder = PickupFolder();
    account.FilePickUpMask = QStringLiteral("*.eml");
    const std::unique_ptr<clsAccountTrigger> trigger = OrdersTrigger();
    if (!Store.Write([&] { return Store.SaveAccount(account) && Store.SaveTrigger(account.AccountID, *trigger); })) {
        LastError = Store.LastError;
        return false;
    }
    return WriteMessages();
}

bool FirstStartSample::WriteMessages()
{
    if (!QDir().mkpath(PickupFolder())) {
        LastError = QStringLiteral("The folder ") + PickupFolder() + QStringLiteral(" cannot be made.");
        return false;
    }
    const QDateTime settled = QDateTime::currentDateTime().addSecs(-60);
    for (int number = 1; number <= MessageCount; ++number) {
        QFile file(QDir(PickupFolder()).filePath(QStringLiteral("order-%1.eml").arg(Orders[number - 1].Number)));
        if (!file.open(QIODevice::WriteOnly) || file.write(Message(number)) < 0 || !file.flush()
            || !file.setFileTime(settled.addSecs(number), QFileDevice::FileModificationTime)) {
            LastError = file.fileName() + QStringLiteral(": ") + file.errorString();
            return false;
        }
    }
    return true;
}
