#include "clsMessageAttachment.h"

#include <QFile>

QString clsMessageAttachment::FileNameWithoutExtension() const
{
    const qsizetype dot = Name.lastIndexOf(u'.');
    return dot < 0 ? Name : Name.left(dot);
}

QString clsMessageAttachment::FileExtension() const
{
    const qsizetype dot = Name.lastIndexOf(u'.');
    return dot < 0 ? QString() : Name.mid(dot + 1);
}

QByteArray clsMessageAttachment::Data() const
{
    QFile file(SavedTo);
    if (SavedTo.isEmpty() || !file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}
