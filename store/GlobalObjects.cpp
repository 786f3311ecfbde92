#include "GlobalObjects.h"

#include <memory>

namespace {

std::unique_ptr<clsMessage> &SampleSlot()
{
    static std::unique_ptr<clsMessage> message;
    return message;
}

std::unique_ptr<clsEventLog> &EventLogSlot()
{
    static std::unique_ptr<clsEventLog> log;
    return log;
}

} // namespace

clsMessage &SampleMessage()
{
    if (!SampleSlot())
        CreateSampleMessage();
    return *SampleSlot();
}

void CreateSampleMessage()
{
    auto message = std::make_unique<clsMessage>();
    message->Dated = QDateTime::currentDateTime();
    message->From = QStringLiteral("sender@example.com");
    message->Subject = QStringLiteral("Test Subject Line");
    message->Body = QStringLiteral("test body");
    message->Importance = QStringLiteral("LOW");
    message->Sensitivity = QStringLiteral("NORMAL");
    message->ToAddress = QStringLiteral("recipient@example.com");
    message->MessageID = QStringLiteral("1234567890");
    message->AddHeader(QStringLiteral("header1"), QStringLiteral("value1"));
    message->AddHeader(QStringLiteral("header2"), QStringLiteral("value2"));
    SampleSlot() = std::move(message);
}

clsEventLog &EventLog()
{
    if (!EventLogSlot())
        EventLogSlot() = std::make_unique<clsEventLog>();
    return *EventLogSlot();
}

void ReleaseEventLog()
{
    EventLogSlot().reset();
}
