#include "FileActionRun.h"
#include "DatabaseActionRun.h"
#include "ExcelWorkbook.h"
#include "actions/FileActionRecord.h"
#include "actions/clsActionCSV.h"
#include "actions/clsActionExcel.h"
#include "actions/clsActionText.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "store/MimeMail.h"
#include "store/Tokens.h"
#include "store/clsMessage.h"
#include "store/clsMessageStore.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringEncoder>

FileActionRun::FileActionRun(clsMessage &Message, LogFunction Log, clsMessageStore *Store)
    : m_message(Message), m_log(std::move(Log)), m_store(Store)
{
}

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
    return SendFile(QStringLiteral("Update CSV File "), path, Action, QStringLiteral("text/csv"));
}

bool FileActionRun::RunExcel(const clsActionExcel &Action)
{
    const QString path = ExpandTokens(Action.FileName).trimmed();
    const QString of = QStringLiteral("Update Excel File ");
    if (path.isEmpty()) {
        m_log(QStringLiteral("* Update Excel File: the action names no file"));
        return false;
    }
    ExcelWorkbook book;
    if (QFileInfo(path).size() > 0 && !book.Read(path)) {
        m_log(QStringLiteral("* ") + of + path + QStringLiteral(": ") + book.LastError + QStringLiteral("; nothing was written"));
        return false;
    }
    ExcelWorkbook::Row names;
    ExcelWorkbook::Row values;
    for (const clsMessageField *field : m_message.ExtractedFields()) {
        names << field->Name;
        QString problem;
        const QVariant typed = DatabaseActionRun::TypedValue(*field, &problem);
        const bool number = problem.isEmpty() && !typed.isNull()
                            && (typed.typeId() == QMetaType::Double || typed.typeId() == QMetaType::LongLong);
        values << (number ? QVariant(typed.toDouble()) : QVariant(field->Value));
    }
    if (book.Rows.isEmpty())
        book.Rows << names;
    book.Rows << values;
    if (!book.Write(path)) {
        m_log(QStringLiteral("* ") + of + path + QStringLiteral(": ") + book.LastError + QStringLiteral("; nothing was written"));
        return false;
    }
    m_log(QStringLiteral("Update Excel File: a row was added to ") + path);
    return SendFile(of, path, Action,
                    QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"));
}

template <class Action>
bool FileActionRun::SendFile(const QString &Of, const QString &Path, const Action &File, const QString &Type)
{
    if (!File.Send)
        return true;
    QSettings sent(QDir(Global.DataPath).filePath(QStringLiteral("FileSends.ini")), QSettings::IniFormat);
    const QString key = QString::fromLatin1(
        QCryptographicHash::hash(QFileInfo(Path).absoluteFilePath().toUtf8(), QCryptographicHash::Md5).toHex());
    const QDateTime now = QDateTime::currentDateTime();
    const qint64 interval = FileActionRecord::SendIntervalSeconds(File.SendFreq);
    if (interval > 0) {
        const QDateTime last = sent.value(key).toDateTime();
        if (!last.isValid())
            sent.setValue(key, now);
        if (!last.isValid() || last.secsTo(now) < interval)
            return true;
    }
    const QString to = ExpandTokens(File.SendTo).trimmed();
    QString problem;
    if (!Mail(Path, to, Type, &problem)) {
        m_log(QStringLiteral("* ") + Of + Path + QStringLiteral(": it could not be sent to ") + to + QStringLiteral(": ")
              + problem);
        return false;
    }
    sent.setValue(key, now);
    const bool cleared = File.SendClear && QFile::remove(Path);
    m_log(Of + Path + QStringLiteral(": sent to ") + to + (cleared ? QStringLiteral(" and cleared") : QString()));
    return true;
}

bool FileActionRun::Mail(const QString &Path, const QString &To, const QString &Type, QString *Problem)
{
    const auto &settings = Global.Settings;
    const QString from = settings.DefaultFromAddress.contains(u'@') ? settings.DefaultFromAddress : settings.AdminEmail;
    if (!m_store)
        *Problem = QStringLiteral("there is no message store to send through");
    else if (!To.contains(u'@'))
        *Problem = QStringLiteral("the address to send to is missing");
    else if (!from.contains(u'@'))
        *Problem = QStringLiteral("the server has no address to send from (DefaultFromAddress or AdminEmail)");
    QFile file(Path);
    if (Problem->isEmpty() && !file.open(QIODevice::ReadOnly))
        *Problem = file.errorString();
    if (!Problem->isEmpty())
        return false;
    const QString name = QFileInfo(Path).fileName();
    MimeMail mail;
    mail.Compose(from, To, name, QDateTime::currentDateTime(),
                 QStringLiteral("The file ") + name + QStringLiteral(" is attached."));
    mail.AddAttachment(name, file.readAll(), Type);
    OutboxMessage outgoing;
    outgoing.AccountID = m_message.Account ? m_message.Account->AccountID : QString();
    outgoing.TriggerID = m_message.Trigger() ? m_message.Trigger()->TriggerID : QString();
    outgoing.MailFrom = from;
    outgoing.MailTo = To;
    outgoing.Subject = name;
    outgoing.ReferenceID = mail.Header(QStringLiteral("Message-Id")).remove(u'<').remove(u'>');
    outgoing.Attachments = true;
    outgoing.Mime = mail.GetMimeText();
    if (m_store->AddToOutBox(outgoing) > 0)
        return true;
    *Problem = QStringLiteral("the Outbox did not take it: ") + m_store->LastError;
    return false;
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
