#include "MarkupDelegate.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QPainter>
#include <QTextDocument>
#include <QXmlStreamReader>

namespace {

// "#rrggbb" of a colour name or code; empty when it names none.
QString ColourCode(QStringView Name)
{
    const QColor colour = QColor::fromString(Name.trimmed());
    return colour.isValid() ? colour.name() : QString();
}

// "3" or "3,2,2,3": the first of the thicknesses given.
int FirstNumber(QStringView Value)
{
    return Value.split(u',').first().trimmed().toInt();
}

QString ColourStyle(const QXmlStreamAttributes &Attributes)
{
    QString style;
    const QString foreground = ColourCode(Attributes.value(QStringLiteral("Foreground")));
    if (!foreground.isEmpty())
        style += QStringLiteral("color:") + foreground + u';';
    if (Attributes.value(QStringLiteral("FontWeight")).compare(QStringLiteral("Bold"), Qt::CaseInsensitive) == 0)
        style += QStringLiteral("font-weight:bold;");
    const QString family = Attributes.value(QStringLiteral("TextBlock.FontFamily")).toString();
    if (!family.isEmpty())
        style += QStringLiteral("font-family:'") + family.toHtmlEscaped() + QStringLiteral("';");
    return style;
}

// An element with the style of its attributes.
QString Open(const char *Tag, const QXmlStreamAttributes &Attributes)
{
    const QString style = ColourStyle(Attributes);
    const QString tag = u'<' + QString::fromLatin1(Tag);
    return style.isEmpty() ? tag + u'>' : tag + QStringLiteral(" style=\"") + style + QStringLiteral("\">");
}

QString OpenBorder(const QXmlStreamAttributes &Attributes)
{
    const QString background = ColourCode(Attributes.value(QStringLiteral("Background")));
    const QString brush = ColourCode(Attributes.value(QStringLiteral("BorderBrush")));
    QString table = QStringLiteral("<table cellspacing=\"0\" cellpadding=\"%1\" border=\"%2\"")
                        .arg(FirstNumber(Attributes.value(QStringLiteral("Padding"))))
                        .arg(FirstNumber(Attributes.value(QStringLiteral("BorderThickness"))));
    if (!background.isEmpty())
        table += QStringLiteral(" bgcolor=\"") + background + u'"';
    table += QStringLiteral(" style=\"border-style:solid;");
    if (!brush.isEmpty())
        table += QStringLiteral("border-color:") + brush + u';';
    return table + QStringLiteral("\"><tr><td>");
}

// The opening and closing of one element of the markup.
QPair<QString, QString> ElementHtml(QStringView Name, const QXmlStreamAttributes &Attributes)
{
    if (Name == u"Run") {
        return {Open("span", Attributes) + Attributes.value(QStringLiteral("Text")).toString().toHtmlEscaped(),
                QStringLiteral("</span>")};
    }
    if (Name == u"Bold")
        return {QStringLiteral("<b>"), QStringLiteral("</b>")};
    if (Name == u"Italic")
        return {QStringLiteral("<i>"), QStringLiteral("</i>")};
    if (Name == u"LineBreak")
        return {QStringLiteral("<br/>"), QString()};
    if (Name == u"Border")
        return {OpenBorder(Attributes), QStringLiteral("</td></tr></table>")};
    if (Name == u"StackPanel")
        return {Open("div", Attributes), QStringLiteral("</div>")};
    return {Open("span", Attributes), QStringLiteral("</span>")}; // TextBlock and anything else: a span
}

} // namespace

MarkupDelegate::MarkupDelegate(QObject *parent) : QStyledItemDelegate(parent), m_html(2000) {}

QString MarkupDelegate::ToHtml(const QString &Markup)
{
    QXmlStreamReader reader(QStringLiteral("<Markup>") + Markup + QStringLiteral("</Markup>"));
    QString html = QStringLiteral("<div style=\"white-space:pre-wrap\">");
    QStringList closing;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (reader.name() != u"Markup") {
                const auto [open, close] = ElementHtml(reader.name(), reader.attributes());
                html += open;
                closing.append(close);
            }
            break;
        case QXmlStreamReader::EndElement:
            if (!closing.isEmpty())
                html += closing.takeLast();
            break;
        case QXmlStreamReader::Characters:
            html += reader.text().toString().toHtmlEscaped();
            break;
        default:
            break;
        }
    }
    if (reader.hasError())
        return QStringLiteral("<div style=\"white-space:pre-wrap\">") + Markup.toHtmlEscaped() + QStringLiteral("</div>");
    return html + QStringLiteral("</div>");
}

QString MarkupDelegate::PlainText(const QString &Markup)
{
    QTextDocument document;
    document.setHtml(ToHtml(Markup));
    return document.toPlainText();
}

void MarkupDelegate::Prepare(QTextDocument &Document, const QString &Markup, const QStyleOptionViewItem &Option) const
{
    QString *html = m_html.object(Markup);
    if (!html) {
        html = new QString(ToHtml(Markup));
        m_html.insert(Markup, html);
    }
    Document.setDocumentMargin(1);
    Document.setDefaultFont(Option.font);
    Document.setHtml(*html);
}

void MarkupDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QString markup = index.data(MarkupRole).toString();
    if (markup.isEmpty()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QWidget *widget = option.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    item.text.clear();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
    // The text stands behind the icon, if any, with the style's margins.
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &item, widget) + 1;
    const int icon = item.features.testFlag(QStyleOptionViewItem::HasDecoration) ? item.decorationSize.width() + margin : 0;
    const QRect area = option.rect.adjusted(margin + icon, 0, -margin, 0);

    QTextDocument document;
    Prepare(document, markup, option);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = option.palette;
    if (option.state & QStyle::State_Selected)
        context.palette.setColor(QPalette::Text, option.palette.color(QPalette::HighlightedText));
    painter->save();
    const int top = area.top() + qMax(0, (area.height() - int(document.size().height())) / 2);
    painter->translate(area.left(), top);
    painter->setClipRect(QRect(0, 0, area.width(), area.height()));
    document.documentLayout()->draw(painter, context);
    painter->restore();
}

QSize MarkupDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QString markup = index.data(MarkupRole).toString();
    if (markup.isEmpty())
        return QStyledItemDelegate::sizeHint(option, index);
    QTextDocument document;
    Prepare(document, markup, option);
    const QSize size = document.size().toSize();
    return QSize(size.width(), qMax(size.height(), QStyledItemDelegate::sizeHint(option, index).height()));
}
