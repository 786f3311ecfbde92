#pragma once
#include <QString>
#include <QStringList>
#include <exception>
#include <functional>
#include <vector>

// Where LogError's message goes: the console shows a box, the server writes
// its log. The title is AppTitle, the text "System Error", two line ends and
// the message. An empty sink restores the default, which prints to stderr.
using ErrorSink = std::function<void(const QString &title, const QString &text)>;
void SetErrorSink(ErrorSink sink);

// Records an error of the named routine and shows it through the sink.
// Returns the message as built: Text (cut before any "INSERT INTO ", to 200
// characters, line ends as blanks) + " " + version + " FROM " + routine.
QString LogError(const QString &Routine, const QString &Text = QString(), int Number = 0);
QString LogError(const QString &Routine, const std::exception &error);

// What LogError was asked to record, kept to be recorded later.
struct DeferredError
{
    QString Routine;
    QString Text;
    int Number = 0;
};
using DeferredErrors = std::vector<DeferredError>;

// While it lives, LogError on this thread keeps its errors in Errors instead
// of recording them, and still returns the message. A worker thread reads
// with it; the thread that owns the error sink then replays the errors.
class DeferErrors
{
public:
    explicit DeferErrors(DeferredErrors &Errors);
    ~DeferErrors();
    DeferErrors(const DeferErrors &) = delete;
    DeferErrors &operator=(const DeferErrors &) = delete;

private:
    DeferredErrors *m_previous;
};
// Records kept errors, in order, on the calling thread.
void ReplayErrors(const DeferredErrors &Errors);

// Fills the global block's paths, identity and start-up facts.
void SetStartupProperties(const QStringList &arguments);
// Settles DatabaseKind, DBCreated and DBVersion from DBType and the store file.
void SettleDatabaseKind();

// Turns the event loop for that many quarter seconds (at least one);
// Global.StopWait ends it early.
void Wait(int Quarters);
// Makes sure a folder exists; false when it cannot be made.
bool MakePath(const QString &Path);
// Starts a program without waiting when the file exists; false otherwise.
bool RunProgram(const QString &Path, const QStringList &Arguments = QStringList());
// Runs a command line and waits for it; the exit code, or -1 when it did not run.
int ShellProgram(const QString &CommandLine);
