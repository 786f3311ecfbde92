#pragma once
#include "clsMessageAttachment.h"
#include "foundation/KeyedCollection.h"

#include <QString>
#include <memory>

// The attachments, or the related items, of a message in their order.
class colMSGAttachments
{
public:
    // Appends the attachment and returns it.
    clsMessageAttachment *Add(std::unique_ptr<clsMessageAttachment> NewAttachment =
                                  std::make_unique<clsMessageAttachment>());
    int Count() const { return m_items.Count(); }
    bool Delete(int Index) { return m_items.Delete(Index); }
    // 1-based; nullptr when there is none.
    clsMessageAttachment *Item(int Index) const { return m_items.Item(Index); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

    // 1-based position of the attachment named so, 0 when there is none.
    // The name is split at its first "." and the two halves are compared
    // with each attachment's FileNameWithoutExtension and FileExtension, so
    // "a.b.txt" is never found.
    int AttachmentNoFromName(const QString &Name) const;
    // "a.pdf (3 K),b.txt (12 Bytes)"; empty without attachments.
    QString List() const;

private:
    KeyedCollection<clsMessageAttachment> m_items;
};
