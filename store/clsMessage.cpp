#include "clsMessage.h"
#include "WordIndex.h"
#include "foundation/Crypt.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "foundation/Startup.h"
#include "foundation/TextHelpers.h"
#include "model/GlobalCollections.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"

#include <QFile>
#include <QRegularExpression>
#include <exception>

namespace {

const QString CRLF = QStringLiteral("\r\n");

thread_local std::unique_ptr<clsMessage> Current;

// The web service's public address, ending in "/".
QString WebBaseURL()
{
    return EnsureTrailing(Global.Settings.WebServicesURL, QStringLiteral("/"));
}

void RemoveFile(const QString &Path)
{
    if (!Path.isEmpty())
        QFile::remove(Path);
}

} // namespace

clsMessage &CurrentMessage()
{
    if (!Current)
        Current = std::make_unique<clsMessage>();
    return *Current;
}

std::unique_ptr<clsMessage> ReplaceCurrentMessage(std::unique_ptr<clsMessage> Message)
{
    std::swap(Current, Message);
    return Message;
}

clsMessage::clsMessage()
    : Dated(QDateTime::currentDateTime()), OrigDate(Dated), MessageID(GUIDDigits()), m_LinkGUID(MessageID),
      m_ExtractedFields(std::make_unique<colMSGFields>())
{
}

clsMessage::~clsMessage() = default;

QString clsMessage::OrganizationID() const
{
    try {
        QString id = Account ? Account->OrganizationID : QString();
        if (!FolderID.isEmpty() && FolderID != QStringLiteral("-")) {
            if (const clsUserFolder *folder = UserFolders().Item(FolderID)) {
                QString folderOrganization = folder->OrganizationID;
                if (folderOrganization.isEmpty())
                    if (const clsUser *user = Users().Item(folder->UserID))
                        folderOrganization = user->OrganizationID;
                if (!folderOrganization.isEmpty())
                    id = folderOrganization;
            }
        }
        if (id.isEmpty() && Organizations().Count() > 0)
            id = Organizations().Item(1)->ID;
        return id;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsMessage.OrganizationID"), error);
        return QString();
    }
}

void clsMessage::setTrigger(clsAccountTrigger *Value)
{
    m_Trigger = Value;
    if (!Value)
        return;
    m_ExtractedFields = std::make_unique<colMSGFields>();
    for (const clsTriggerField *field : Value->FieldsToProcess()) {
        auto item = std::make_unique<clsMessageField>();
        item->Name = field->Name;
        item->InsertInto = field->InsertInto;
        item->InsertField = field->InsertFieldName;
        item->EnvVar = field->EnvironmentVarName;
        item->OutlookContactField = field->MapToOutLookContact;
        item->KeyField = field->KeyExists;
        item->FieldType = field->FieldType;
        item->FieldLength = field->MaxLength;
        m_ExtractedFields->Add(std::move(item));
    }
}

QString clsMessage::FromFull() const
{
    return FromName.isEmpty() ? From : FromName + QStringLiteral(" <") + From + u'>';
}

void clsMessage::setMessageHeader(const QString &Value)
{
    m_StrHeader.setText(Value);
    HeaderCRLF();
    ParseHeaders();
}

// Lines with a colon, not starting with a blank, are headers; any other line
// continues the header before it, or is dropped when there is none.
void clsMessage::ParseHeaders()
{
    QString lastName;
    for (QString line : m_StrHeader.Text().split(CRLF, Qt::SkipEmptyParts)) {
        line.replace(u'\t', u' ');
        const qsizetype colon = line.indexOf(u':');
        if (colon >= 0 && !line.startsWith(u' ')) {
            lastName = line.left(colon).trimmed();
            SetHeaderValue(lastName, line.mid(colon + 1));
        } else if (const int slot = HeaderNumber(lastName); slot > 0) {
            m_HeaderValues[slot] += u' ' + line.trimmed();
        }
    }
}

QString clsMessage::TempPath() const
{
    return (Account ? Account->DocumentRoot() : Global.DataPath) + QStringLiteral("Temp/");
}

QString clsMessage::IndexText() const
{
    QString subject = Subject;
    if (subject.contains(QStringLiteral("fw:"), Qt::CaseInsensitive))
        subject.remove(QStringLiteral("FW:"));
    return subject + u' ' + Body;
}

QString clsMessage::WordIndex() const
{
    return ::WordIndex(IndexText(), WordIndexForm::Plain);
}

QString clsMessage::WordIndexWithCount() const
{
    return ::WordIndex(IndexText(), WordIndexForm::WithCount);
}

QString clsMessage::WordIndexWithCountSorted() const
{
    return ::WordIndex(IndexText(), WordIndexForm::Sorted);
}

QString clsMessage::ValidateURL() const
{
    return WebBaseURL() + QStringLiteral("validate.aspx?id=") +
           URLEncode(QString::number(EdgeQueueRecordNo) + u'-' + MD5Hash(MessageID));
}

QString clsMessage::ViewURL() const
{
    return WebBaseURL() + QStringLiteral("viewmessage.aspx?id=") + OrganizationID() + m_LinkGUID;
}

