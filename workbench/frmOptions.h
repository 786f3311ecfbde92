#pragma once
#include <QDialog>
#include <functional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTableWidget;

// The program options: the server's global settings that the console
// edits, and the list of organizations. OK posts the whole settings
// fragment to the server.
class frmOptions : public QDialog
{
    Q_OBJECT
public:
    // The LogLevel of each logging choice, in the order of optLogging.
    static constexpr int LogLevels[] = {1, 2, 3, 4};

    // The organization editor on an organization's ID, empty for a new
    // one; registered by the editors.
    static inline std::function<QDialog *(const QString &OrganizationID, QWidget *Parent)> MakeOrganizationEditor;

    explicit frmOptions(QWidget *parent = nullptr);

    QLineEdit *txtSendTo = nullptr;
    QLineEdit *txtFromAddress = nullptr;
    QCheckBox *chkEmailErrors = nullptr;
    QPushButton *btnSendTest = nullptr;
    QCheckBox *chkLog = nullptr;
    QButtonGroup *optLogging = nullptr;
    QCheckBox *chkDeleteLog = nullptr;
    QLineEdit *txtDeleteLogDays = nullptr;
    QCheckBox *chkDeleteAfter = nullptr;
    QLineEdit *txtDeleteAfterDays = nullptr;
    QCheckBox *chkMessageStoreAzure = nullptr;
    QLineEdit *txtAzureAccount = nullptr;
    QLineEdit *txtAzureAccessKey = nullptr;
    QPushButton *btnMessageStoreConnect = nullptr;
    QComboBox *cmboFWtype = nullptr;
    QLineEdit *txtFWIP = nullptr;
    QLineEdit *txtFWPort = nullptr;
    QLineEdit *txtFWUser = nullptr;
    QLineEdit *txtFWPassword = nullptr;
    QLineEdit *txtSMSUser = nullptr;
    QLineEdit *txtSMSPassword = nullptr;
    QLineEdit *txtSMSFrom = nullptr;
    QPushButton *btnSMSAccount = nullptr;
    QLineEdit *txtWebServicesURL = nullptr;
    QPushButton *btnWebServicesTest = nullptr;
    QComboBox *cmboFaxPort = nullptr;
    QPushButton *btnFaxFind = nullptr;
    QTableWidget *GridOrgs = nullptr;
    QPushButton *btnOrgAdd = nullptr;
    QPushButton *btnOrgEdit = nullptr;
    QPushButton *btnOrgDelete = nullptr;
    QPushButton *btnOK = nullptr;
    QPushButton *btnCancel = nullptr;
    QPushButton *btnHelp = nullptr;

    // The global settings into the controls, the organizations into the grid.
    void Load();
    void FillOrganizations();
    // The controls into the global settings, posted to the server: false
    // when the server did not take them.
    bool ButtonOK();
    // Asks the server to send a test message to the administrator.
    bool SendTest();
    // The selected organization deleted on the server, after the checks
    // and a confirmation; false when it was not.
    bool DeleteOrganization();
    // The address the web services test opens.
    QString WebServicesTestURL() const;

private:
    QWidget *MakeGeneralTab();
    QWidget *MakeLoggingTab();
    QWidget *MakeStoreTab();
    QWidget *MakeFirewallTab();
    QWidget *MakeServicesTab();
    QWidget *MakeOrganizationsTab();
    void EnableControls();
    void EditOrganization(bool New);
    QString SelectedOrganizationID() const;
};
