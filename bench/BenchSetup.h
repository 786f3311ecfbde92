#pragma once
// What the benchmarks share: their whole-number options and a store of
// their own in a temporary folder.
#include "foundation/GlobalBlock.h"

#include <QCoreApplication>
#include <QStringList>

// The number after Name among the program's arguments; Default without one.
inline int IntArgument(const QStringList &Args, const QString &Name, int Default)
{
    const qsizetype at = Args.indexOf(Name);
    return at >= 0 && at + 1 < Args.size() ? Args.at(at + 1).toInt() : Default;
}

// The program's SQLite store (and logs) in Folder, at the current version.
inline void UseStoreIn(const QString &Folder)
{
    Global.AppPath = QCoreApplication::applicationDirPath() + u'/';
    Global.DataPath = Folder + u'/';
    Global.DatabaseKind = 99;
    Global.DBVersion = GlobalBlock::CurrentDBVersion;
}
