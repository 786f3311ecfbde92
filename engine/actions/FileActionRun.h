#pragma once
#include <QString>
#include <QStringConverter>

#include <functional>

class clsActionCSV;
class clsActionText;
class clsMessage;

// Runs the file actions on the current message: a row of the extracted
// fields appended to a CSV file, and a text file written, appended, backed
// up or read into a variable. File names and texts may hold tokens.
class FileActionRun
{
public:
    using LogFunction = std::function<void(const QString &Text)>;

    FileActionRun(clsMessage &Message, LogFunction Log);

    bool RunCSV(const clsActionCSV &Action);
    bool RunText(const clsActionText &Action);

    // "CRLF", "LF", "CR", "TAB", "ESC" as their characters; any other text as it stands.
    static QString Terminator(const QString &Name);
    // 0 ASCII (Latin-1), 1 Unicode (UTF-16 with its mark), 2 UTF-8.
    static QStringConverter::Encoding Encoding(int Format);
    // A CSV value, in quotes when it holds a comma, a quote or a line break.
    static QString CSVValue(const QString &Value);

private:
    bool Write(const QString &Path, const QString &Text, int Format, bool Append, QString *Problem);
    void Assign(const QString &Name, const QString &Value);

    clsMessage &m_message;
    LogFunction m_log;
};
