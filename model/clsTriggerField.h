#pragma once
#include "foundation/ValueTypes.h"

#include <QString>
#include <QStringList>

class clsXML;

class clsAccountTrigger;

// One named value that a trigger extracts from a message: how to find the
// text, where it ends, how to clean it, its type, its validation, where it
// goes and which database column it fills.
class clsTriggerField
{
public:
    clsTriggerField();
    // With the ID given; a field about to be read takes none, as the read
    // sets it whether its tag is there or not.
    explicit clsTriggerField(QString ID);

    QString ID;
    QString Name;
    bool Enabled = true;
    bool ExtractBuiltIn = false;
    QString ExtractBuiltInField;
    bool CheckSubjectLine = false;
    qint16 StartFromLastExtractPoint = 1;
    QString LookFor;
    QString ThenLookFor;
    qint16 StartAfterLookFor = 0;
    bool CaseSensitive = false;
    bool Until_EndOfLine = true;
    bool Until_EndOfBody = false;
    bool Until_NextBlankLine = false;
    bool Until_AnyChars = false;
    bool Until_ThisMany = false;
    bool Until_TheseWords = false;
    bool Until_EndTag = false;
    QString UntilAnyOfTheseChars = QStringLiteral(" :;,!\"%&()_{}[]@~<>/`'");
    qint16 UntilThisManyChars = 5;
    QString UntilTheseWords;
    bool ExtractMask = false;
    bool TrimBlanks = true;
    qint16 RemoveFirstXChars = 0;
    qint16 RemoveLastXChars = 0;
    qint16 FieldType = 0;
    QString SBScriptExtract;
    bool SBScriptExtractEnabled = false;
    QString InsertInto;
    QString InsertFieldName;
    qint16 MaxLength = 0;
    bool EnvironmentVarSet = false;
    QString EnvironmentVarName;
    bool KeyExists = false;
    QString MapToOutLookContact;
    bool Lookup = false;
    QString LookupConnection;
    QString LookupSQL;
    QString LookupField;
    bool LookupCancelOnFail = false;
    QString DefaultValue;
    qint16 ChangeCase = 0;
    bool Validate = false;
    qint16 ValidateOption = 0;
    Currency ValidateLow;
    Currency ValidateHigh;
    QString ValidateList;
    qint16 ValidateAction = 0;
    bool Block = false;
    QString PassToTrigger;
    QString PassToSubject = QStringLiteral("%msg_subject%");
    QString PassToBody = QStringLiteral("%fieldvalue%");
    QString ClassName = QStringLiteral("Trigger.Field");
    clsAccountTrigger *Parent = nullptr;

    // The fragment. Reading replaces every property; an absent tag leaves
    // empty, zero or false, not the value of a new field.
    QString XML() const;
    void setXML(const QString &Value);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // The column of this field in a table of the internal database
    // (TriggerSQL.cpp): "[" + trimmed InsertFieldName + "]" and the type of
    // FieldType in brackets; an unknown FieldType gives no type.
    QString ColumnDefinition(int Dialect) const;
    // The column's line of a CREATE TABLE: four blanks, the definition, " ,"
    // and CR LF.
    QString FieldCreate(int Dialect) const;

    // Code tables: the stored code is the position in the list, so their
    // order is part of the format.
    static const QStringList FieldTypeLabels;
    static const QStringList FieldTypeColumns; // database column type per FieldType
    static const QStringList ChangeCaseLabels;
    static const QStringList ValidateOptionLabels;
    static const QStringList ValidateActionLabels;
};
