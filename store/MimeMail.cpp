// gmime comes first: its glib headers use the names that Qt's keywords
// (signals, slots) would otherwise turn into macros.
#include <gmime/gmime.h>

#include "MimeMail.h"
#include "foundation/Startup.h"

#include <QMimeDatabase>
#include <QSaveFile>
#include <QSysInfo>

#include <memory>
#include <mutex>
#include <utility>

namespace {

struct Unref
{
    void operator()(void *object) const { g_object_unref(object); }
};
template <typename T> using Owned = std::unique_ptr<T, Unref>;

// Initialises GMime once per process and gives the parser options that every
// message uses. Headers keep a pointer to them, so they live as long as the
// process. Raw 8-bit header text is read as UTF-8 where it is valid, else as
// windows-1252, and at last as Latin-1, which always succeeds.
GMimeParserOptions *ParserOptions()
{
    static std::once_flag once;
    static GMimeParserOptions *options = nullptr;
    std::call_once(once, [] {
        g_mime_init();
        options = g_mime_parser_options_new();
        const char *fallback[] = {"utf-8", "windows-1252", "iso-8859-1", nullptr};
        g_mime_parser_options_set_fallback_charsets(options, fallback);
    });
    return options;
}

QString FromUtf8(const char *text) { return QString::fromUtf8(text); }

QByteArray StreamBytes(GMimeStream *stream)
{
    const GByteArray *bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream));
    return QByteArray(reinterpret_cast<const char *>(bytes->data), qsizetype(bytes->len));
}

QByteArray WriteObject(GMimeObject *object)
{
    GMimeFormatOptions *format = g_mime_format_options_new();
    g_mime_format_options_set_newline_format(format, GMIME_NEWLINE_FORMAT_DOS);
    Owned<GMimeStream> stream(g_mime_stream_mem_new());
    g_mime_object_write_to_stream(object, format, stream.get());
    g_mime_format_options_free(format);
    return StreamBytes(stream.get());
}

GMimeMessage *Parse(const QByteArray &mime)
{
    Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(mime.constData(), size_t(mime.size())));
    Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    return g_mime_parser_construct_message(parser.get(), ParserOptions());
}

// The content of a part with its transfer encoding undone.
QByteArray DecodedContent(GMimePart *part)
{
    GMimeDataWrapper *content = g_mime_part_get_content(part);
    if (!content)
        return {};
    Owned<GMimeStream> stream(g_mime_stream_mem_new());
    g_mime_data_wrapper_write_to_stream(content, stream.get());
    return StreamBytes(stream.get());
}

QString Charset(GMimeObject *object)
{
    return FromUtf8(g_mime_object_get_content_type_parameter(object, "charset")).trimmed();
}

