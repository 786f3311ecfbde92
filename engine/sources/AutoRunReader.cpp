#include "AutoRunReader.h"

#include "SourceMime.h"
#include "foundation/Formatting.h"

SourceReadResult AutoRunReader::Read(SourceAccount &Account, MessageSink &Sink)
{
    SourceReadResult result;
    if (Account.AutoRunMessageMime.trimmed().isEmpty()) {
        result.Failed = true;
        result.Failure = QStringLiteral("the account has no message to run with");
        return result;
    }
    SourceMessage message;
    message.AccountID = Account.AccountID;
    message.Source = Source();
    message.UID = NewUniqueID();
    message.MessageDate = QDateTime::currentDateTime();
    message.Mime = SourceMime::WithProcessHeaders(Account.AutoRunMessageMime, Account.AccountID, Source(), message.UID, false);
    QList<SourceMessage> batch{message};
    if (!Sink.Queue(batch)) {
        result.Failed = true;
        result.Failure = QStringLiteral("the edge queue did not take the message");
        return result;
    }
    result.NewMessages = 1;
    return result;
}
