#pragma once
#include <QString>
#include <QStringConverter>

#include <functional>

class clsActionCSV;
class clsActionExcel;
class clsActionText;
class clsMessage;
class clsMessageStore;

// Runs the file actions on the current message: a row of the extracted
// fields appended to a CSV file or an .xlsx workbook, and a text file
// written, appended, backed up or read into a variable. File names and texts
// may hold tokens.
//
// A CSV or Excel action with Send on mails its file through the store's
// Outbox when its frequency is due (SendFreq), and then removes it when
// SendClear is on, so that the next row starts a new file with its header.
// The time of the last mailing of each file is kept in FileSends.ini of the
// data folder; the first row after the action is set up starts the period.
class FileActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    FileActionRun(clsMessage &Message, LogFunction Log, clsMessageStore *Store = nullptr);

    bool RunCSV(const clsActionCSV &Action);
    bool RunExcel(const clsActionExcel &Action);
    bool RunText(const clsActionText &Action);

    // "CRLF", "LF", "CR", "TAB", "ESC" as their characters; any other text as it stands.
    static QString Terminator(const QString &Name);
    // 0 ASCII (Latin-1), 1 Unicode (UTF-16 with its mark), 2 UTF-8.
    static QStringConverter::Encoding Encoding(int Format);
    // A CSV value, in quotes when it holds a comma, a quote or a line break.
    static QString CSVValue(const QString &Value);

private:
    template <class Action> bool SendFile(const QString &Of, const QString &Path, const Action &File, const QString &Type);
    bool Mail(const QString &Path, const QString &To, const QString &Type, QString *Problem);
    bool Write(const QString &Path, const QString &Text, int Format, bool Append, QString *Problem);
    void Assign(const QString &Name, const QString &Value);

    clsMessage &m_message;
    LogFunction m_log;
    clsMessageStore *m_store;
};
