#pragma once
#include <QMessageBox>
#include <QString>

class QHBoxLayout;
class QPushButton;
class QWidget;

// The boxes of the editors: every text through the dictionary, with its key
// and the English default at the call site.

QString EditorText(const char *Key, const char *Default);
// A warning box with the product's name as title.
void WarningBox(QWidget *Parent, const QString &Text);
// A question with Yes and No, or with the buttons given; the button pressed.
QMessageBox::StandardButton QuestionBox(QWidget *Parent, const QString &Title, const QString &Text,
                                        QMessageBox::StandardButtons Buttons = QMessageBox::Yes | QMessageBox::No);

// A push button with its control name.
QPushButton *NamedButton(const QString &Caption, const char *Name, QWidget *Parent);
// The row of a dialog's closing buttons, on the right.
QHBoxLayout *ClosingButtons(QPushButton *OK, QPushButton *Cancel);
