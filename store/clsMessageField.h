#pragma once
#include <QString>
#include <QtGlobal>

// One extracted value of a message, with where it goes: made for each field
// of the message's trigger when the trigger is bound.
class clsMessageField
{
public:
    QString Name;
    QString Value;
    QString InsertInto;  // database table
    QString InsertField; // database column
    QString EnvVar;
    QString OutlookContactField;
    bool KeyField = false;
    qint16 FieldType = 0;
    qint32 FieldLength = 0;
};
