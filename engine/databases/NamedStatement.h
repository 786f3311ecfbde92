#pragma once
#include <QList>
#include <QString>
#include <QStringList>

// A statement whose values are named parameters ("@Name"), made ready for a
// Qt driver: each name outside quotes becomes a "?" and its name is listed in
// order, so that values are always bound, never pasted into the text.
class NamedStatement
{
public:
    QString Text;      // with "?" in place of the names
    QStringList Names; // in order of their places, without "@"

    static NamedStatement Parse(const QString &Statement);
    // The statements of a script: separated by an empty line or by ";" at a
    // line's end; comment lines ("-- ", "#") dropped. A part that is only a
    // comment stays as an empty statement, so that the parts of scripts
    // written one per table keep their places.
    static QList<NamedStatement> Split(const QString &Script);
    bool IsEmpty() const { return Text.trimmed().isEmpty(); }
};
