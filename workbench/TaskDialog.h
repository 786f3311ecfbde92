#pragma once
#include <QMessageBox>
#include <QString>

class QWidget;

// The console's task dialog: a main instruction, a content text and a
// footer, with an optional verification box. VerifyText empty shows none;
// Verified receives its state.
QMessageBox::StandardButton ShowTaskDialog(QWidget *Parent, const QString &MainText, const QString &Content,
                                           const QString &Footer = QString(),
                                           QMessageBox::StandardButtons Buttons = QMessageBox::Ok,
                                           const QString &VerifyText = QString(), bool *Verified = nullptr);
