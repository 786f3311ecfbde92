#include "frmPopup.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

frmPopup::frmPopup(const frmRemote::Popup &Popup, int Slot, QWidget *parent)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), Link(Popup.Link)
{
    setObjectName(QStringLiteral("frmPopup"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    QPalette colours = palette();
    colours.setColor(QPalette::Window, BackColour(Popup.Colour));
    colours.setColor(QPalette::WindowText, Qt::white);
    setPalette(colours);

    auto *layout = new QVBoxLayout(this);
    auto *title = new QLabel(Popup.Title, this);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto *text = new QLabel(Popup.Message, this);
    text->setWordWrap(true);
    text->setAlignment(Popup.Effect == 1 ? Qt::AlignCenter : Qt::AlignLeft | Qt::AlignVCenter);
    layout->addWidget(title);
    layout->addWidget(text, 1);
    setFixedSize(320, 100);
    if (!Link.isEmpty())
        setCursor(Qt::PointingHandCursor);

    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        move(area.right() - width() - 8, area.bottom() - (height() + 8) * (Slot + 1));
    }
    if (!Popup.Sticky)
        QTimer::singleShot(Popup.CloseAfter, this, &QWidget::close);
}

QColor frmPopup::BackColour(qint64 Colour)
{
    if (Colour < 0) // a system colour: the highlight, or the window frame for others
        return (Colour & 0xFF) == 13 ? QGuiApplication::palette().color(QPalette::Highlight)
                                     : QGuiApplication::palette().color(QPalette::Dark);
    return QColor(int(Colour & 0xFF), int((Colour >> 8) & 0xFF), int((Colour >> 16) & 0xFF));
}

void frmPopup::mouseReleaseEvent(QMouseEvent *)
{
    if (!Link.isEmpty())
        QDesktopServices::openUrl(QUrl(Link));
    close();
}

void frmPopup::closeEvent(QCloseEvent *event)
{
    emit Closed();
    QFrame::closeEvent(event);
}
