#pragma once
#include <QCache>
#include <QStyledItemDelegate>

class QTextDocument;

// Paints list cells that hold the console's layout markup: TextBlock, Run
// (Foreground, Text, FontWeight), Bold, Italic, LineBreak, Border
// (Background, BorderBrush, BorderThickness, Padding) and StackPanel. A cell
// shows markup only when its model gives it under MarkupRole; its display
// text is painted as plain text, so a name with "<" or "&" shows as typed.
class MarkupDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    static constexpr int MarkupRole = Qt::UserRole + 40;

    explicit MarkupDelegate(QObject *parent = nullptr);

    // The markup as rich text of a QTextDocument; text that does not read as
    // markup is shown as it stands.
    static QString ToHtml(const QString &Markup);
    // What the markup shows, without its layout.
    static QString PlainText(const QString &Markup);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    // The document of a markup text, laid out in the cell's font.
    void Prepare(QTextDocument &Document, const QString &Markup, const QStyleOptionViewItem &Option) const;

    mutable QCache<QString, QString> m_html;
};
