#include "TestRegistry.h"
#include "server/LogonThrottle.h"

#include <QTest>

namespace {

qint64 Clock = 1'000'000;
qint64 Now()
{
    return Clock;
}

} // namespace

// The back-off of an address that keeps failing, on a clock the test moves.
class tst_LogonThrottle : public QObject
{
    Q_OBJECT
    const QHostAddress guesser{QStringLiteral("192.0.2.7")};
    const QHostAddress other{QStringLiteral("192.0.2.8")};

    // Fails MaxFailures times; the log line of the back-off that starts.
    QString FailRound(LogonThrottle &Throttle, const QHostAddress &Client)
    {
        QString line;
        for (int i = 0; i < LogonThrottle::MaxFailures; ++i) {
            const QString said = Throttle.Failed(Client);
            if (!said.isEmpty()) {
                if (!line.isEmpty())
                    return QStringLiteral("two lines in one round");
                line = said;
            }
        }
        return line;
    }

private slots:
    void init() { Clock = 1'000'000; }

    void backOffDoublesUpToItsLimit()
    {
        LogonThrottle throttle(Now);
        qint64 expected = LogonThrottle::FirstBackOff;
        for (int round = 0; round < 8; ++round) {
            const QString line = FailRound(throttle, guesser);
            QVERIFY2(line.contains(QStringLiteral(" %1 seconds").arg(expected)), qPrintable(line));
            QVERIFY(throttle.IsBlocked(guesser));
            QVERIFY(!throttle.IsBlocked(other));
            Clock += expected - 1;
            QVERIFY(throttle.IsBlocked(guesser));
            Clock += 1;
            QVERIFY(!throttle.IsBlocked(guesser));
            expected = qMin(expected * 2, LogonThrottle::LastBackOff);
        }
        QCOMPARE(expected, LogonThrottle::LastBackOff);
    }

    void onlyFailuresWithinAMinuteCount()
    {
        LogonThrottle throttle(Now);
        for (int i = 0; i < 3 * LogonThrottle::MaxFailures; ++i) {
            QVERIFY(throttle.Failed(guesser).isEmpty());
            Clock += LogonThrottle::Window / (LogonThrottle::MaxFailures - 1);
        }
        QVERIFY(!throttle.IsBlocked(guesser));
    }

    void successOrAQuietSpellForgets()
    {
        LogonThrottle throttle(Now);
        for (int i = 0; i < LogonThrottle::MaxFailures - 1; ++i)
            throttle.Failed(guesser);
        throttle.Succeeded(guesser);
        QVERIFY(throttle.Failed(guesser).isEmpty());

        QVERIFY(FailRound(throttle, other).contains(QStringLiteral(" 30 seconds")));
        Clock += 30;
        QVERIFY(FailRound(throttle, other).contains(QStringLiteral(" 60 seconds")));
        Clock += 60 + LogonThrottle::LastBackOff + 1;
        QVERIFY(FailRound(throttle, other).contains(QStringLiteral(" 30 seconds")));
    }

    void anIPv4ClientIsOneAddressInEitherForm()
    {
        LogonThrottle throttle(Now);
        for (int i = 0; i < LogonThrottle::MaxFailures; ++i)
            throttle.Failed(QHostAddress(QStringLiteral("::ffff:192.0.2.7")));
        QVERIFY(throttle.IsBlocked(guesser));
    }
};

POSTVANE_TEST(tst_LogonThrottle)
#include "tst_LogonThrottle.moc"
