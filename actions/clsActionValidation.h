#pragma once
#include "foundation/Formatting.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

class clsXML;

// Holds the message until a person confirms it on the server's validation
// page (the link may be mailed to them), or until MaxWaitFor minutes have
// passed; then TimeOutAction decides what becomes of it.
class clsActionValidation
{
public:
    // Under a new ID unless one is given: two days' wait, Yes and No buttons.
    explicit clsActionValidation(const QString &ActionID = NewUniqueID());

    QString ID;
    bool Enabled = true;
    QString Condition;
    bool SendEmail = false;
    QString MessageText;
    QString SendTo;
    QString FromAddress;
    QString Subject;
    qint32 MaxWaitFor = 2880; // minutes
    qint16 TimeOutAction = 0; // position in TimeOutNames
    QString ConfirmationHTML;
    bool ShowYesNoButtons = true;
    QString SurveyFieldsXML; // a "field" section per survey field

    QString ClassName() const { return QStringLiteral("Validation"); }
    QString ClassDesc() const { return QStringLiteral("Wait For Validation"); }
    QString ActionDescription() const;

    QString XML() const;
    void setXML(const QString &Fragment);
    // Reads the fragment from a reader of it, such as one nested in a
    // trigger's.
    void ReadXML(clsXML &Reader);

    // What happens at the time-out, in stored order.
    static QStringList TimeOutNames();
    // The texts an empty action is filled with when it is opened.
    static QString DefaultMessageText();
    static QString DefaultConfirmationHTML();
    static QString DefaultSubject();
    // The marker the body of a validation mail must hold.
    static QString URLMarker() { return QStringLiteral("%msg_validationurl%"); }

    // One survey field: asked on the validation page, its answer assigned to
    // a field or variable.
    struct SurveyField
    {
        QString Name;
        QString Type;
        QString AssignTo;
        QString Prompt;
    };
    static QList<SurveyField> ReadSurveyFields(const QString &SurveyFieldsXML);
    static QString WriteSurveyFields(const QList<SurveyField> &Fields);
};
