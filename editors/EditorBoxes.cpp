#include "EditorBoxes.h"
#include "foundation/GlobalBlock.h"
#include "foundation/cDDict.h"

#include <QHBoxLayout>
#include <QPushButton>

QString EditorText(const char *Key, const char *Default)
{
    return DDict().GetString(QString::fromLatin1(Key), QString::fromUtf8(Default));
}

void WarningBox(QWidget *Parent, const QString &Text)
{
    QMessageBox::warning(Parent, Global.AppTitle, Text);
}

QMessageBox::StandardButton QuestionBox(QWidget *Parent, const QString &Title, const QString &Text,
                                        QMessageBox::StandardButtons Buttons)
{
    QMessageBox box(QMessageBox::Question, Title.isEmpty() ? Global.AppTitle : Title, Text, Buttons, Parent);
    return QMessageBox::StandardButton(box.exec());
}

QPushButton *NamedButton(const QString &Caption, const char *Name, QWidget *Parent)
{
    auto *button = new QPushButton(Caption, Parent);
    button->setObjectName(QString::fromLatin1(Name));
    return button;
}

QHBoxLayout *ClosingButtons(QPushButton *OK, QPushButton *Cancel)
{
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(OK);
    buttons->addWidget(Cancel);
    return buttons;
}
