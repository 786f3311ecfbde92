#pragma once
#include "foundation/clsXML.h"

#include <QString>

// The fragment of a collection: a section holding, in order, the own
// fragment of each item that Keep accepts.
template <typename Items, typename Keep>
QString SectionOfItems(const Items &items, const QString &Section, Keep keep)
{
    clsXML writer;
    writer.XMLSectionStart(Section);
    for (const auto *item : items)
        if (keep(*item))
            writer.AppendXML(item->XML());
    writer.XMLSectionEnd(Section);
    return writer.GetXML();
}

// Hands a reader of each element ItemTag inside Section, in order, to Add;
// the readers share Section's text.
template <typename AddItem> void ForEachItemReader(clsXML &Section, const MarkupTag &ItemTag, AddItem add)
{
    clsXML item;
    while (Section.ExtractItem(item, ItemTag))
        add(item);
}

// Hands the text inside each element ItemTag of a collection's fragment, in
// order, to Add.
template <typename AddItem> void ForEachItemFragment(const QString &XML, const MarkupTag &ItemTag, AddItem add)
{
    clsXML reader(XML);
    QString fragment;
    while (reader.Extract(fragment, ItemTag, true))
        add(fragment);
}
