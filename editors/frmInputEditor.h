#pragma once
#include <QDialog>

class QsciScintilla;
class QPushButton;

// The SQL text editor: a statement edited with SQL colouring; OK keeps it.
class frmInputEditor : public QDialog
{
    Q_OBJECT
public:
    explicit frmInputEditor(QWidget *parent = nullptr);

    QsciScintilla *txtInput = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;

    QString text() const;
    void setText(const QString &Text);
};
