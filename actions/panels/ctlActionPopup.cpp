#include "ctlActionPopup.h"
#include "actions/ActionItem.h"
#include "actions/clsActionPopup.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QColor>
#include <QColorDialog>
#include <QComboBox>
#include <QFormLayout>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {

// A stored colour number: an RGB value as 0x00BBGGRR, or a negative
// system colour, shown as the desktop's window colour.
QColor ColourOf(const QString &Number)
{
    const qint64 value = Number.toLongLong();
    if (value < 0)
        return QColor(QStringLiteral("#1e5aa0"));
    return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
}

QString NumberOf(const QColor &Colour)
{
    return QString::number(qint64(Colour.red()) | (qint64(Colour.green()) << 8) | (qint64(Colour.blue()) << 16));
}

} // namespace

ctlActionPopup::ctlActionPopup(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Popup"));
    txtMessage = new QPlainTextEdit(this);
    txtMessage->setMinimumWidth(320);
    txtMessage->setMaximumHeight(100);
    btnColour = new QPushButton(this);
    cmboStyle = new QComboBox(this);
    cmboStyle->addItems({EditorText("POPUPSTYLEMSN", "MSN Messenger"), EditorText("POPUPSTYLEOUTLOOK", "Outlook")});
    cmboFade = new QComboBox(this);
    cmboFade->addItems({EditorText("POPUPSCROLL", "Scroll"), EditorText("POPUPFADE", "Fade")});
    chkSticky = new QCheckBox(EditorText("POPUPSTICKY", "Leave The Popup Open Until It Is Closed"), this);
    connect(btnColour, &QPushButton::clicked, this, [this] {
        const QColor chosen = QColorDialog::getColor(ColourOf(m_colour), this);
        if (!chosen.isValid())
            return;
        m_colour = NumberOf(chosen);
        ShowColour();
        Dirty = true;
    });
    auto *form = new QFormLayout(this);
    form->addRow(EditorText("POPUPMESSAGE", "Message:"), txtMessage);
    form->addRow(EditorText("POPUPCOLOUR", "Colour:"), btnColour);
    form->addRow(EditorText("POPUPSTYLE", "Style:"), cmboStyle);
    form->addRow(EditorText("POPUPANIMATION", "Appears With:"), cmboFade);
    form->addRow(chkSticky);
    WatchEdits();
}

void ctlActionPopup::ShowColour()
{
    btnColour->setText(ColourOf(m_colour).name());
    btnColour->setStyleSheet(QStringLiteral("background-color: %1; color: white").arg(ColourOf(m_colour).name()));
}

void ctlActionPopup::Load()
{
    const auto *action = ThisAction->As<clsActionPopup>();
    txtMessage->setPlainText(action->PopupMessage);
    const QStringList style = action->PopupStyle.split(u'|');
    m_colour = style.value(0, QStringLiteral("-2147483635"));
    ShowColour();
    cmboStyle->setCurrentIndex(qBound(0, style.value(1).toInt(), 1));
    cmboFade->setCurrentIndex(qBound(0, style.value(2).toInt(), 1));
    chkSticky->setChecked(style.value(3).toInt() != 0);
    Dirty = false;
}

bool ctlActionPopup::Save()
{
    auto *action = ThisAction->As<clsActionPopup>();
    action->PopupMessage = txtMessage->toPlainText();
    action->PopupStyle = QStringList{m_colour, QString::number(cmboStyle->currentIndex()),
                                     QString::number(cmboFade->currentIndex()),
                                     chkSticky->isChecked() ? QStringLiteral("-1") : QStringLiteral("0")}
                             .join(u'|');
    return true;
}
