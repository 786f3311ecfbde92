#pragma once
#include <QObject>
#include <QString>
#include <functional>
#include <map>

// Test classes of one folder register themselves here; the folder's executable
// runs the one named on its command line, or all of them.
using TestFactory = std::function<QObject *()>;
std::map<QString, TestFactory> &TestRegistry();
bool RegisterTest(const QString &name, TestFactory factory);

#define POSTVANE_TEST(Class) \
    static const bool Class##Registered = RegisterTest(QStringLiteral(#Class), [] { return new Class; });
