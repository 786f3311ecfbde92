#include "colMSGAttachments.h"
#include "foundation/Formatting.h"

#include <QStringList>

clsMessageAttachment *colMSGAttachments::Add(std::unique_ptr<clsMessageAttachment> NewAttachment)
{
    return NewAttachment ? m_items.Add(std::move(NewAttachment)) : nullptr;
}

int colMSGAttachments::AttachmentNoFromName(const QString &Name) const
{
    const qsizetype dot = Name.indexOf(u'.');
    const QString base = dot < 0 ? Name : Name.left(dot);
    const QString extension = dot < 0 ? QString() : Name.mid(dot + 1);
    return m_items.FirstIndex([&](const clsMessageAttachment &attachment) {
        return attachment.FileNameWithoutExtension() == base && attachment.FileExtension() == extension;
    });
}

QString colMSGAttachments::List() const
{
    QStringList items;
    for (const clsMessageAttachment *attachment : m_items)
        items << attachment->Name + QStringLiteral(" (") + FormatBytes(attachment->Size) + u')';
    return items.join(u',');
}
