#pragma once
#include "store/MimeMail.h"

#include <QHash>
#include <QTextBrowser>

// The HTML view of the readers. A message's HTML is shown as it is, without
// script (the text browser runs none) and without anything from outside:
// images come only from the message's own parts by "cid:", every other
// resource (web addresses, local files) stays empty. A click on a link
// opens it in the desktop's browser.
class HtmlView : public QTextBrowser
{
    Q_OBJECT
public:
    explicit HtmlView(QWidget *parent = nullptr);

    // Shows the HTML with the parts its "cid:" addresses refer to.
    void ShowHtml(const QString &Html, const QList<MimeAttachment> &Parts = {});
    // The resources the page asked for that were refused, each once.
    QStringList Refused;

protected:
    QVariant loadResource(int Type, const QUrl &Name) override;

private:
    QHash<QString, QByteArray> m_parts; // by content ID, lower case
};
