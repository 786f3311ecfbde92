// The field editor's live preview on a sample message of 1 MB: a repeating
// block field over order lines, and a field behind all of them. Each change
// of the look-for text runs the extraction again and selects the first value;
// prints the time from the change until the preview shows it (median and
// worst of the runs), with the number of values found.
//
// Runs offscreen: QT_QPA_PLATFORM=offscreen build/bin/bench_fieldpreview [runs]
#include "editors/frmField.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QCheckBox>
#include <QRadioButton>
#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Order lines until the text reaches Size characters, and a total at the end.
QString SampleMessage(qsizetype Size)
{
    QString text = QStringLiteral("Order Number: 4711\r\nCustomer: Jane Roe\r\n");
    for (int line = 1; text.size() < Size; ++line)
        text += QStringLiteral("<item>Article %1, quantity %2, price %3.50 EUR</item>\r\n")
                    .arg(line, 6, 10, QLatin1Char('0'))
                    .arg(line % 7 + 1)
                    .arg(line % 90 + 10);
    return text + QStringLiteral("Total: 129.50 EUR\r\n");
}

struct Figures
{
    double Median = 0;
    double Worst = 0;
    int Values = 0;
};

// Times the preview after each change that LookFor and Alternate make in turn.
Figures Time(frmField &Editor, const QString &LookFor, const QString &Alternate, int Runs)
{
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        QElapsedTimer clock;
        clock.start();
        Editor.txtLookFor->setText(run % 2 ? Alternate : LookFor);
        QApplication::processEvents();
        times.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times.back(), int(Editor.Found.size())};
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(2, atoi(argv[1])) : 20;
    clsAccountTrigger trigger;
    trigger.HelperMessage = SampleMessage(1024 * 1024);
    trigger.HelperSubject = QStringLiteral("Order 4711");
    std::printf("sample message: %lld characters, %d runs each\n", qlonglong(trigger.HelperMessage.size()), runs);

    {
        clsTriggerField probe;
        probe.LookFor = QStringLiteral("<item>");
        probe.Until_EndOfLine = false;
        probe.Until_EndTag = true;
        probe.Block = true;
        clsFieldExtractor extractor;
        extractor.Body = trigger.HelperMessage.replace(QStringLiteral("\r\n"), QStringLiteral("\r\n"));
        QElapsedTimer clock;
        clock.start();
        const auto found = extractor.Preview(trigger.FieldsToProcess(), probe);
        std::printf("extraction alone, repeating block (%lld values): %.1f ms\n", qlonglong(found.size()),
                    double(clock.nsecsElapsed()) / 1e6);
    }

    clsTriggerField block;
    frmField blockEditor(trigger, block, true);
    blockEditor.show();
    blockEditor.optUntil.at(6)->setChecked(true); // until the end tag
    blockEditor.chkBlock->setChecked(true);
    const Figures blocks = Time(blockEditor, QStringLiteral("<item>"), QStringLiteral("<ITEM>"), runs);
    std::printf("repeating block field (%d values): median %.1f ms, worst %.1f ms after a change\n", blocks.Values,
                blocks.Median, blocks.Worst);

    clsTriggerField last;
    frmField lastEditor(trigger, last, true);
    lastEditor.show();
    const Figures single = Time(lastEditor, QStringLiteral("Total: "), QStringLiteral("Total:"), runs);
    std::printf("field at the end of the message (%d value): median %.1f ms, worst %.1f ms after a change\n",
                single.Values, single.Median, single.Worst);
    return 0;
}
