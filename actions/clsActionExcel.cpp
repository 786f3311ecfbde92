#include "clsActionExcel.h"
#include "FileActionRecord.h"

clsActionExcel::clsActionExcel(const QString &ActionID) : ID(ActionID) {}

QString clsActionExcel::ActionDescription() const
{
    return FileActionRecord::Description(*this);
}

QString clsActionExcel::XML() const
{
    return FileActionRecord::XML(*this, [](clsXML &) {});
}

void clsActionExcel::setXML(const QString &Fragment)
{
    clsXML reader(Fragment);
    ReadXML(reader);
}

void clsActionExcel::ReadXML(clsXML &Reader)
{
    FileActionRecord::Read(Reader, *this, [](clsXML &) {});
}
