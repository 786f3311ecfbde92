#include "cDDict.h"
#include "GlobalBlock.h"
#include "Startup.h"
#include "TextHelpers.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <memory>

namespace {

QString RunningExecutableName()
{
    if (QCoreApplication::instance())
        return QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    return QCoreApplication::applicationName();
}

QString ExpandProduct(QString text)
{
    text.replace(QStringLiteral("%APPNAME%"), Global.ProductName);
    text.replace(QStringLiteral("%APPDOMAIN%"), Global.AppDomain);
    return text;
}

int BinaryCompare(const QString &a, const QString &b)
{
    return QString::compare(a, b, Qt::CaseSensitive);
}

std::unique_ptr<cDDict> &Instance()
{
    static std::unique_ptr<cDDict> instance;
    return instance;
}

} // namespace

cDDict::cDDict(const QString &ExecutableName)
    : m_sectionPrefix(u'[' + (ExecutableName.isEmpty() ? RunningExecutableName() : ExecutableName).toUpper() + u']')
{
    Load();
}

void cDDict::Load()
{
    try {
        QFile file(Global.AppPath + FileName());
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return;
        QTextStream stream(&file);
        QString line;
        while (stream.readLineInto(&line)) {
            const qsizetype tab = line.indexOf(u'\t');
            if (tab >= 0)
                m_entries.append(Entry{line.left(tab), line.mid(tab + 1)});
        }
    } catch (const std::exception &error) {
        m_entries.clear();
        LogError(QStringLiteral("cDDict.Load"), error);
    }
}

QString cDDict::GetString(const QString &Key, const QString &Default, const QString &Class)
{
    const QString cls = Class.isEmpty() ? QStringLiteral("$String") : Class;
    if (m_cached && Key == m_lastKey && cls == m_lastClass)
        return m_lastText;
    QString text = GetDD(cls, Key, 0, Default, false);
    text.replace(QStringLiteral("%CRLF%"), QStringLiteral("\r\n"));
    m_cached = true;
    m_lastClass = cls;
    m_lastKey = Key;
    m_lastText = text;
    return text;
}

QString cDDict::GetCaption(const QString &Class, const QString &Property, const QString &Default)
{
    return GetDD(Class, Property, 0, Default, false);
}

QString cDDict::GetDD(const QString &Class, const QString &Property, qint32 Index, const QString &Default,
                      bool Overwrite)
{
    if (TranslationMode.isEmpty())
        return ExpandProduct(Default);
    try {
        const QString key = m_sectionPrefix + Class + u'.' + Property + u'.' + QString::number(Index);
        qsizetype found = Find(key);
        if (found < 0) {
            m_entries.append(Entry{key, Default});
            found = m_entries.size() - 1;
            m_dirty = true;
        } else if (Overwrite) {
            m_entries[found].Text = Default;
            m_dirty = true;
            m_cached = false;
        }
        return ExpandProduct(m_entries.at(found).Text);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("GetDD"), error);
        return ExpandProduct(Default);
    }
}

qsizetype cDDict::Find(const QString &Key) const
{
    const qsizetype found = BinarySearch(Key);
    return found >= 0 ? found : Scan(Key);
}

// The bounds are 1-based. A key above the middle entry moves the upper bound
// down, which is the opposite of an ascending order; in the ascending file
// that SaveDDICT writes the search mostly misses and the scan finds the key.
qsizetype cDDict::BinarySearch(const QString &Key) const
{
    qsizetype low = 1;
    qsizetype high = m_entries.size();
    while (low <= high) {
        const qsizetype middle = (low + high) / 2;
        const int order = BinaryCompare(Key, m_entries.at(middle - 1).Key);
        if (order == 0)
            return middle - 1;
        if (order > 0)
            high = middle - 1;
        else
            low = middle + 1;
    }
    return -1;
}

qsizetype cDDict::Scan(const QString &Key) const
{
    for (qsizetype i = 0; i < m_entries.size(); ++i) {
        if (m_entries.at(i).Key == Key)
            return i;
    }
    return -1;
}

bool cDDict::SaveDDICT()
{
    if (!m_dirty || TranslationMode.isEmpty())
        return false;
    try {
        QStringList lines;
        lines.reserve(m_entries.size());
        for (const Entry &entry : std::as_const(m_entries))
            lines.append(entry.Key + u'\t' + entry.Text);
        ShellSort(lines);

        QSaveFile file(Global.AppPath + FileName());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
            return false;
        QTextStream stream(&file);
        for (const QString &line : std::as_const(lines))
            stream << line << '\n';
        stream.flush();
        if (!file.commit())
            return false;
        m_dirty = false;
        return true;
    } catch (const std::exception &) {
        return false;
    }
}

void cDDict::ShellSort(QStringList &Array)
{
    ::ShellSort(Array);
}

cDDict &DDict()
{
    std::unique_ptr<cDDict> &instance = Instance();
    if (!instance)
        instance = std::make_unique<cDDict>();
    return *instance;
}

void ReleaseDDict()
{
    std::unique_ptr<cDDict> &instance = Instance();
    if (!instance)
        return;
    instance->SaveDDICT();
    instance.reset();
}
