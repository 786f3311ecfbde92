#include "clsActionCSV.h"
#include "FileActionRecord.h"

namespace {

const MarkupTag FileFormatTag = QStringLiteral("FileFormat");
const MarkupTag LineTerminatorTag = QStringLiteral("LineTerminator");

} // namespace

clsActionCSV::clsActionCSV(const QString &ActionID) : ID(ActionID) {}

QString clsActionCSV::ActionDescription() const
{
    return FileActionRecord::Description(*this);
}

QString clsActionCSV::XML() const
{
    return FileActionRecord::XML(*this, [this](clsXML &Writer) {
        Writer.Append(FileFormat, FileFormatTag.Name());
        Writer.Append(LineTerminator, LineTerminatorTag.Name());
    });
}

void clsActionCSV::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionCSV::ReadXML(clsXML &Reader)
{
    FileActionRecord::Read(Reader, *this, [this](clsXML &Own) {
        Own.Extract(FileFormat, FileFormatTag);
        Own.Extract(LineTerminator, LineTerminatorTag);
    });
}
