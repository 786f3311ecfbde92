#pragma once
#include <QByteArray>
#include <QString>
#include <QtGlobal>

// One attachment or related (inline) item of a message, and where its file
// was saved.
class clsMessageAttachment
{
public:
    QString Name;
    QString ContentType;
    QString Location;
    QString SavedTo; // path of the saved file; empty while not saved
    qint32 Size = 0;
    bool IsAttachedMessage = false;
    bool IsRelatedItem = false;
    QString RelatedContentID;

    // Name before its last "."; the whole name when it has none.
    QString FileNameWithoutExtension() const;
    // Name behind its last "."; empty when it has none.
    QString FileExtension() const;
    // The whole file at SavedTo; empty when it cannot be read.
    QByteArray Data() const;
};
