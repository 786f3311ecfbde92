#include "ProcessorRole.h"
#include "foundation/GlobalBlock.h"
#include "store/clsMessageStore.h"

ProcessorRole::ProcessorRole(ConfigurationCopy::Loader Load, int Threads)
    : Role(QStringLiteral("Message Processor"), Global.ProductName + QStringLiteral("MessageServerLog.LOG"),
           QStringLiteral("Message Server"), Threads)
    , m_load(std::move(Load))
{
    Role.Body = [this](int ThreadNumber) { Run(ThreadNumber); };
}

ProcessorRole::~ProcessorRole()
{
    Role.Stop();
}

void ProcessorRole::Run(int ThreadNumber)
{
    ConfigurationCopy configuration(m_load);
    clsMessageStore store;
    if (!store.OpenMessageStore()) {
        Role.LogKeptErrors();
        Role.Log.Add(QStringLiteral("* The message processor cannot open the message store: ") + store.LastError);
        return;
    }
    if (ThreadNumber == 1) {
        const qint64 returned = store.ReturnTakenEdgeQueue();
        if (returned > 0)
            Role.Log.Add(QStringLiteral("%1 messages taken before a stop wait in the queue again").arg(returned));
    }
    while (!Role.Stopping()) {
        Role.LogKeptErrors();
        Role.Idle(250);
    }
}
