#include "HtmlView.h"

#include <QDesktopServices>
#include <QImage>
#include <QTextDocument>
#include <QUrl>

HtmlView::HtmlView(QWidget *parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    setOpenExternalLinks(false);
    connect(this, &QTextBrowser::anchorClicked, this, [](const QUrl &Link) {
        const QString scheme = Link.scheme().toLower();
        if (scheme == u"http" || scheme == u"https" || scheme == u"mailto")
            QDesktopServices::openUrl(Link);
    });
}

void HtmlView::ShowHtml(const QString &Html, const QList<MimeAttachment> &Parts)
{
    m_parts.clear();
    Refused.clear();
    for (const MimeAttachment &part : Parts) {
        if (!part.ContentID.isEmpty())
            m_parts.insert(part.ContentID.toLower(), part.Data);
    }
    // A new document drops the images of the last message.
    document()->clear();
    setHtml(Html.isEmpty() ? QStringLiteral("<html><body></body></html>") : Html);
}

QVariant HtmlView::loadResource(int Type, const QUrl &Name)
{
    if (Name.scheme().compare(QStringLiteral("cid"), Qt::CaseInsensitive) == 0) {
        QString id = QUrl::fromPercentEncoding(Name.path().toUtf8());
        if (id.startsWith(u'<') && id.endsWith(u'>'))
            id = id.mid(1, id.size() - 2);
        const auto part = m_parts.constFind(id.toLower());
        if (part != m_parts.constEnd()) {
            if (Type == QTextDocument::ImageResource)
                return QVariant::fromValue(QImage::fromData(*part));
            return *part;
        }
    }
    if (!Refused.contains(Name.toString()))
        Refused << Name.toString();
    return QVariant();
}
