#pragma once
#include <QDate>
#include <QString>
#include <QTimer>
#include <QWidget>

class QTableWidget;

// One log pane of the main window. On a local server it follows its log file
// on disk (ShowLog); on a remote one it shows a first batch of lines
// (AddFirstLog) and then the lines pushed by the server (AddRemoteLog).
//
// A log line is a time stamp "yyyy-mm-dd:hh:mm:ss", a blank and the text.
// Each line is a row of time, source and text; a day header row goes before
// the first line of each new day.
class frmService : public QWidget
{
    Q_OBJECT
public:
    // Columns of GridSVC.
    enum Column { ColTime, ColSource, ColText };
    // Data role of the first cell: what kind of row it is.
    static constexpr int RowKindRole = Qt::UserRole + 1;
    enum RowKind { LineRow, DayHeaderRow, ErrorRow, EmphasisRow, ProductRow };
    // A file shorter than this is shown whole.
    static constexpr qint64 WholeFileBytes = 2000;
    static constexpr int LogInterval = 1250;
    static constexpr int RemoteInterval = 500;

    // Title is the pane's caption and the source text of its rows; LogName
    // the file name of its log in DataPath.
    frmService(const QString &Title, const QString &LogName, QWidget *parent = nullptr);

    QString Title;
    QString LogName;
    QString LogFile;    // DataPath + LogName while following
    qint64 Position = 0; // file offset up to which lines are shown
    QDate CurrentDate;  // date of the last line added
    bool NeedsReload = false;
    QTableWidget *GridSVC = nullptr;
    QTimer LogTimer;
    QTimer RemoteTimer;

    // Follows DataPath + Name from today's first line on.
    void ShowLog(const QString &Name);
    // Stops following; lines come from AddFirstLog and AddRemoteLog.
    void SetRemote();
    bool Following() const { return LogTimer.isActive(); }
    void ClearLog();
    // One pushed line: a fragment with TimeStamp and Msg. A pane that
    // follows a file leaves it out.
    void AddRemoteLog(const QString &Fragment);
    // The first batch: lines separated by LF.
    void AddFirstLog(const QString &Text);
    void AddLine(const QString &Text);
    // One LogTimer tick: reads what the file gained since Position.
    void ReadLog();
    // Offset of the first line of the file stamped at or after From; the
    // file's end when there is none.
    static qint64 StartPosition(const QString &FileName, const QDateTime &From);

    // The selected rows, each as its three cells joined by blanks, closed by CR LF.
    QString SelectedLines() const;
    void CopyToClipboard();
    void SaveLines();
    bool SaveLinesTo(const QString &FileName) const;
    void ResizeGrid();

private:
    int AddRow(const QString &Time, const QString &Text, RowKind Kind);
    bool AtLastRow() const;
    void Repaint();
    void ShowMenu(const QPoint &Where);

    bool m_firstTick = true;
    bool m_bulk = false; // lines of a first log are being added
};
