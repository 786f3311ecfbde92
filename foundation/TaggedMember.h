#pragma once
#include "ValueTypes.h"
#include "clsXML.h"

#include <QDateTime>
#include <QString>
#include <type_traits>
#include <variant>

// How one tag of a record is written and read: as a value of its member's
// type, enciphered (AppendPassword, read with the password flag), as a nested
// fragment (AppendXML, read raw), or as an identity that an absent tag leaves
// as it was.
enum class TagForm { Value, Password, Fragment, Identity };

// One tag of a record's fragment and the member behind it. Records list
// their tags in written order in one table, so that the reader, which only
// moves forward, and the writer cannot drift apart.
template <typename Record> struct TaggedMember
{
    MarkupTag Tag;
    std::variant<QString Record::*, bool Record::*, qint16 Record::*, qint32 Record::*, Currency Record::*,
                 QDateTime Record::*>
        Ref;
    TagForm How = TagForm::Value;
};

template <typename Record> void WriteTaggedMember(clsXML &writer, const Record &record, const TaggedMember<Record> &entry)
{
    std::visit(
        [&](auto member) {
            const auto &value = record.*member;
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(value)>, QString>) {
                if (entry.How == TagForm::Password)
                    writer.AppendPassword(value, entry.Tag.Name());
                else if (entry.How == TagForm::Fragment)
                    writer.AppendXML(value, entry.Tag.Name());
                else
                    writer.Append(value, entry.Tag.Name());
            } else {
                writer.Append(value, entry.Tag.Name());
            }
        },
        entry.Ref);
}

template <typename Record> void ReadTaggedMember(clsXML &reader, Record &record, const TaggedMember<Record> &entry)
{
    std::visit(
        [&](auto member) {
            auto &target = record.*member;
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(target)>, QString>) {
                if (entry.How == TagForm::Identity) {
                    QString value;
                    if (reader.Extract(value, entry.Tag))
                        target = value;
                } else {
                    reader.Extract(target, entry.Tag, entry.How == TagForm::Fragment, entry.How == TagForm::Password);
                }
            } else {
                reader.Extract(target, entry.Tag);
            }
        },
        entry.Ref);
}
