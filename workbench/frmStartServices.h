#pragma once
#include <QDialog>

class QLabel;
class QProgressBar;

// The small progress window of the local server's start: it starts the
// service when it is stopped and waits for it to run, welcomes the first
// login, and runs the store's schema upgrade.
class frmStartServices : public QDialog
{
    Q_OBJECT
public:
    // How long StartUp waits for a started service to run.
    static constexpr int StartQuarters = 80;

    explicit frmStartServices(QWidget *parent = nullptr);

    QLabel *lblStatus = nullptr;
    QProgressBar *prgStatus = nullptr;

    // Starts the stopped service and waits for it; welcomes the first login
    // once the service runs. Global.ServiceState follows every status read.
    void StartUp();
    // Starts the service when it is stopped; Started tells whether it was
    // asked to. A failure is shown in a task dialog.
    void StartService(bool &Started);
    // Brings the store's schema up to date; false when it cannot be opened.
    bool UpdateSchema();

private:
    void ShowMessage(const QString &Text);
    QString ReadStatus();
};
