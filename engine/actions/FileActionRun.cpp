#include "FileActionRun.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionText.h"
#include "model/clsAccount.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringEncoder>

FileActionRun::FileActionRun(clsMessage &Message, LogFunction Log) : m_message(Message), m_log(std::move(Log)) {}

QString FileActionRun::Terminator(const QString &Name)
{
    if (Name.compare(QStringLiteral("CRLF"), Qt::CaseInsensitive) == 0 || Name.isEmpty())
        return QStringLiteral("\r\n");
    if (Name.compare(QStringLiteral("LF"), Qt::CaseInsensitive) == 0)
        return QStringLiteral("\n");
    if (Name.compare(QStringLiteral("CR"), Qt::CaseInsensitive) == 0)
        return QStringLiteral("\r");
    if (Name.compare(QStringLiteral("TAB"), Qt::CaseInsensitive) == 0)
        return QStringLiteral("\t");
    if (Name.compare(QStringLiteral("ESC"), Qt::CaseInsensitive) == 0)
        return QString(QChar(27));
    return Name;
}

QStringConverter::Encoding FileActionRun::Encoding(int Format)
{
    switch (Format) {
    case 1:
        return QStringConverter::Utf16LE;
    case 2:
        return QStringConverter::Utf8;
    default:
        return QStringConverter::Latin1;
    }
}

QString FileActionRun::CSVValue(const QString &Value)
{
    if (!Value.contains(u',') && !Value.contains(u'"') && !Value.contains(u'\n') && !Value.contains(u'\r'))
        return Value;
    return u'"' + QString(Value).replace(QStringLiteral("\""), QStringLiteral("\"\"")) + u'"';
}

bool FileActionRun::Write(const QString &Path, const QString &Text, int Format, bool Append, QString *Problem)
{
    QDir().mkpath(QFileInfo(Path).absolutePath());
    QFile file(Path);
    const bool fresh = !Append || file.size() == 0;
    if (!file.open(Append ? QIODevice::Append : QIODevice::WriteOnly | QIODevice::Truncate)) {
        *Problem = file.errorString();
        return false;
    }
    QStringEncoder encoder(Encoding(Format), fresh && Format == 1 ? QStringConverter::Flag::WriteBom
                                                                  : QStringConverter::Flag::Default);
    const QByteArray bytes = encoder.encode(Text);
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        *Problem = file.errorString();
        return false;
    }
    return true;
}

bool FileActionRun::RunCSV(const clsActionCSV &Action)
{
    const QString path = ExpandTokens(Action.FileName).trimmed();
    if (path.isEmpty()) {
        m_log(QStringLiteral("* Update CSV File: the action names no file"));
        return false;
    }
    const QString terminator = Terminator(Action.LineTerminator);
    QStringList names;
    QStringList values;
    for (const clsMessageField *field : m_message.ExtractedFields()) {
        names << CSVValue(field->Name);
        values << CSVValue(field->Value);
    }
    QString text;
    if (QFileInfo(path).size() == 0)
        text = names.join(u',') + terminator;
    text += values.join(u',') + terminator;
    QString problem;
    if (!Write(path, text, Action.FileFormat, true, &problem)) {
        m_log(QStringLiteral("* Update CSV File ") + path + QStringLiteral(": ") + problem);
        return false;
    }
    m_log(QStringLiteral("Update CSV File: a row was added to ") + path);
    if (Action.Send)
        m_log(QStringLiteral("* Update CSV File: sending the file to ") + Action.SendTo
              + QStringLiteral(" needs the outbox, which this server does not run yet"));
    return !Action.Send;
}

void FileActionRun::Assign(const QString &Name, const QString &Value)
{
    QString name = Name.trimmed();
    if (name.size() > 1 && name.startsWith(u'%') && name.endsWith(u'%'))
        name = name.mid(1, name.size() - 2);
    const int fieldNo = m_message.ExtractedFields().FieldNoFromName(name);
    if (fieldNo > 0)
        m_message.ExtractedFields().Item(fieldNo)->Value = Value;
    else if (m_message.Account)
        m_message.Account->setGlobalVar(name, false, Value);
}

bool FileActionRun::RunText(const clsActionText &Action)
{
    const QString path = ExpandTokens(Action.FileName).trimmed();
    const QString of = QStringLiteral("Read/Write Text File ") + path;
    if (path.isEmpty()) {
        m_log(QStringLiteral("* Read/Write Text File: the action names no file"));
        return false;
    }
    QString problem;
    if (!Action.Text.isEmpty()) {
        if (Action.Backup && QFileInfo::exists(path)) {
            const QString backup = path + QStringLiteral(".bak");
            QFile::remove(backup);
            if (!QFile::copy(path, backup)) {
                m_log(QStringLiteral("* ") + of + QStringLiteral(": the backup ") + backup + QStringLiteral(" could not be made"));
                return false;
            }
        }
        QString text = ExpandTokens(Action.Text);
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text.replace(u'\n', Terminator(Action.LineTerminator));
        if (Action.Append && QFileInfo(path).size() > 0)
            text.prepend(Terminator(Action.LineTerminator));
        if (!Write(path, text, Action.Format, Action.Append, &problem)) {
            m_log(QStringLiteral("* ") + of + QStringLiteral(": ") + problem);
            return false;
        }
        m_log(of + (Action.Append ? QStringLiteral(": text appended") : QStringLiteral(": text written")));
    }
    if (Action.AssignTo.trimmed().isEmpty())
        return true;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_log(QStringLiteral("* ") + of + QStringLiteral(": cannot be read: ") + file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    auto encoding = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(encoding.value_or(Encoding(Action.Format)));
    Assign(Action.AssignTo, decoder.decode(bytes));
    m_log(of + QStringLiteral(": read into ") + Action.AssignTo.trimmed());
    return true;
}
