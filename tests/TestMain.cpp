#include "TestRegistry.h"

#include <QCoreApplication>
#ifdef POSTVANE_TEST_GUI
#include <QApplication>
using TestApplication = QApplication;
#else
using TestApplication = QCoreApplication;
#endif
#include <QStandardPaths>
#include <QTest>
#include <cstdio>
#include <memory>

std::map<QString, TestFactory> &TestRegistry()
{
    static std::map<QString, TestFactory> registry;
    return registry;
}

bool RegisterTest(const QString &name, TestFactory factory)
{
    TestRegistry()[name] = std::move(factory);
    return true;
}

// Usage: tst_<folder> [TestClass] [Qt Test options...]
int main(int argc, char **argv)
{
    TestApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);

    QStringList args = app.arguments();
    QString only;
    if (args.size() > 1 && TestRegistry().count(args.at(1))) {
        only = args.at(1);
        args.removeAt(1);
    } else if (args.size() > 1 && !args.at(1).startsWith(u'-')) {
        std::fprintf(stderr, "unknown test class %s\n", qPrintable(args.at(1)));
        return 2;
    }

    int failed = 0;
    for (const auto &[name, factory] : TestRegistry()) {
        if (!only.isEmpty() && name != only)
            continue;
        std::unique_ptr<QObject> test(factory());
        failed += QTest::qExec(test.get(), args);
    }
    return failed == 0 ? 0 : 1;
}
