#include "SourceTabWidget.h"

#include <QStyleOptionTab>
#include <QStylePainter>
#include <QTabBar>

namespace {

// Paints the tabs marked bold in a bold font, and makes room for it.
class BoldTabBar : public QTabBar
{
public:
    using QTabBar::QTabBar;

protected:
    QSize tabSizeHint(int Index) const override
    {
        QSize size = QTabBar::tabSizeHint(Index);
        if (tabData(Index).toBool())
            size.rwidth() += QFontMetrics(BoldFont()).horizontalAdvance(tabText(Index)) -
                             fontMetrics().horizontalAdvance(tabText(Index));
        return size;
    }

    void paintEvent(QPaintEvent *) override
    {
        QStylePainter painter(this);
        for (int i = 0; i < count(); ++i) {
            QStyleOptionTab option;
            initStyleOption(&option, i);
            painter.setFont(tabData(i).toBool() ? BoldFont() : font());
            painter.drawControl(QStyle::CE_TabBarTab, option);
        }
    }

private:
    QFont BoldFont() const
    {
        QFont bold = font();
        bold.setBold(true);
        return bold;
    }
};

} // namespace

SourceTabWidget::SourceTabWidget(QWidget *parent) : QTabWidget(parent)
{
    setTabBar(new BoldTabBar(this));
}

void SourceTabWidget::setTabBold(int Index, bool Bold)
{
    if (tabBar()->tabData(Index).toBool() == Bold)
        return;
    tabBar()->setTabData(Index, Bold);
    // The width of a tab changes with its font.
    tabBar()->setTabText(Index, tabBar()->tabText(Index));
    tabBar()->update();
}

bool SourceTabWidget::tabBold(int Index) const
{
    return tabBar()->tabData(Index).toBool();
}

QString SourceTabWidget::TabMarkup(int Index) const
{
    const QString caption = tabText(Index).toHtmlEscaped();
    return tabBold(Index) ? QStringLiteral("<TextBlock><Bold>") + caption + QStringLiteral("</Bold></TextBlock>")
                          : caption;
}