// Body bytes to text by the declared charset. Mail declared as Latin-1 or
// ASCII is mostly windows-1252, whose signs (euro, quotes, dashes) stand
// where Latin-1 has control codes; a wrong or unknown label falls back to
// UTF-8 when the bytes are valid UTF-8, else to Latin-1.
QString DecodeText(const QByteArray &bytes, const QString &declared)
{
    const QByteArray charset = declared.toLower().toLatin1();
    const bool validUtf8 = g_utf8_validate_len(bytes.constData(), gsize(bytes.size()), nullptr);
    const bool ascii = charset.isEmpty() || charset == "us-ascii" || charset == "ascii";
    if (charset == "utf-8" || charset == "utf8" || (ascii && validUtf8))
        return QString::fromUtf8(bytes);
    const bool latin1 = ascii || charset == "iso-8859-1" || charset == "latin1";
    iconv_t converter = g_mime_iconv_open("UTF-8", latin1 ? "windows-1252" : charset.constData());
    if (converter != reinterpret_cast<iconv_t>(-1)) {
        char *text = g_mime_iconv_strndup(converter, bytes.constData(), size_t(bytes.size()));
        g_mime_iconv_close(converter);
        if (text) {
            const QString result = FromUtf8(text);
            g_free(text);
            return result;
        }
    }
    return validUtf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

bool IsAttachmentDisposition(GMimeObject *object)
{
    const char *disposition = g_mime_object_get_disposition(object);
    return disposition && g_ascii_strcasecmp(disposition, GMIME_DISPOSITION_ATTACHMENT) == 0;
}

QString FileName(GMimeObject *object)
{
    const char *name = g_mime_object_get_content_disposition_parameter(object, "filename");
    if (!name)
        name = g_mime_object_get_content_type_parameter(object, "name");
    return FromUtf8(name).trimmed();
}

// The parts of a message sorted into the two bodies and the attachments.
struct MessageParts
{
    struct Item
    {
        GMimeObject *Part;
        bool Related;
    };
    GMimePart *Text = nullptr;
    GMimePart *Html = nullptr;
    QList<Item> Attachments;
};

// Related marks the parts of a multipart/related beside its root (the first
// part): the pictures and styles that the HTML body refers to.
void Collect(GMimeObject *object, bool related, MessageParts &parts)
{
    GMimeContentType *type = g_mime_object_get_content_type(object);
    if (GMIME_IS_MULTIPART(object)) {
        GMimeMultipart *multipart = GMIME_MULTIPART(object);
        const bool isRelated = g_mime_content_type_is_type(type, "multipart", "related");
        for (int i = 0; i < g_mime_multipart_get_count(multipart); ++i)
            Collect(g_mime_multipart_get_part(multipart, i), isRelated ? i > 0 : related, parts);
        return;
    }
    const bool bodyCandidate = GMIME_IS_PART(object) && !related && !IsAttachmentDisposition(object)
                               && FileName(object).isEmpty();
    if (bodyCandidate && !parts.Text && g_mime_content_type_is_type(type, "text", "plain")) {
        parts.Text = GMIME_PART(object);
    } else if (bodyCandidate && !parts.Html && g_mime_content_type_is_type(type, "text", "html")) {
        parts.Html = GMIME_PART(object);
    } else {
        parts.Attachments.append({object, related});
    }
}

MessageParts Collect(GMimeMessage *message)
{
    MessageParts parts;
    if (GMimeObject *top = g_mime_message_get_mime_part(message))
        Collect(top, false, parts);
    return parts;
}

MimeAttachment MakeAttachment(const MessageParts::Item &item, int number)
{
    GMimeObject *object = item.Part;
    MimeAttachment attachment;
    char *type = g_mime_content_type_get_mime_type(g_mime_object_get_content_type(object));
    attachment.ContentType = FromUtf8(type).toLower();
    g_free(type);
    attachment.ContentID = FromUtf8(g_mime_object_get_content_id(object));
    attachment.IsRelatedItem = item.Related;
    if (GMIME_IS_MESSAGE_PART(object)) {
        attachment.IsAttachedMessage = true;
        if (GMimeMessage *inner = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object)))
            attachment.Data = WriteObject(GMIME_OBJECT(inner));
    } else if (GMIME_IS_PART(object)) {
        attachment.Data = DecodedContent(GMIME_PART(object));
    }
    attachment.Name = FileName(object);
    if (attachment.Name.isEmpty()) {
        const QString suffix = QMimeDatabase().mimeTypeForName(attachment.ContentType).preferredSuffix();
        attachment.Name = QStringLiteral("attachment%1").arg(number) + (suffix.isEmpty() ? QString() : u'.' + suffix);
    }
    return attachment;
}

// A header value must stay on one line: line breaks would end the header.
QByteArray HeaderText(const QString &value)
{
    QString line = value;
    line.replace(QLatin1String("\r\n"), QLatin1String(" "));
    line.replace(u'\r', u' ');
    line.replace(u'\n', u' ');
    return line.toUtf8();
}

GMimeObject *HeaderOwner(GMimeMessage *message, const QString &name)
{
    GMimeObject *top = g_mime_message_get_mime_part(message);
    if (top && name.startsWith(QLatin1String("Content-"), Qt::CaseInsensitive))
        return top;
    return GMIME_OBJECT(message);
}

GMimePart *NewPart(const QByteArray &data, const QString &contentType)
{
    GMimePart *part = g_mime_part_new();
    GMimeContentType *type = g_mime_content_type_parse(ParserOptions(), contentType.toUtf8().constData());
    g_mime_object_set_content_type(GMIME_OBJECT(part), type);
    g_object_unref(type);
    Owned<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(data.constData(), size_t(data.size())));
    Owned<GMimeDataWrapper> content(g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part, content.get());
    g_mime_part_set_content_encoding(part, g_mime_part_get_best_content_encoding(part, GMIME_ENCODING_CONSTRAINT_7BIT));
    return part;
}

GMimePart *NewTextPart(const QString &text, const char *subtype)
{
    return NewPart(text.toUtf8(), QStringLiteral("text/%1; charset=utf-8").arg(QLatin1String(subtype)));
}

void AddAddresses(GMimeMessage *message, GMimeAddressType kind, const QString &addresses)
{
    if (InternetAddressList *list = internet_address_list_parse(ParserOptions(), HeaderText(addresses).constData())) {
        internet_address_list_append(g_mime_message_get_addresses(message, kind), list);
        g_object_unref(list);
    }
}

GDateTime *ToGDateTime(const QDateTime &value)
{
    const QDateTime when = value.isValid() ? value : QDateTime::currentDateTime();
    GTimeZone *zone = g_time_zone_new_offset(when.offsetFromUtc());
    const QDate date = when.date();
    const QTime time = when.time();
    GDateTime *result = g_date_time_new(zone, date.year(), date.month(), date.day(), time.hour(), time.minute(),
                                        time.second());
    g_time_zone_unref(zone);
    return result;
}

} // namespace

