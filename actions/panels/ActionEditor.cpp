#include "ActionEditor.h"
#include "foundation/GlobalBlock.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>

void ActionEditor::WatchEdits()
{
    const auto raise = [this] { Dirty = true; };
    for (QLineEdit *edit : findChildren<QLineEdit *>())
        connect(edit, &QLineEdit::textEdited, this, raise);
    for (QPlainTextEdit *edit : findChildren<QPlainTextEdit *>())
        connect(edit, &QPlainTextEdit::textChanged, this, raise);
    for (QComboBox *combo : findChildren<QComboBox *>())
        connect(combo, &QComboBox::activated, this, raise);
    for (QCheckBox *check : findChildren<QCheckBox *>())
        connect(check, &QCheckBox::clicked, this, raise);
}

bool ActionEditor::Refuse(const QString &Text)
{
    QMessageBox::warning(this, Global.AppTitle, Text);
    return false;
}

void ActionEditor::ListVariables(QComboBox *Box, const QString &Current) const
{
    Box->clear();
    Box->setEditable(true);
    if (ThisTrigger && ThisTrigger->Parent)
        for (const QString &name : ThisTrigger->Parent->GlobalVarList().split(u',', Qt::SkipEmptyParts))
            Box->addItem(QString(name).remove(u'%'));
    Box->setEditText(Current);
}
