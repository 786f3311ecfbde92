#include "frmViewStats.h"
#include "foundation/clsXML.h"
#include "model/GlobalCollections.h"
#include "session/Requests.h"

#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QDateTimeAxis>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QRegularExpression>
#include <QValueAxis>
#include <QVBoxLayout>
#include <tuple>

namespace {

const QString DayFormat = QStringLiteral("yyyy-MM-dd");

} // namespace

QStringList frmViewStats::PeriodNames()
{
    return {QStringLiteral("This Month"), QStringLiteral("Last Month"), QStringLiteral("This Year"), QStringLiteral("Last Year")};
}

std::pair<QDate, QDate> frmViewStats::PeriodRange(int Index, const QDate &Today)
{
    const QDate firstOfMonth(Today.year(), Today.month(), 1);
    switch (Index) {
    case 1: return {firstOfMonth.addMonths(-1), firstOfMonth.addDays(-1)};
    case 2: return {QDate(Today.year(), 1, 1), Today};
    case 3: return {QDate(Today.year() - 1, 1, 1), QDate(Today.year() - 1, 12, 31)};
    default: return {firstOfMonth, Today};
    }
}

QList<std::pair<QString, int>> frmViewStats::Tokens()
{
    return {{QStringLiteral("Messages Processed"), 1000}, {QStringLiteral("Messages Sent"), 1001},
            {QStringLiteral("Bytes Received"), 1002},     {QStringLiteral("Sender Domain"), 1},
            {QStringLiteral("Sender Country"), 2},        {QStringLiteral("Attachment Type"), 3}};
}

frmViewStats::Series frmViewStats::ReadSummary(const QString &Text, const QString &Name)
{
    // The day is written "<Dated>...</Date>" in the token rows and
    // "<Date>...</Date>" in the count rows; the markup reader cannot pair
    // the first, so the day is taken by pattern.
    static const QRegularExpression day(QStringLiteral("<Dated?>([^<]*)</Date>"));
    Series lines;
    clsXML reply(Text);
    clsXML all;
    if (!reply.Extract(all, QStringLiteral("Lines")))
        return lines;
    clsXML line;
    while (all.ExtractItem(line, QStringLiteral("Line"))) {
        const QString raw = line.XML();
        const QDate dated = QDate::fromString(day.match(raw).captured(1).trimmed(), DayFormat);
        QString token;
        line.Extract(token, QStringLiteral("Token"));
        QString value;
        line.Extract(value, QStringLiteral("Value"));
        if (!dated.isValid())
            continue;
        lines[token.isEmpty() ? Name : token][dated] += value.toDouble();
    }
    return lines;
}

frmViewStats::frmViewStats(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("frmViewStats"));
    setAttribute(Qt::WA_DeleteOnClose);
    resize(900, 600);
    auto *layout = new QVBoxLayout(this);
    auto *top = new QHBoxLayout;
    lblCaption = new QLabel(this);
    QFont bold = lblCaption->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    lblCaption->setFont(bold);
    top->addWidget(lblCaption, 1);
    cmboPeriod = new QComboBox(this);
    cmboPeriod->addItems(PeriodNames());
    cmboToken = new QComboBox(this);
    for (const auto &[name, number] : Tokens())
        cmboToken->addItem(name, number);
    top->addWidget(cmboPeriod);
    top->addWidget(cmboToken);
    layout->addLayout(top);
    Chart = new QChartView(this);
    Chart->setRenderHint(QPainter::Antialiasing);
    layout->addWidget(Chart, 1);
    connect(cmboPeriod, &QComboBox::currentIndexChanged, this, &frmViewStats::LoadStats);
    connect(cmboToken, &QComboBox::currentIndexChanged, this, &frmViewStats::LoadStats);
    setToolTip(QStringLiteral("View the messages processed dashboard report for the selected Account or Trigger"));
}

void frmViewStats::ShowStats(const QString &Account)
{
    AccountID = Account;
    const clsAccount *account = Accounts().Item(Account);
    setWindowTitle(QStringLiteral("Dashboard") + (account ? QStringLiteral(" - ") + account->Name : QString()));
    LoadStats();
}

void frmViewStats::LoadStats()
{
    std::tie(FromDate, ToDate) = PeriodRange(cmboPeriod->currentIndex(), QDate::currentDate());
    const int number = cmboToken->currentData().toInt();
    const QString name = cmboToken->currentText();
    lblCaption->setText(name + QStringLiteral(": ") + cmboPeriod->currentText());
    Client.Drop();
    Client.Get(Requests::GetDaySummary(AccountID, FromDate.toString(DayFormat), ToDate.toString(DayFormat),
                                       QString::number(number)),
               [this, name](const ViewClient::Reply &Reply) {
                   Lines = ViewClient::Report(Reply) ? ReadSummary(Reply.Text, name) : Series();
                   DrawChart(Lines);
                   emit Loaded();
               });
}

void frmViewStats::DrawChart(const Series &Data)
{
    auto *chart = new QChart;
    chart->setTheme(QChart::ChartThemeLight);
    chart->legend()->setAlignment(Qt::AlignBottom);
    auto *days = new QDateTimeAxis;
    days->setFormat(FromDate.daysTo(ToDate) > 62 ? QStringLiteral("MMM") : QStringLiteral("d MMM"));
    days->setRange(FromDate.startOfDay(), ToDate.startOfDay());
    days->setTickCount(qMin(12, int(FromDate.daysTo(ToDate)) + 1));
    auto *values = new QValueAxis;
    values->setLabelFormat(QStringLiteral("%.0f"));
    chart->addAxis(days, Qt::AlignBottom);
    chart->addAxis(values, Qt::AlignLeft);
    double highest = 0;
    for (auto line = Data.begin(); line != Data.end(); ++line) {
        auto *series = new QLineSeries;
        series->setName(line.key());
        for (QDate day = FromDate; day <= ToDate; day = day.addDays(1)) {
            const double value = line->value(day);
            highest = qMax(highest, value);
            series->append(double(day.startOfDay().toMSecsSinceEpoch()), value);
        }
        chart->addSeries(series);
        series->attachAxis(days);
        series->attachAxis(values);
    }
    values->setRange(0, highest > 0 ? highest : 1);
    values->applyNiceNumbers();
    QChart *old = Chart->chart();
    Chart->setChart(chart);
    delete old;
}
