#pragma once
#include <QList>
#include <QString>
#include <QStringList>

// The text dictionary through which every user-visible text is requested,
// under a key and with its English default given at the call site.
//
// In normal running (TranslationMode empty) it only expands "%APPNAME%" and
// "%APPDOMAIN%" in the default. With TranslationMode set it looks the key up
// in POSTVANEV3.DIC in AppPath, learns unknown keys with their defaults and
// writes the grown file back on SaveDDICT. Lines of the file are
// "[EXECUTABLE]Class.Property.Index", TAB, text; lines without a TAB are
// ignored.
class cDDict
{
public:
    // ExecutableName gives the section of the keys; empty takes the name of
    // the running executable.
    explicit cDDict(const QString &ExecutableName = QString());

    // Set only by a translator's build; empty means defaults only.
    QString TranslationMode;

    // A plain message under class "$String"; "%CRLF%" becomes CR LF.
    QString GetString(const QString &Key, const QString &Default = QString(),
                      const QString &Class = QStringLiteral("$String"));
    QString GetCaption(const QString &Class, const QString &Property, const QString &Default = QString());
    QString GetDD(const QString &Class, const QString &Property, qint32 Index, const QString &Default,
                  bool Overwrite = false);

    // Rewrites the file, sorted, when keys were learned or overwritten in
    // translation mode. True when the file was written; a failed write is
    // not reported, as it happens while the program closes.
    bool SaveDDICT();

    // Shell's sort, gaps 1, 4, 13, 40, ..., ascending by binary comparison.
    static void ShellSort(QStringList &Array);

    static QString FileName() { return QStringLiteral("POSTVANEV3.DIC"); }
    QString SectionPrefix() const { return m_sectionPrefix; }
    qsizetype EntryCount() const { return m_entries.size(); }
    bool Dirty() const { return m_dirty; }

private:
    struct Entry
    {
        QString Key;
        QString Text;
    };

    void Load();
    // Index of the entry with the key, or -1.
    qsizetype Find(const QString &Key) const;
    qsizetype BinarySearch(const QString &Key) const;
    qsizetype Scan(const QString &Key) const;

    QList<Entry> m_entries;
    bool m_dirty = false;
    QString m_sectionPrefix;

    // The last GetString request and its result.
    bool m_cached = false;
    QString m_lastClass;
    QString m_lastKey;
    QString m_lastText;
};

// The process-wide dictionary, created on first use.
cDDict &DDict();
// Saves what the process-wide dictionary learned and destroys it.
void ReleaseDDict();
