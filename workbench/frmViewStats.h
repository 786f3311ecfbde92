#pragma once
#include "ViewClient.h"

#include <QDate>
#include <QMap>
#include <QWidget>
#include <utility>

class QChart;
class QChartView;
class QComboBox;
class QLabel;

// The dashboard: the day summary of an account (or the account of a
// trigger) as a line chart over the days of a period, one line for the day
// counts or one for each token of a token type.
class frmViewStats : public QWidget
{
    Q_OBJECT
public:
    // One line of the chart: its name and a value for each day.
    using Series = QMap<QString, QMap<QDate, double>>;

    static QStringList PeriodNames();
    static std::pair<QDate, QDate> PeriodRange(int Index, const QDate &Today);
    // The data list's entries and the numbers they send.
    static QList<std::pair<QString, int>> Tokens();
    // Reads a "getdaysummary.xml" reply: "Lines" of "Line" with the day
    // (opened "Dated" or "Date", closed "Date"), an optional "Token" and a
    // "Value". Rows of the day counts go to a line named Name.
    static Series ReadSummary(const QString &Text, const QString &Name);

    explicit frmViewStats(QWidget *parent = nullptr);

    void ShowStats(const QString &AccountID);
    void LoadStats();
    // Draws the lines over the days of the period.
    void DrawChart(const Series &Lines);

    QString AccountID;
    QDate FromDate;
    QDate ToDate;
    Series Lines;
    ViewClient Client;
    QComboBox *cmboPeriod = nullptr;
    QComboBox *cmboToken = nullptr;
    QLabel *lblCaption = nullptr;
    QChartView *Chart = nullptr;

signals:
    void Loaded();
};
