#include "XlsxWorkbook.h"

#include <QFile>
#include <QXmlStreamReader>
#include <memory>
#include <unzip.h>

// Read with minizip, the zip library libxlsxwriter uses: QuaZip's copy of
// minizip exports the same names with other arguments, and in one process
// the Excel action's writes landed in it.
bool XlsxWorkbook::Entry(void *Zip, const QString &Name, QByteArray &Data)
{
    if (unzLocateFile(Zip, Name.toUtf8().constData(), 1) != UNZ_OK || unzOpenCurrentFile(Zip) != UNZ_OK)
        return false;
    Data.clear();
    char buffer[65536];
    int read = 0;
    while ((read = unzReadCurrentFile(Zip, buffer, sizeof buffer)) > 0)
        Data.append(buffer, read);
    return unzCloseCurrentFile(Zip) == UNZ_OK && read == 0;
}

QString XlsxWorkbook::SheetPart(void *Zip, const QString &WorkSheet, QString &Problem)
{
    QByteArray workbook, relations;
    if (!Entry(Zip, QStringLiteral("xl/workbook.xml"), workbook)
        || !Entry(Zip, QStringLiteral("xl/_rels/workbook.xml.rels"), relations)) {
        Problem = QStringLiteral("is a zip file but not an Excel workbook");
        return {};
    }
    QString relation;
    QStringList names;
    QXmlStreamReader book(workbook);
    while (!book.atEnd()) {
        book.readNext();
        if (!book.isStartElement() || book.name() != u"sheet")
            continue;
        const QString name = book.attributes().value(QStringLiteral("name")).toString();
        names << name;
        const bool wanted = WorkSheet.trimmed().isEmpty() ? names.size() == 1
                                                           : name.compare(WorkSheet.trimmed(), Qt::CaseInsensitive) == 0;
        if (!wanted)
            continue;
        for (const QXmlStreamAttribute &attribute : book.attributes()) {
            if (attribute.name() == u"id")
                relation = attribute.value().toString();
        }
        break;
    }
    if (relation.isEmpty()) {
        Problem = names.isEmpty() ? QStringLiteral("has no worksheet")
                                  : QStringLiteral("has no worksheet \"%1\" (it has \"%2\")")
                                        .arg(WorkSheet.trimmed(), names.join(QStringLiteral("\", \"")));
        return {};
    }
    QXmlStreamReader rels(relations);
    while (!rels.atEnd()) {
        rels.readNext();
        if (rels.isStartElement() && rels.name() == u"Relationship"
            && rels.attributes().value(QStringLiteral("Id")) == relation) {
            const QString target = rels.attributes().value(QStringLiteral("Target")).toString();
            return target.startsWith(u'/') ? target.mid(1) : QStringLiteral("xl/") + target;
        }
    }
    Problem = QStringLiteral("names a worksheet it does not hold");
    return {};
}

QStringList XlsxWorkbook::SharedStrings(const QByteArray &Xml)
{
    QStringList strings;
    QXmlStreamReader reader(Xml);
    QString current;
    int phonetic = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            if (reader.name() == u"si")
                current.clear();
            else if (reader.name() == u"rPh")
                ++phonetic;
            else if (reader.name() == u"t" && phonetic == 0)
                current += reader.readElementText();
        } else if (reader.isEndElement()) {
            if (reader.name() == u"si")
                strings << current;
            else if (reader.name() == u"rPh")
                --phonetic;
        }
    }
    return strings;
}

int XlsxWorkbook::Column(const QString &Reference)
{
    int column = 0;
    qsizetype i = 0;
    for (; i < Reference.size() && Reference.at(i).isLetter(); ++i)
        column = column * 26 + (Reference.at(i).toUpper().unicode() - u'A' + 1);
    return i == 0 ? -1 : column - 1;
}

SheetTable XlsxWorkbook::Rows(const QByteArray &Xml, const QStringList &Shared)
{
    SheetTable table;
    QXmlStreamReader reader(Xml);
    SheetTable::Row row;
    QString type, value;
    int column = -1;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            if (reader.name() == u"row") {
                const int number = reader.attributes().value(QStringLiteral("r")).toInt();
                row = {number > 0 ? number : row.Number + 1, {}};
            } else if (reader.name() == u"c") {
                const int at = Column(reader.attributes().value(QStringLiteral("r")).toString());
                column = at >= 0 ? at : int(row.Cells.size());
                type = reader.attributes().value(QStringLiteral("t")).toString();
                value.clear();
            } else if (reader.name() == u"v") {
                value = reader.readElementText();
            } else if (reader.name() == u"t" && type == u"inlineStr") {
                value += reader.readElementText();
            }
        } else if (reader.isEndElement()) {
            if (reader.name() == u"c") {
                if (type == u"s")
                    value = Shared.value(value.toInt());
                else if (type == u"b")
                    value = value == u"1" ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
                while (row.Cells.size() <= column)
                    row.Cells << QString();
                row.Cells[column] = value;
            } else if (reader.name() == u"row" && !SheetTable::Blank(row.Cells)) {
                table.Rows.append(row);
            }
        }
    }
    if (reader.hasError()) {
        table.Rows.clear();
        table.Problem = QStringLiteral("has a worksheet that cannot be read: ") + reader.errorString();
    }
    return table;
}

SheetTable XlsxWorkbook::Read(const QString &Path, const QString &WorkSheet)
{
    SheetTable table;
    const std::unique_ptr<void, int (*)(unzFile)> opened(unzOpen64(QFile::encodeName(Path).constData()), unzClose);
    void *zip = opened.get();
    if (!zip) {
        table.Problem = QStringLiteral("is not an Excel workbook (not a zip file)");
        return table;
    }
    const QString part = SheetPart(zip, WorkSheet, table.Problem);
    if (part.isEmpty())
        return table;
    QByteArray shared, sheet;
    Entry(zip, QStringLiteral("xl/sharedStrings.xml"), shared);
    if (!Entry(zip, part, sheet)) {
        table.Problem = QStringLiteral("lacks the worksheet's part %1").arg(part);
        return table;
    }
    return Rows(sheet, SharedStrings(shared));
}