bool MimeAttachment::SaveTo(const QString &Path) const
{
    QSaveFile file(Path);
    if (file.open(QIODevice::WriteOnly) && file.write(Data) == Data.size() && file.commit())
        return true;
    LogError(QStringLiteral("MimeAttachment.SaveTo"), Path + QStringLiteral(": ") + file.errorString());
    return false;
}

MimeMail::MimeMail()
{
    ParserOptions();
    m_message = g_mime_message_new(FALSE);
}

MimeMail::~MimeMail()
{
    g_object_unref(m_message);
}

MimeMail::MimeMail(MimeMail &&other) noexcept : m_message(std::exchange(other.m_message, g_mime_message_new(FALSE))) {}

MimeMail &MimeMail::operator=(MimeMail &&other) noexcept
{
    std::swap(m_message, other.m_message);
    return *this;
}

void MimeMail::Replace(GMimeMessage *message)
{
    g_object_unref(m_message);
    m_message = message;
}

bool MimeMail::LoadMime(const QByteArray &Mime)
{
    GMimeMessage *message = Mime.isEmpty() ? nullptr : Parse(Mime);
    // GMime wants a header block; a text without one is all body.
    if (!message && !Mime.isEmpty())
        message = Parse("\r\n" + Mime);
    Replace(message ? message : g_mime_message_new(FALSE));
    return message != nullptr;
}

bool MimeMail::LoadMime(const QString &Mime)
{
    return LoadMime(Mime.toUtf8());
}

QByteArray MimeMail::GetMime() const
{
    return WriteObject(GMIME_OBJECT(m_message));
}

QString MimeMail::GetMimeText()
{
    g_mime_object_encode(GMIME_OBJECT(m_message), GMIME_ENCODING_CONSTRAINT_7BIT);
    return QString::fromUtf8(GetMime());
}

// The message's own headers and those of its top part, merged the way GMime
// writes them: headers read from the text keep their places, added ones
// follow the message's own.
QList<MimeHeader> MimeMail::Headers() const
{
    GMimeHeaderList *own = g_mime_object_get_header_list(GMIME_OBJECT(m_message));
    GMimeObject *top = g_mime_message_get_mime_part(m_message);
    GMimeHeaderList *content = top ? g_mime_object_get_header_list(top) : nullptr;
    const int ownCount = g_mime_header_list_get_count(own);
    const int contentCount = content ? g_mime_header_list_get_count(content) : 0;

    QList<MimeHeader> headers;
    for (int i = 0, j = 0; i < ownCount || j < contentCount;) {
        GMimeHeader *header = nullptr;
        if (j == contentCount) {
            header = g_mime_header_list_get_header_at(own, i++);
        } else if (i == ownCount) {
            header = g_mime_header_list_get_header_at(content, j++);
        } else {
            GMimeHeader *mine = g_mime_header_list_get_header_at(own, i);
            GMimeHeader *its = g_mime_header_list_get_header_at(content, j);
            const gint64 mineAt = g_mime_header_get_offset(mine);
            const gint64 itsAt = g_mime_header_get_offset(its);
            const bool itsFirst = mineAt >= 0 && itsAt >= 0 && itsAt < mineAt;
            header = itsFirst ? its : mine;
            ++(itsFirst ? j : i);
        }
        if (const char *value = g_mime_header_get_value(header))
            headers.append({FromUtf8(g_mime_header_get_name(header)), FromUtf8(value)});
    }
    return headers;
}

QString MimeMail::Header(const QString &Name) const
{
    const QString name = Name.trimmed();
    for (const MimeHeader &header : Headers()) {
        if (header.Name.compare(name, Qt::CaseInsensitive) == 0)
            return header.Value;
    }
    return QString();
}

void MimeMail::AddHeader(const QString &Name, const QString &Value)
{
    const QString name = Name.trimmed();
    if (!name.isEmpty())
        g_mime_object_append_header(HeaderOwner(m_message, name), name.toUtf8().constData(),
                                    HeaderText(Value).constData(), "utf-8");
}

void MimeMail::SetHeader(const QString &Name, const QString &Value)
{
    const QString name = Name.trimmed();
    if (!name.isEmpty())
        g_mime_object_set_header(HeaderOwner(m_message, name), name.toUtf8().constData(),
                                 HeaderText(Value).constData(), "utf-8");
}

void MimeMail::RemoveHeader(const QString &Name)
{
    const QString name = Name.trimmed();
    GMimeObject *owner = HeaderOwner(m_message, name);
    while (g_mime_object_remove_header(owner, name.toUtf8().constData())) {
    }
}

