#include "StoreFiles.h"
#include "clsRowSet.h"
#include "foundation/GlobalBlock.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

void SetError(QString *Error, const QString &Text)
{
    if (Error)
        *Error = Text;
}

} // namespace

QString FindBlankDatabase(const QString &Name)
{
    QStringList folders{Global.AppPath};
    if (QCoreApplication::instance()) {
        const QString programFolder = QCoreApplication::applicationDirPath() + u'/';
        folders << programFolder << programFolder + QStringLiteral("../share/postvane/");
    }
    for (const QString &folder : folders) {
        const QString candidate = folder + Name;
        if (!folder.isEmpty() && QFileInfo::exists(candidate))
            return QDir::cleanPath(candidate);
    }
    return QString();
}

bool EnsureDatabaseFile(const QString &Path, const QString &BlankName, QString *Error)
{
    if (QFileInfo::exists(Path))
        return true;
    const QString blank = FindBlankDatabase(BlankName);
    if (blank.isEmpty()) {
        SetError(Error, QStringLiteral("The blank database %1 is not installed").arg(BlankName));
        return false;
    }
    if (!QFile::copy(blank, Path)) {
        SetError(Error, QStringLiteral("Could not copy %1 to %2").arg(blank, Path));
        return false;
    }
    // An installed blank may be read-only; the copy must not be.
    QFile::setPermissions(Path, QFile::permissions(Path) | QFileDevice::WriteOwner);
    return true;
}

bool OpenSQLite(const QString &ConnectionName, const QString &Path, bool ReadOnly, QString *Error)
{
    QString failure;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), ConnectionName);
        db.setDatabaseName(Path);
        db.setConnectOptions(ReadOnly ? QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000;QSQLITE_OPEN_READONLY")
                                      : QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        if (!db.open()) {
            failure = db.lastError().text();
            if (failure.trimmed().isEmpty())
                failure = QStringLiteral("Could not open ") + Path;
        } else {
            QSqlQuery probe(db);
            if (!probe.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master")))
                failure = probe.lastError().text();
        }
    }
    if (failure.isEmpty())
        return true;
    CloseConnection(ConnectionName);
    SetError(Error, failure);
    return false;
}

void CloseConnection(const QString &ConnectionName)
{
    if (!QSqlDatabase::contains(ConnectionName))
        return;
    clsRowSet::ForgetConnection(ConnectionName);
    {
        QSqlDatabase db = QSqlDatabase::database(ConnectionName, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(ConnectionName);
}

bool RemoveDatabaseFile(const QString &Path)
{
    QFile::remove(Path + QStringLiteral("-wal"));
    QFile::remove(Path + QStringLiteral("-shm"));
    return !QFileInfo::exists(Path) || QFile::remove(Path);
}
