#include "frmInputEditor.h"
#include "EditorBoxes.h"

#include <Qsci/qscilexersql.h>
#include <Qsci/qsciscintilla.h>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

frmInputEditor::frmInputEditor(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmInputEditor"));
    setWindowTitle(EditorText("SQLSTATEMENT", "SQL Statement"));
    txtInput = new QsciScintilla(this);
    auto *lexer = new QsciLexerSQL(txtInput);
    lexer->setDefaultFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    lexer->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtInput->setLexer(lexer);
    txtInput->setUtf8(true);
    txtInput->setMarginType(0, QsciScintilla::NumberMargin);
    txtInput->setMarginWidth(0, QStringLiteral("0000"));
    txtInput->setWrapMode(QsciScintilla::WrapWord);
    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    connect(btnOK, &QPushButton::clicked, this, &QDialog::accept);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(txtInput);
    layout->addLayout(buttons);
    resize(640, 420);
}

QString frmInputEditor::text() const
{
    return txtInput->text();
}

void frmInputEditor::setText(const QString &Text)
{
    txtInput->setText(Text);
}
