#include "TestRegistry.h"
#include "model/Condition.h"
#include "workbench/MarkupDelegate.h"

#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

namespace {

// The cell of one markup text painted on white.
QImage Paint(const QString &Markup, const QString &Plain = QString(), QSize Size = QSize(420, 40))
{
    QStandardItemModel model(1, 1);
    model.setData(model.index(0, 0), Plain);
    model.setData(model.index(0, 0), Markup, MarkupDelegate::MarkupRole);
    QTreeView view;
    MarkupDelegate delegate;
    QStyleOptionViewItem option;
    option.initFrom(&view);
    option.rect = QRect(QPoint(0, 0), Size);
    option.state &= ~QStyle::State_Selected;
    option.widget = &view;
    QImage image(Size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    delegate.paint(&painter, option, model.index(0, 0));
    return image;
}

int Count(const QImage &Image, const std::function<bool(QColor)> &Test)
{
    int count = 0;
    for (int y = 0; y < Image.height(); ++y)
        for (int x = 0; x < Image.width(); ++x)
            count += Test(Image.pixelColor(x, y)) ? 1 : 0;
    return count;
}

bool Reddish(QColor Colour)
{
    return Colour.red() > 100 && Colour.green() < 50 && Colour.blue() < 50;
}

bool Bluish(QColor Colour)
{
    return Colour.blue() > 120 && Colour.red() < 60 && Colour.green() < 60;
}

} // namespace

// The one renderer of the console's layout markup in list cells.
class tst_MarkupDelegate : public QObject
{
    Q_OBJECT
private slots:
    void runsShowTheirTextOnce()
    {
        QCOMPARE(MarkupDelegate::PlainText(QStringLiteral("<TextBlock VerticalAlignment='Center'><Bold>Set </Bold>"
                                                          "<Run Foreground='MediumBlue' Text='a &apos;b&apos; &amp; &lt;c&gt;'/>"
                                                          " tail</TextBlock>")),
                 QStringLiteral("Set a 'b' & <c> tail"));
        // The condition of the condition language, as the lists show it.
        const QString condition = ConditionDisplay(
            QStringLiteral("<Lines><Line>|%msg_subject%|len&gt;|5</Line><Line>Or|%from%|?|x</Line></Lines>"), true, true);
        QCOMPARE(MarkupDelegate::PlainText(condition), QStringLiteral("If Len(%msg_subject%) >  5 Or %from% Contains x Then "));
        // Blanks at the edges of runs stay.
        QCOMPARE(MarkupDelegate::PlainText(QStringLiteral("<Run Text='If '/><Run Text='  x'/>")), QStringLiteral("If   x"));
    }

    void textThatIsNoMarkupShowsAsTyped()
    {
        QCOMPARE(MarkupDelegate::PlainText(QStringLiteral("a < b & <Run")), QStringLiteral("a < b & <Run"));
        QCOMPARE(MarkupDelegate::PlainText(QStringLiteral("<TextBlock>open")), QStringLiteral("<TextBlock>open"));
    }

    void coloursBoldAndBordersArePainted()
    {
        const QImage red = Paint(QStringLiteral("<Run Foreground='DarkRed' Text='Keyword Keyword'/>"));
        const QImage blue = Paint(QStringLiteral("<Run Foreground='MediumBlue' Text='Keyword Keyword'/>"));
    QVERIFY(Count(red, Reddish) > 20);
        QCOMPARE(Count(red, Bluish), 0);
        QVERIFY(Count(blue, Bluish) > 20);

        // Bold text covers more of the cell than the same text plain.
        auto ink = [](QColor colour) { return colour.lightness() < 128; };
        const int plain = Count(Paint(QStringLiteral("<Run Text='Weight Weight Weight'/>")), ink);
        const int bold = Count(Paint(QStringLiteral("<Bold><Run Text='Weight Weight Weight'/></Bold>")), ink);
        QVERIFY2(bold > plain * 11 / 10, qPrintable(QStringLiteral("%1 %2").arg(bold).arg(plain)));

        // A border's background fills behind its text.
        const QImage bordered = Paint(QStringLiteral("<Border Padding='3' BorderThickness='1' BorderBrush='#9a9da1' "
                                                     "Background='#e4ecf7'><StackPanel><TextBlock>Inside</TextBlock>"
                                                     "</StackPanel></Border>"));
        QVERIFY(Count(bordered, [](QColor colour) { return colour == QColor(0xe4, 0xec, 0xf7); }) > 100);
    }

    void plainCellsAreLeftToTheStyle()
    {
        const QImage image = Paint(QString(), QStringLiteral("<Run Foreground='DarkRed' Text='x'/>"));
        QCOMPARE(Count(image, Reddish), 0);
        QVERIFY(Count(image, [](QColor colour) { return colour.lightness() < 128; }) > 50);
    }
};

POSTVANE_TEST(tst_MarkupDelegate)
#include "tst_MarkupDelegate.moc"
