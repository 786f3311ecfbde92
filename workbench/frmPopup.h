#pragma once
#include "session/frmRemote.h"

#include <QFrame>

// A desktop popup: a frameless tool window at the bottom right of the
// screen, stacked above the ones already open. A non-sticky popup closes by
// itself. Clicking it opens its link, if any, with the default program.
class frmPopup : public QFrame
{
    Q_OBJECT
public:
    explicit frmPopup(const frmRemote::Popup &Popup, int Slot, QWidget *parent = nullptr);

    QString Link;

signals:
    void Closed();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    static QColor BackColour(qint64 Colour);
};
