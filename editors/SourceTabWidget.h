#pragma once
#include <QTabWidget>

// The tabs of the account editor: a tab whose kind of source is switched on
// shows its caption bold. Its markup, "<TextBlock><Bold>IMAP</Bold></TextBlock>"
// for a bold one and the plain caption otherwise, is what TabMarkup gives.
class SourceTabWidget : public QTabWidget
{
    Q_OBJECT
public:
    explicit SourceTabWidget(QWidget *parent = nullptr);

    void setTabBold(int Index, bool Bold);
    bool tabBold(int Index) const;
    QString TabMarkup(int Index) const;
};
