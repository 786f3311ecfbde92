#pragma once
#include <QString>

class ConfigStore;

// What a newcomer sees on the first start of a fresh data folder: the
// account "Sample Orders" reading the folder "Pickup" of the data folder, its
// trigger "Orders" extracting the order number, customer, amount and date of
// each message into the trigger's internal database, and three sample orders
// waiting in that folder. The files are dated a minute back, so that the
// first read of the folder takes them at once.
class FirstStartSample
{
public:
    static constexpr const char *AccountID = "SampleOrders";
    static constexpr const char *TriggerID = "SampleOrdersTrigger";
    static constexpr int MessageCount = 3;

    // The pickup folder in the data folder.
    static QString PickupFolder();
    // The trigger's internal database, where the rows go.
    static QString DatabaseFile();
    // The account with its trigger saved in the store, the messages put in
    // the folder; false with LastError set when either fails.
    bool Create(ConfigStore &Store, const QString &OrganizationID);
    // The text of sample order Number (1 to MessageCount), as a mail file
    // dated now, so that the trigger's received date lets it through.
    static QByteArray Message(int Number);

    QString LastError;

private:
    bool WriteMessages();
};
