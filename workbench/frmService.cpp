#include "frmService.h"
#include "foundation/GlobalBlock.h"
#include "foundation/cDDict.h"
#include "foundation/clsXML.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

const QString StampFormat = QStringLiteral("yyyy-MM-dd:hh:mm:ss");

// The time stamp at the head of a log line; invalid when the line has none.
QDateTime LineStamp(const QByteArray &Line)
{
    return QDateTime::fromString(QString::fromLatin1(Line.left(19)), StampFormat);
}

QString LineText(const QByteArray &Line)
{
    QByteArray text = Line;
    while (text.endsWith('\n') || text.endsWith('\r'))
        text.chop(1);
    return QString::fromUtf8(text);
}

} // namespace

frmService::frmService(const QString &Title, const QString &LogName, QWidget *parent)
    : QWidget(parent), Title(Title), LogName(LogName), GridSVC(new QTableWidget(0, 3, this))
{
    setObjectName(QStringLiteral("frmService"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(GridSVC);
    GridSVC->setObjectName(QStringLiteral("GridSVC"));
    GridSVC->setEditTriggers(QAbstractItemView::NoEditTriggers);
    GridSVC->setSelectionBehavior(QAbstractItemView::SelectRows);
    GridSVC->setSelectionMode(QAbstractItemView::ExtendedSelection);
    GridSVC->setShowGrid(false);
    GridSVC->setWordWrap(false);
    GridSVC->verticalHeader()->hide();
    GridSVC->verticalHeader()->setDefaultSectionSize(GridSVC->fontMetrics().height() + 4);
    GridSVC->setHorizontalHeaderLabels({DDict().GetCaption(objectName(), QStringLiteral("COLTIME"), QStringLiteral("Time")),
                                        DDict().GetCaption(objectName(), QStringLiteral("COLSOURCE"), QStringLiteral("Source")),
                                        DDict().GetCaption(objectName(), QStringLiteral("COLTEXT"), QStringLiteral("Message"))});
    GridSVC->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(GridSVC, &QWidget::customContextMenuRequested, this, &frmService::ShowMenu);
    ResizeGrid();

    LogTimer.setInterval(LogInterval);
    connect(&LogTimer, &QTimer::timeout, this, &frmService::ReadLog);
    RemoteTimer.setSingleShot(true);
    RemoteTimer.setInterval(RemoteInterval);
    connect(&RemoteTimer, &QTimer::timeout, this, &frmService::Repaint);
}

void frmService::ShowLog(const QString &Name)
{
    LogName = Name;
    LogFile = Global.DataPath + Name;
    m_firstTick = true;
    LogTimer.start();
}

void frmService::SetRemote()
{
    LogTimer.stop();
    LogFile.clear();
}

void frmService::ClearLog()
{
    if (Following()) {
        Position = 0;
        GridSVC->setRowCount(0);
    } else {
        NeedsReload = true;
    }
}

qint64 frmService::StartPosition(const QString &FileName, const QDateTime &From)
{
    QFile file(FileName);
    if (!file.open(QIODevice::ReadOnly) || file.size() < WholeFileBytes)
        return 0;
    // Log lines are in time order: bisect the byte offsets down to a few
    // lines, so that a long log is not read whole, then walk line by line.
    constexpr qint64 Near = 4096;
    qint64 low = 0; // always the start of a line
    qint64 high = file.size();
    while (high - low > Near) {
        const qint64 middle = (low + high) / 2;
        file.seek(middle);
        file.readLine(); // the rest of the line cut by the seek
        QDateTime stamp;
        while (!file.atEnd() && file.pos() < high && !(stamp = LineStamp(file.readLine())).isValid()) {
        }
        if (stamp.isValid() && stamp < From)
            low = file.pos();
        else
            high = middle;
    }
    file.seek(low);
    while (!file.atEnd()) {
        const qint64 start = file.pos();
        const QDateTime stamp = LineStamp(file.readLine());
        if (stamp.isValid() && stamp >= From)
            return start;
    }
    return file.size();
}

void frmService::ReadLog()
{
    if (m_firstTick) {
        if (!QFile::exists(LogFile))
            return;
        Position = StartPosition(LogFile, QDateTime(QDate::currentDate(), QTime(0, 0)));
        m_firstTick = false;
    }
    QFile file(LogFile);
    if (!file.open(QIODevice::ReadOnly))
        return;
    if (file.size() < Position) // the server started a new file
        Position = 0;
    file.seek(Position);
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (!line.endsWith('\n')) // still being written
            break;
        Position = file.pos();
        const QString text = LineText(line);
        if (!text.trimmed().isEmpty())
            AddLine(text);
    }
}

void frmService::AddRemoteLog(const QString &Fragment)
{
    if (!LogFile.isEmpty())
        return; // the file being followed carries the same line
    clsXML xml(Fragment);
    QString stamp;
    QString message;
    xml.Extract(stamp, QStringLiteral("TimeStamp"));
    xml.Extract(message, QStringLiteral("Msg"));
    QDateTime time = QDateTime::fromString(stamp, StampFormat);
    if (!time.isValid())
        time = QDateTime::fromString(stamp, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    if (!time.isValid())
        time = QDateTime::fromString(stamp, Qt::ISODate);
    // Bursts of lines are painted once, at the timer's tick.
    GridSVC->setUpdatesEnabled(false);
    AddLine(time.toString(StampFormat) + u' ' + message);
    if (!RemoteTimer.isActive())
        RemoteTimer.start();
}

void frmService::AddFirstLog(const QString &Text)
{
    GridSVC->setUpdatesEnabled(false);
    CurrentDate = QDate(2000, 1, 1);
    // The grid scrolls once at the end, not after each line.
    m_bulk = true;
    for (const QString &line : Text.split(u'\n')) {
        const QString text = LineText(line.toUtf8());
        if (!text.trimmed().isEmpty())
            AddLine(text);
    }
    m_bulk = false;
    Repaint();
}

void frmService::AddLine(const QString &Text)
{
    const qsizetype blank = Text.indexOf(u' ');
    const QString head = blank < 0 ? Text : Text.left(blank);
    const qsizetype colon = head.indexOf(u':');
    const QDate date = QDate::fromString(head.left(colon), QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(head.mid(colon + 1), QStringLiteral("hh:mm:ss"));
    // A line without a time stamp continues the one before it.
    const bool stamped = colon > 0 && date.isValid();
    const QString message = stamped ? (blank < 0 ? QString() : Text.mid(blank + 1)) : Text;

    const bool follow = !m_bulk && AtLastRow();
    if (stamped && date != CurrentDate) {
        AddRow(QString(), Global.ProductName + QStringLiteral(" Server Log For: ")
                              + QLocale::c().toString(date, QStringLiteral("dddd dd MMM yyyy")),
               DayHeaderRow);
        CurrentDate = date;
    }
    const QString timeText = stamped && time.isValid() ? time.toString(QStringLiteral("hh:mm:ss")) : QString();
    if (message.startsWith(u'*'))
        AddRow(timeText, message, ErrorRow);
    else if ((message.startsWith(QStringLiteral("New ")) && message.contains(QStringLiteral("Message For Account")))
             || message.contains(QStringLiteral("Subject: ")))
        AddRow(timeText, message, EmphasisRow);
    else if (message.startsWith(Global.ProductName)) {
        AddRow(QString(), QString(), ProductRow); // stands apart from the lines before
        AddRow(timeText, message, ProductRow);
    } else
        AddRow(timeText, message, LineRow);
    if (follow)
        GridSVC->scrollToBottom();
}

int frmService::AddRow(const QString &Time, const QString &Text, RowKind Kind)
{
    const int row = GridSVC->rowCount();
    GridSVC->insertRow(row);
    auto *timeItem = new QTableWidgetItem(Time);
    timeItem->setData(RowKindRole, Kind);
    GridSVC->setItem(row, ColTime, timeItem);
    GridSVC->setItem(row, ColSource, new QTableWidgetItem(Kind == DayHeaderRow || Text.isEmpty() ? QString() : Title));
    GridSVC->setItem(row, ColText, new QTableWidgetItem(Text));
    if (Kind == DayHeaderRow) {
        GridSVC->item(row, ColText)->setText(QString());
        timeItem->setText(Text);
        GridSVC->setSpan(row, ColTime, 1, 3);
    }
    if (Kind == DayHeaderRow || Kind == EmphasisRow) {
        QFont bold = GridSVC->font();
        bold.setBold(true);
        for (int column = 0; column < 3; ++column)
            GridSVC->item(row, column)->setFont(bold);
    }
    if (Kind == ErrorRow) {
        for (int column = 0; column < 3; ++column)
            GridSVC->item(row, column)->setForeground(QColor(0xC0, 0x00, 0x00));
    }
    return row;
}

bool frmService::AtLastRow() const
{
    const QScrollBar *bar = GridSVC->verticalScrollBar();
    return bar->value() >= bar->maximum();
}

void frmService::Repaint()
{
    const bool follow = AtLastRow();
    GridSVC->setUpdatesEnabled(true);
    if (follow)
        GridSVC->scrollToBottom();
}

QString frmService::SelectedLines() const
{
    QList<int> rows;
    for (const QModelIndex &index : GridSVC->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    QString text;
    for (int row : rows) {
        QStringList cells;
        for (int column = 0; column < 3; ++column)
            cells << GridSVC->item(row, column)->text();
        text += cells.join(u' ') + QStringLiteral("\r\n");
    }
    return text;
}

void frmService::CopyToClipboard()
{
    QApplication::clipboard()->setText(SelectedLines());
    QMessageBox::information(this, Global.AppTitle,
                             DDict().GetString(QStringLiteral("LINESADDEDCP"), QStringLiteral("Selected lines copied to clipboard.")));
}

bool frmService::SaveLinesTo(const QString &FileName) const
{
    QFile file(FileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(SelectedLines().toUtf8()) >= 0;
}

void frmService::SaveLines()
{
    QFileDialog dialog(this);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    // The overwrite question below is the one the console asks.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    const QString fileName = dialog.selectedFiles().constFirst();
    if (QFile::exists(fileName)
        && QMessageBox::question(this, Global.AppTitle,
                                 DDict().GetString(QStringLiteral("OVERWRITE"), QStringLiteral("Overwrite")) + u' ' + fileName
                                     + u'?')
               != QMessageBox::Yes)
        return;
    if (SaveLinesTo(fileName))
        QMessageBox::information(this, Global.AppTitle,
                                 DDict().GetString(QStringLiteral("LINESSAVED"), QStringLiteral("Selected lines saved to")) + u' '
                                     + fileName);
}

void frmService::ResizeGrid()
{
    QHeaderView *header = GridSVC->horizontalHeader();
    header->setSectionResizeMode(ColTime, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(ColSource, QHeaderView::ResizeToContents);
    header->setStretchLastSection(true);
}

void frmService::ShowMenu(const QPoint &Where)
{
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("mnuLog"));
    menu.addAction(DDict().GetCaption(objectName(), QStringLiteral("mnuSaveLines"), QStringLiteral("Save Selected Lines")), this,
                   &frmService::SaveLines);
    menu.addAction(DDict().GetCaption(objectName(), QStringLiteral("mnuCopyLines"),
                                      QStringLiteral("Copy Selected Lines To Clipboard")),
                   this, &frmService::CopyToClipboard);
    menu.exec(GridSVC->viewport()->mapToGlobal(Where));
}
