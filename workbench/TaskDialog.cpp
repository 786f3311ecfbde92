#include "TaskDialog.h"
#include "foundation/GlobalBlock.h"

#include <QCheckBox>

QMessageBox::StandardButton ShowTaskDialog(QWidget *Parent, const QString &MainText, const QString &Content,
                                           const QString &Footer, QMessageBox::StandardButtons Buttons,
                                           const QString &VerifyText, bool *Verified)
{
    QMessageBox box(Parent);
    box.setObjectName(QStringLiteral("TaskDialog"));
    box.setWindowTitle(Global.AppTitle);
    box.setIcon(Buttons.testFlag(QMessageBox::Yes) ? QMessageBox::Question : QMessageBox::Information);
    box.setText(MainText);
    box.setInformativeText(Footer.isEmpty() ? Content : Content + QStringLiteral("\n\n") + Footer);
    box.setStandardButtons(Buttons);
    if (!VerifyText.isEmpty())
        box.setCheckBox(new QCheckBox(VerifyText, &box));
    const auto answer = QMessageBox::StandardButton(box.exec());
    if (Verified)
        *Verified = box.checkBox() && box.checkBox()->isChecked();
    return answer;
}
