#include "ExcelWorkbook.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>
#include <cstdio>
#include <memory>
#include <unzip.h>
#include <xlsxwriter.h>

namespace {

const char *const SheetEntry = "xl/worksheets/sheet1.xml";
constexpr int MaxColumns = 16384;
constexpr int MaxRows = 1048576;

// The bytes of one entry of the package; Found is false when it is not
// there or does not read.
QByteArray EntryBytes(void *Zip, const char *Name, bool *Found)
{
    *Found = unzLocateFile(Zip, Name, 1) == UNZ_OK && unzOpenCurrentFile(Zip) == UNZ_OK;
    if (!*Found)
        return QByteArray();
    QByteArray bytes;
    char buffer[65536];
    int read = 0;
    while ((read = unzReadCurrentFile(Zip, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, read);
    *Found = unzCloseCurrentFile(Zip) == UNZ_OK && read == 0;
    return bytes;
}

// The text of the element the reader stands on, with the texts of every <t>
// inside it (the runs of a rich text) joined.
QString InnerText(QXmlStreamReader &Xml)
{
    const QString end = Xml.name().toString();
    QString text;
    while (!Xml.atEnd() && Xml.readNext() != QXmlStreamReader::Invalid) {
        if (Xml.isEndElement() && Xml.name() == end)
            break;
        if (Xml.isStartElement() && Xml.name() == u"t")
            text += Xml.readElementText(QXmlStreamReader::IncludeChildElements);
    }
    return text;
}

} // namespace

int ExcelWorkbook::ColumnOf(const QString &Reference)
{
    int column = 0;
    for (const QChar c : Reference) {
        if (!c.isLetter())
            break;
        column = column * 26 + (c.toUpper().unicode() - u'A' + 1);
    }
    return column - 1;
}

bool ExcelWorkbook::Read(const QString &Path)
{
    Rows.clear();
    const std::unique_ptr<void, int (*)(unzFile)> zip(unzOpen64(QFile::encodeName(Path).constData()), unzClose);
    if (!zip) {
        LastError = QStringLiteral("the file is no workbook that can be read");
        return false;
    }
    QStringList strings;
    return ReadSheetNames(zip.get(), &SheetName) && ReadSharedStrings(zip.get(), &strings)
           && ReadSheet(zip.get(), SheetEntry, strings);
}

bool ExcelWorkbook::ReadSheetNames(void *Zip, QString *Sheet)
{
    bool found = false;
    QXmlStreamReader xml(EntryBytes(Zip, "xl/workbook.xml", &found));
    QStringList names;
    while (found && !xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"sheet")
            names << xml.attributes().value(QStringLiteral("name")).toString();
    if (!found || xml.hasError() || names.isEmpty()) {
        LastError = QStringLiteral("the workbook has no list of sheets");
        return false;
    }
    if (names.size() > 1) {
        LastError = QStringLiteral("the workbook has %1 sheets; only a workbook of one sheet can be extended").arg(names.size());
        return false;
    }
    *Sheet = names.first();
    return true;
}

bool ExcelWorkbook::ReadSharedStrings(void *Zip, QStringList *Strings)
{
    bool found = false;
    QXmlStreamReader xml(EntryBytes(Zip, "xl/sharedStrings.xml", &found));
    if (!found)
        return true; // a sheet of numbers and inline texts has none
    while (!xml.atEnd())
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == u"si")
            *Strings << InnerText(xml);
    if (xml.hasError()) {
        LastError = QStringLiteral("the shared strings of the workbook do not read: ") + xml.errorString();
        return false;
    }
    return true;
}

bool ExcelWorkbook::ReadSheet(void *Zip, const char *Entry, const QStringList &Strings)
{
    bool found = false;
    QXmlStreamReader xml(EntryBytes(Zip, Entry, &found));
    if (!found) {
        LastError = QStringLiteral("the workbook has no sheet ") + QString::fromLatin1(Entry);
        return false;
    }
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"row") {
            const int number = xml.attributes().value(QStringLiteral("r")).toInt();
            if (number > MaxRows) {
                LastError = QStringLiteral("the sheet has a row %1, beyond the last row a sheet can have").arg(number);
                return false;
            }
            const int last = qMax(number, int(Rows.size()) + 1); // a row without its number follows the one before
            while (Rows.size() < last)
                Rows << Row();
            continue;
        }
        if (xml.name() != u"c" || Rows.isEmpty())
            continue;
        const QString type = xml.attributes().value(QStringLiteral("t")).toString();
        const QString reference = xml.attributes().value(QStringLiteral("r")).toString();
        Row &row = Rows.last();
        const int column = reference.isEmpty() ? int(row.size()) : ColumnOf(reference);
        if (column < 0 || column >= MaxColumns) {
            LastError = QStringLiteral("the sheet has a cell at \"") + reference + QStringLiteral("\", outside any column");
            return false;
        }
        QString value;
        bool inlineText = false;
        while (!xml.atEnd() && xml.readNext() != QXmlStreamReader::Invalid
               && !(xml.isEndElement() && xml.name() == u"c")) {
            if (xml.isStartElement() && xml.name() == u"v")
                value = xml.readElementText();
            else if (xml.isStartElement() && xml.name() == u"is") {
                value = InnerText(xml);
                inlineText = true;
            }
        }
        while (row.size() <= column)
            row << QVariant();
        if (type == u"s")
            row[column] = Strings.value(value.toInt());
        else if (inlineText || type == u"str" || type == u"e")
            row[column] = value;
        else if (type == u"b")
            row[column] = value == u"1" ? 1.0 : 0.0;
        else if (!value.isEmpty())
            row[column] = value.toDouble();
    }
    if (xml.hasError()) {
        LastError = QStringLiteral("the sheet of the workbook does not read: ") + xml.errorString();
        return false;
    }
    return true;
}

