#pragma once
#include "ActionEditor.h"

class QCheckBox;
class QComboBox;
class QPlainTextEdit;
class QPushButton;

// A Popup action: the text, and how the popup looks: its colour, style,
// the way it appears, and whether it stays open.
class ctlActionPopup : public ActionEditor
{
    Q_OBJECT
public:
    explicit ctlActionPopup(QWidget *parent = nullptr);

    QPlainTextEdit *txtMessage = nullptr;
    QPushButton *btnColour = nullptr;
    QComboBox *cmboStyle = nullptr;
    QComboBox *cmboFade = nullptr;
    QCheckBox *chkSticky = nullptr;

    void Load() override;
    bool Save() override;

private:
    void ShowColour();
    QString m_colour; // the stored number of the background colour
};
