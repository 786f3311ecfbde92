#include "TestRegistry.h"
#include "foundation/clsXML.h"

#include <QTest>

class tst_clsXML : public QObject
{
    Q_OBJECT
private slots:
    void placeholder() { QVERIFY(true); }
};

POSTVANE_TEST(tst_clsXML)
#include "tst_clsXML.moc"