bool ExcelWorkbook::Write(const QString &Path) const
{
    const QString folder = QFileInfo(Path).absolutePath();
    if (!QDir().mkpath(folder)) {
        LastError = QStringLiteral("the folder ") + folder + QStringLiteral(" cannot be made");
        return false;
    }
    const QByteArray written = QFile::encodeName(Path + QStringLiteral(".writing"));
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    lxw_workbook *workbook = workbook_new_opt(written.constData(), &options);
    lxw_worksheet *sheet = workbook ? workbook_add_worksheet(workbook, SheetName.toUtf8().constData()) : nullptr;
    if (!sheet) {
        LastError = QStringLiteral("the workbook cannot be made");
        if (workbook)
            workbook_close(workbook);
        QFile::remove(QFile::decodeName(written));
        return false;
    }
    lxw_error error = LXW_NO_ERROR;
    for (int r = 0; r < Rows.size() && error == LXW_NO_ERROR; ++r)
        for (int c = 0; c < Rows.at(r).size() && error == LXW_NO_ERROR; ++c) {
            const QVariant &cell = Rows.at(r).at(c);
            if (cell.typeId() == QMetaType::Double)
                error = worksheet_write_number(sheet, lxw_row_t(r), lxw_col_t(c), cell.toDouble(), nullptr);
            else if (cell.isValid() && !cell.toString().isEmpty())
                error = worksheet_write_string(sheet, lxw_row_t(r), lxw_col_t(c), cell.toString().toUtf8().constData(), nullptr);
        }
    const lxw_error closed = workbook_close(workbook);
    if (error == LXW_NO_ERROR)
        error = closed;
    if (error == LXW_NO_ERROR && std::rename(written.constData(), QFile::encodeName(Path).constData()) == 0)
        return true;
    LastError = error != LXW_NO_ERROR ? QString::fromUtf8(lxw_strerror(error))
                                      : QStringLiteral("the workbook cannot replace ") + Path;
    QFile::remove(QFile::decodeName(written));
    return false;
}