QString clsMessage::Digest(int DigestLength) const
{
    const int length = DigestLength == 0 ? 250 : DigestLength;
    const bool cut = Body.size() > length + 50;
    QString text = cut ? Body.left(length + 50) : Body;
    text.replace(u'\t', u' ');
    text.replace(CRLF, QStringLiteral(" "));
    text.remove(u'\n');
    text.remove(u'\r');
    text.remove(QChar(160));
    text = RemoveWhiteSpace(text.trimmed());
    if (text.size() > length)
        return text.left(qMax(0, length - 3)) + QStringLiteral("...");
    return cut ? text + QStringLiteral("...") : text;
}

void clsMessage::AddHeader(const QString &Header, const QString &Value, bool DontRefresh)
{
    const QString name = Header.trimmed();
    if (const int slot = HeaderNumber(name); slot > 0) {
        m_HeaderValues[slot] += u' ' + Value.trimmed();
    } else {
        ++NoHeaders;
        m_HeaderNames.resize(NoHeaders + 1);
        m_HeaderValues.resize(NoHeaders + 1);
        m_HeaderNames[NoHeaders] = name;
        m_HeaderValues[NoHeaders] = Value;
    }
    if (!DontRefresh)
        RefreshStrHeader();
}

void clsMessage::RemoveHeader(const QString &Header)
{
    const int slot = HeaderNumber(Header.trimmed());
    if (slot == 0)
        return;
    m_HeaderNames.removeAt(slot);
    m_HeaderValues.removeAt(slot);
    --NoHeaders;
    RefreshStrHeader();
}

void clsMessage::RefreshStrHeader()
{
    QString text;
    for (int slot = 1; slot <= SlotCount(); ++slot)
        text += m_HeaderNames.at(slot) + QStringLiteral(": ") + m_HeaderValues.at(slot) + CRLF;
    m_StrHeader.setText(text);
}

QString clsMessage::HeaderName(int Index) const
{
    return Index >= 1 && Index <= SlotCount() ? m_HeaderNames.at(Index) : QString();
}

QString clsMessage::HeaderValue(int Index) const
{
    return Index >= 1 && Index <= SlotCount() ? m_HeaderValues.at(Index) : QString();
}

QString clsMessage::HeaderValue(const QString &Index) const
{
    if (IsNumeric(Index))
        return HeaderValue(qRound(Index.trimmed().toDouble()));
    return HeaderValue(HeaderNumber(Index));
}

int clsMessage::HeaderNumber(const QString &Name) const
{
    const QString name = Name.toLower();
    for (int slot = 1; slot <= SlotCount(); ++slot)
        if (m_HeaderNames.at(slot).toLower() == name)
            return slot;
    return 0;
}

void clsMessage::HeaderCRLF()
{
    const QString text = m_StrHeader.Text();
    if (!text.endsWith(CRLF + CRLF))
        m_StrHeader.Append(text.endsWith(CRLF) ? CRLF : CRLF + CRLF);
}

void clsMessage::RemoveHeaderFromMime()
{
    const qsizetype blankLine = MessageText.indexOf(CRLF + CRLF);
    if (blankLine >= 0)
        MessageText.remove(0, blankLine + 4);
}

void clsMessage::SetHeaderValue(const QString &Header, const QString &Value)
{
    const QString name = Header.trimmed();
    int slot = HeaderNumber(name);
    if (slot == 0) {
        slot = ++CurrentMessage().NoHeaders;
        m_HeaderNames.resize(slot + 1);
        m_HeaderValues.resize(slot + 1);
        m_HeaderNames[slot] = name;
    }
    m_HeaderValues[slot] = Value.trimmed();
    RefreshStrHeader();
}

void clsMessage::RemoveBracketsFromAddress()
{
    From = StripBrackets(From, true);
    ToAddress = StripBrackets(ToAddress, true);
}

QString clsMessage::HashMessage()
{
    const QString hash = MD5Hash(m_StrHeader.Text() + MessageText);
    if (m_FirstHash.isEmpty())
        m_FirstHash = hash;
    return hash;
}

bool clsMessage::HashChanged()
{
    return m_FirstHash.isEmpty() || HashMessage() != m_FirstHash;
}

void clsMessage::AddToLog(const QString &MSG, int)
{
    try {
        QString line = MSG.left(500);
        line.replace(CRLF, QStringLiteral(" "));
        line = NumericReferencesAbove(line, 128);
        m_Log.AppendLine(line);
        if (!line.startsWith(u'*'))
            return;
        LastError = line;
        ++ErrorCount;
        if (Account)
            ++Account->Errors;
        if (m_Trigger)
            ++m_Trigger->ErrorCount;
    } catch (const std::exception &error) {
        LogError(QStringLiteral("clsMessage.AddToLog"), error);
    }
}

void clsMessage::DeleteTempAttachments()
{
    for (const colMSGAttachments *items : {&Attachments, &RelatedItems})
        for (const clsMessageAttachment *attachment : *items)
            RemoveFile(attachment->SavedTo);
    static const QRegularExpression lineEnds(QStringLiteral("[\r\n]+"));
    for (const QString &path : TempFiles.split(lineEnds, Qt::SkipEmptyParts))
        RemoveFile(path);
}

int clsMessage::SlotCount() const
{
    return qMin(int(NoHeaders), int(m_HeaderNames.size()) - 1);
}