QDateTime MimeMail::Date() const
{
    GDateTime *date = g_mime_message_get_date(m_message);
    if (!date)
        return QDateTime();
    const int offset = int(g_date_time_get_utc_offset(date) / G_TIME_SPAN_SECOND);
    return QDateTime::fromSecsSinceEpoch(g_date_time_to_unix(date), Qt::OffsetFromUTC, offset);
}

QString MimeMail::TextBody() const
{
    GMimePart *part = Collect(m_message).Text;
    return part ? DecodeText(DecodedContent(part), Charset(GMIME_OBJECT(part))) : QString();
}

QString MimeMail::TextCharset() const
{
    GMimePart *part = Collect(m_message).Text;
    return part ? Charset(GMIME_OBJECT(part)) : QString();
}

QString MimeMail::HtmlBody() const
{
    GMimePart *part = Collect(m_message).Html;
    return part ? DecodeText(DecodedContent(part), Charset(GMIME_OBJECT(part))) : QString();
}

QString MimeMail::HtmlCharset() const
{
    GMimePart *part = Collect(m_message).Html;
    return part ? Charset(GMIME_OBJECT(part)) : QString();
}

QList<MimeAttachment> MimeMail::Attachments() const
{
    QList<MimeAttachment> attachments;
    int number = 0;
    for (const MessageParts::Item &item : Collect(m_message).Attachments)
        attachments.append(MakeAttachment(item, ++number));
    return attachments;
}

void MimeMail::AddAttachment(const QString &Name, const QByteArray &Data, const QString &ContentType)
{
    const QString type = ContentType.trimmed().isEmpty() ? QStringLiteral("application/octet-stream") : ContentType;
    Owned<GMimePart> part(NewPart(Data, type));
    // A 7bit or quoted-printable part would have its line ends made CRLF
    // when the message is written.
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    Attach(part.get(), Name);
}

void MimeMail::AddTextAttachment(const QString &Name, const QString &Text)
{
    Owned<GMimePart> part(NewTextPart(Text, "plain"));
    Attach(part.get(), Name);
}

void MimeMail::Attach(GMimePart *Part, const QString &Name)
{
    g_mime_object_set_disposition(GMIME_OBJECT(Part), GMIME_DISPOSITION_ATTACHMENT);
    if (!Name.trimmed().isEmpty())
        g_mime_part_set_filename(Part, HeaderText(Name.trimmed()).constData());

    GMimeObject *top = g_mime_message_get_mime_part(m_message);
    if (top && GMIME_IS_MULTIPART(top)
        && g_mime_content_type_is_type(g_mime_object_get_content_type(top), "multipart", "mixed")) {
        g_mime_multipart_add(GMIME_MULTIPART(top), GMIME_OBJECT(Part));
        return;
    }
    Owned<GMimeMultipart> mixed(g_mime_multipart_new_with_subtype("mixed"));
    if (top)
        g_mime_multipart_add(mixed.get(), top);
    g_mime_multipart_add(mixed.get(), GMIME_OBJECT(Part));
    g_mime_message_set_mime_part(m_message, GMIME_OBJECT(mixed.get()));
}

void MimeMail::Compose(const QString &From, const QString &To, const QString &Subject, const QDateTime &Date,
                       const QString &Text, const QString &Html)
{
    GMimeMessage *message = g_mime_message_new(FALSE);
    AddAddresses(message, GMIME_ADDRESS_TYPE_FROM, From);
    AddAddresses(message, GMIME_ADDRESS_TYPE_TO, To);
    g_mime_message_set_subject(message, HeaderText(Subject).constData(), "utf-8");
    GDateTime *date = ToGDateTime(Date);
    g_mime_message_set_date(message, date);
    g_date_time_unref(date);

    QString domain = From.contains(u'@') ? From.section(u'@', -1).section(u'>', 0, 0).trimmed() : QString();
    if (domain.isEmpty())
        domain = QSysInfo::machineHostName();
    char *id = g_mime_utils_generate_message_id(domain.toUtf8().constData());
    g_mime_message_set_message_id(message, id);
    g_free(id);

    GMimeObject *body = nullptr;
    if (!Text.isEmpty() && !Html.isEmpty()) {
        GMimeMultipart *alternative = g_mime_multipart_new_with_subtype("alternative");
        Owned<GMimePart> plain(NewTextPart(Text, "plain"));
        Owned<GMimePart> html(NewTextPart(Html, "html"));
        g_mime_multipart_add(alternative, GMIME_OBJECT(plain.get()));
        g_mime_multipart_add(alternative, GMIME_OBJECT(html.get()));
        body = GMIME_OBJECT(alternative);
    } else {
        body = GMIME_OBJECT(Html.isEmpty() ? NewTextPart(Text, "plain") : NewTextPart(Html, "html"));
    }
    g_mime_message_set_mime_part(message, body);
    g_object_unref(body);
    Replace(message);
}
