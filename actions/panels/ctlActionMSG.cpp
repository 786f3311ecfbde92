#include "ctlActionMSG.h"
#include "SchedulePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionMSG.h"
#include "editors/EditorBoxes.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "session/Requests.h"
#include "session/frmRemote.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QFont>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

namespace {

// The port a security choice usually takes.
QString ProposedPort(int Security)
{
    static const char *ports[] = {"25", "587", "465"};
    return QString::fromLatin1(ports[qBound(0, Security, 2)]);
}

} // namespace

ctlActionMSG::ctlActionMSG(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("Message"));
    txtFrom = new QLineEdit(this);
    txtTo = new QLineEdit(this);
    txtCC = new QLineEdit(this);
    txtBcc = new QLineEdit(this);
    txtSubject = new QLineEdit(this);
    txtAttach = new QLineEdit(this);
    MakeCommandBar();
    auto *addresses = new QFormLayout;
    addresses->addRow(EditorText("MSGFROM", "From:"), txtFrom);
    addresses->addRow(EditorText("MSGTO", "To:"), txtTo);
    addresses->addRow(EditorText("MSGCC", "CC:"), txtCC);
    addresses->addRow(EditorText("MSGBCC", "BCC:"), txtBcc);
    addresses->addRow(EditorText("MSGSUBJECT", "Subject:"), txtSubject);
    addresses->addRow(EditorText("MSGATTACH", "Attachments:"), txtAttach);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(CommandBar);
    layout->addLayout(addresses);
    layout->addWidget(MakeBodyTabs(), 1);
    MakePanels();
    layout->addWidget(ScheduleBox);
    layout->addWidget(SendViaBox);
    layout->addWidget(BounceBox);
    WatchEdits();
}

QString ctlActionMSG::EmptyDocument()
{
    return QStringLiteral("<BODY style=\"FONT-FAMILY: Verdana; FONT-SIZE: 10pt\">&nbsp;</BODY>");
}

void ctlActionMSG::MakeCommandBar()
{
    CommandBar = new QToolBar(this);
    CommandBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    const auto add = [this](const char *Key, const char *Text, const char *TipKey, const char *Tip, bool Checkable) {
        QAction *action = CommandBar->addAction(EditorText(Key, Text));
        if (Tip)
            action->setToolTip(EditorText(TipKey, Tip));
        action->setCheckable(Checkable);
        return action;
    };
    cmdSendTest = add("SENDTEST", "Send Test", "SENDTESTTIP", "Send A Test Message", false);
    QAction *cut = add("CUT", "Cut", nullptr, nullptr, false);
    QAction *copy = add("COPY", "Copy", nullptr, nullptr, false);
    QAction *paste = add("PASTE", "Paste", nullptr, nullptr, false);
    QAction *spelling = add("SPELLING", "Spelling", nullptr, nullptr, false);
    spelling->setEnabled(false); // no spelling checker is installed with the console
    cmdImportant = add("IMPORTANT", "Important", "IMPORTANTTIP", "Flag The Message As Important", true);
    cmdReadReceipt = add("READRECEIPT", "Request Read Receipt", nullptr, nullptr, true);
    cmdAddAttachment = add("ADDATTACHMENT", "Add Attachment", nullptr, nullptr, false);
    cmdIncoming = add("ADDINCOMING", "Add Incoming", "ADDINCOMINGTIP",
                      "Include All Incoming Attachments With The Outgoing Message", true);
    auto *incomingMenu = new QMenu(this);
    cmdIncomingInline = incomingMenu->addAction(EditorText(
        "ADDINCOMINGINLINE", "Include All Incoming Inline Attachments As Regular Attachments With The Outgoing Message"));
    cmdIncomingInline->setCheckable(true);
    cmdIncoming->setMenu(incomingMenu);
    cmdEditBody = add("EDITBODY", "Edit Body", "EDITBODYTIP", "Edit The Message Body", false);
    cmdSchedule = add("SCHEDULEDSEND", "Scheduled Send", "SCHEDULEDSENDTIP", "Send The Message At A Future Date", true);
    cmdSendVia = add("SENDVIA", "Send Via", "SENDVIATIP",
                     "Send The Message Via A Different Mail Server Than The Default", true);
    cmdBounce = add("BOUNCEPROCESSING", "Bounce Processing", "BOUNCEPROCESSINGTIP",
                    "Setup How None Delivery Reports Are Processed", true);

    const auto focused = [] { return QApplication::focusWidget(); };
    connect(cut, &QAction::triggered, this, [focused] {
        if (auto *line = qobject_cast<QLineEdit *>(focused()))
            line->cut();
        else if (auto *text = qobject_cast<QPlainTextEdit *>(focused()))
            text->cut();
    });
    connect(copy, &QAction::triggered, this, [focused] {
        if (auto *line = qobject_cast<QLineEdit *>(focused()))
            line->copy();
        else if (auto *text = qobject_cast<QPlainTextEdit *>(focused()))
            text->copy();
    });
    connect(paste, &QAction::triggered, this, [focused] {
        if (auto *line = qobject_cast<QLineEdit *>(focused()))
            line->paste();
        else if (auto *text = qobject_cast<QPlainTextEdit *>(focused()))
            text->paste();
    });
    for (QAction *toggle : {cmdImportant, cmdReadReceipt, cmdIncoming, cmdIncomingInline})
        connect(toggle, &QAction::triggered, this, [this] { Dirty = true; });
    connect(cmdAddAttachment, &QAction::triggered, this, &ctlActionMSG::AddAttachment);
    connect(cmdSendTest, &QAction::triggered, this, &ctlActionMSG::SendTest);
    connect(cmdEditBody, &QAction::triggered, this, [this] { BodyTabs->setCurrentIndex(1); HTMLEdit->setFocus(); });
}

QWidget *ctlActionMSG::MakeBodyTabs()
{
    txtBody = new QPlainTextEdit(this);
    HTMLEdit = new QPlainTextEdit(this);
    HTMLEdit->setFont(QFont(QStringLiteral("Verdana"), 10));
    txtHTMLFile = new QLineEdit(this);
    chkHTMLEmbed = new QCheckBox(EditorText("HTMLEMBED", "Embed Images In The Message"), this);
    auto *filePage = new QWidget(this);
    auto *fileForm = new QFormLayout(filePage);
    fileForm->addRow(EditorText("HTMLFILE", "HTML File:"), txtHTMLFile);
    fileForm->addRow(chkHTMLEmbed);
    TabHTMLEdit = new QTabWidget(this);
    TabHTMLEdit->addTab(HTMLEdit, EditorText("HTMLEDIT", "HTML"));
    TabHTMLEdit->addTab(filePage, EditorText("HTMLFILETAB", "HTML File"));
    GridHeaders = new QTableWidget(0, 2, this);
    GridHeaders->setHorizontalHeaderLabels({EditorText("HEADERNAME", "Header"), EditorText("HEADERVALUE", "Value")});
    GridHeaders->horizontalHeader()->setStretchLastSection(true);
    connect(GridHeaders, &QTableWidget::cellChanged, this, [this](int Row) {
        Dirty = true;
        if (Row == GridHeaders->rowCount() - 1)
            GridHeaders->insertRow(GridHeaders->rowCount()); // a blank row to type the next header in
    });
    BodyTabs = new QTabWidget(this);
    BodyTabs->addTab(txtBody, EditorText("MSGBODYTEXT", "Text"));
    BodyTabs->addTab(TabHTMLEdit, EditorText("MSGBODYHTML", "HTML"));
    BodyTabs->addTab(GridHeaders, EditorText("MSGHEADERS", "Custom Headers"));
    return BodyTabs;
}

void ctlActionMSG::MakePanels()
{
    Schedule = new SchedulePanel(this);
    connect(Schedule, &SchedulePanel::Edited, this, [this] { Dirty = true; });
    ScheduleBox = new QGroupBox(EditorText("SCHEDULEDSEND", "Scheduled Send"), this);
    (new QVBoxLayout(ScheduleBox))->addWidget(Schedule);

    txtSMTPServer = new QLineEdit(this);
    txtSMTPPort = new QLineEdit(this);
    txtSMTPPort->setMaximumWidth(80);
    cmboSMTPSecurity = new QComboBox(this);
    cmboSMTPSecurity->addItems(clsActionMSG::SecurityNames());
    connect(cmboSMTPSecurity, &QComboBox::activated, this,
            [this](int Security) { txtSMTPPort->setText(ProposedPort(Security)); });
    txtSMTPUser = new QLineEdit(this);
    txtSMTPPassword = new QLineEdit(this);
    txtSMTPPassword->setEchoMode(QLineEdit::Password);
    SendViaBox = new QGroupBox(EditorText("SENDVIA", "Send Via"), this);
    auto *via = new QFormLayout(SendViaBox);
    via->addRow(EditorText("SMTPSERVER", "Mail Server:"), txtSMTPServer);
    via->addRow(EditorText("SMTPPORT", "Port:"), txtSMTPPort);
    via->addRow(EditorText("SMTPSECURITY", "Security:"), cmboSMTPSecurity);
    via->addRow(EditorText("SMTPUSER", "User Name:"), txtSMTPUser);
    via->addRow(EditorText("SMTPPASSWORD", "Password:"), txtSMTPPassword);

    optNDR = new QButtonGroup(this);
    BounceBox = new QGroupBox(EditorText("BOUNCEPROCESSING", "Bounce Processing"), this);
    auto *bounce = new QFormLayout(BounceBox);
    const QStringList choices{EditorText("NDR1", "Ignore None Delivery Reports"),
                              EditorText("NDR2", "Send None Delivery Reports To The Sender Of The Original Message"),
                              EditorText("NDR3", "Send None Delivery Reports To:")};
    for (int n = 0; n < choices.size(); ++n) {
        auto *option = new QRadioButton(choices.at(n), BounceBox);
        optNDR->addButton(option, n);
        bounce->addRow(option);
        connect(option, &QRadioButton::clicked, this, [this] { Dirty = true; });
    }
    txtNDRSendTo = new QLineEdit(this);
    chkNDRPassTo = new QCheckBox(EditorText("NDRPASSTO", "Pass None Delivery Reports To Trigger:"), this);
    cmboPassTo = new QComboBox(this);
    bounce->addRow(EditorText("NDRSENDTO", "Address:"), txtNDRSendTo);
    bounce->addRow(chkNDRPassTo, cmboPassTo);

    for (auto [command, box] : {std::pair{cmdSchedule, ScheduleBox}, std::pair{cmdSendVia, SendViaBox},
                                std::pair{cmdBounce, BounceBox}}) {
        box->setVisible(false);
        connect(command, &QAction::toggled, box, &QWidget::setVisible);
        connect(command, &QAction::triggered, this, [this] { Dirty = true; });
    }
}

void ctlActionMSG::AddAttachment()
{
    const QStringList files = QFileDialog::getOpenFileNames(this, EditorText("SELECTFILE", "Select File"));
    if (files.isEmpty())
        return;
    QString names = txtAttach->text().trimmed();
    if (!names.isEmpty() && !names.endsWith(u';'))
        names += u';';
    txtAttach->setText(names + files.join(u';'));
    Dirty = true;
}

void ctlActionMSG::SendTest()
{
    frmRemote &remote = Remote();
    if (!remote.HTTPPut(Requests::SendTestEmail(txtSubject->text()), txtBody->toPlainText())
        || remote.ReplyText.startsWith(QStringLiteral("Error:")))
        WarningBox(this, remote.ReplyText.isEmpty() ? EditorText("SENDTESTFAILED", "The test message was not sent.")
                                                    : remote.ReplyText);
    else
        QMessageBox::information(this, EditorText("SENDTEST1", "Send Test Message"),
                                 EditorText("SENDTESTDONE", "The test message is on its way to the administrator."));
}

void ctlActionMSG::Load()
{
    const auto *action = ThisAction->As<clsActionMSG>();
    txtFrom->setText(action->From);
    txtTo->setText(action->SendTo);
    txtCC->setText(action->CC);
    txtBcc->setText(action->BCC);
    txtSubject->setText(action->Subject);
    txtAttach->setText(action->Attachments);
    txtBody->setPlainText(action->Body);
    HTMLEdit->setPlainText(action->HTMLText.isEmpty() ? EmptyDocument() : action->HTMLText);
    txtHTMLFile->setText(action->HTMLFile);
    chkHTMLEmbed->setChecked(action->HTMLEmbed);
    TabHTMLEdit->setCurrentIndex(action->HTMLFile.isEmpty() ? 0 : 1);
    cmdImportant->setChecked(action->Importance >= clsActionMSG::HighImportance);
    cmdReadReceipt->setChecked(action->ReadReceipt);
    cmdIncoming->setChecked(action->AttachmentsIncoming);
    cmdIncomingInline->setChecked(action->AttachmentsIncomingInline);
    cmdSchedule->setChecked(action->ScheduleSend);
    Schedule->Load(action->ScheduleOn, action->SchedulePeriod, action->ScheduleInterval, action->ScheduleDeDup);
    const clsActionMSG::Relay via = clsActionMSG::SplitSendVia(action->SendVia);
    cmdSendVia->setChecked(via.Use);
    txtSMTPServer->setText(via.Server);
    txtSMTPPort->setText(QString::number(via.Port));
    cmboSMTPSecurity->setCurrentIndex(via.Security);
    txtSMTPUser->setText(via.User);
    txtSMTPPassword->setText(via.Password);
    if (QAbstractButton *choice = optNDR->button(action->NDRSend))
        choice->setChecked(true);
    cmdBounce->setChecked(action->NDRSend > 0 || action->NDRPassTo);
    txtNDRSendTo->setText(action->NDRSendTo);
    chkNDRPassTo->setChecked(action->NDRPassTo);
    cmboPassTo->clear();
    if (ThisTrigger && ThisTrigger->Parent)
        for (const clsAccountTrigger *trigger : ThisTrigger->Parent->Triggers)
            cmboPassTo->addItem(trigger->Name, trigger->TriggerID);
    cmboPassTo->setCurrentIndex(cmboPassTo->findData(action->NDRPassToID));
    const auto headers = clsActionMSG::SplitHeaders(action->CustomHeaders);
    const QSignalBlocker quiet(GridHeaders);
    GridHeaders->setRowCount(int(headers.size()) + 1);
    for (int row = 0; row < headers.size(); ++row) {
        GridHeaders->setItem(row, 0, new QTableWidgetItem(headers.at(row).first));
        GridHeaders->setItem(row, 1, new QTableWidgetItem(headers.at(row).second));
    }
    Dirty = false;
}

QString ctlActionMSG::HtmlText() const
{
    const QString html = HTMLEdit->toPlainText().trimmed();
    return html == EmptyDocument() ? QString() : html;
}

QString ctlActionMSG::Headers() const
{
    QStringList lines;
    for (int row = 0; row < GridHeaders->rowCount(); ++row) {
        const QTableWidgetItem *name = GridHeaders->item(row, 0);
        const QTableWidgetItem *value = GridHeaders->item(row, 1);
        if (name && !name->text().trimmed().isEmpty())
            lines << name->text().trimmed() + u'|' + (value ? value->text() : QString());
    }
    return lines.join(QStringLiteral("\r\n"));
}

bool ctlActionMSG::Save()
{
    if (txtTo->text().trimmed().isEmpty())
        return Refuse(EditorText("ERRORNOTOADDRESS", "You must specify a To address"));
    const QString htmlFile = txtHTMLFile->text().trimmed();
    if (!htmlFile.isEmpty() && !htmlFile.contains(u'%') && !QFile::exists(htmlFile))
        return Refuse(EditorText("ERRORNOHTMLFILE", "HTML File does not exist"));
    auto *action = ThisAction->As<clsActionMSG>();
    action->From = txtFrom->text();
    action->SendTo = txtTo->text();
    action->CC = txtCC->text();
    action->BCC = txtBcc->text();
    action->Subject = txtSubject->text();
    QString attachments = txtAttach->text().trimmed();
    if (attachments.endsWith(u';'))
        attachments.chop(1);
    action->Attachments = attachments;
    action->Body = txtBody->toPlainText();
    action->HTMLText = HtmlText();
    action->HTMLFile = htmlFile;
    action->HTML = !action->HTMLText.isEmpty() || !htmlFile.isEmpty();
    action->HTMLEmbed = chkHTMLEmbed->isChecked();
    action->Importance = cmdImportant->isChecked() ? clsActionMSG::HighImportance : qint16(0);
    action->ReadReceipt = cmdReadReceipt->isChecked();
    action->AttachmentsIncoming = cmdIncoming->isChecked();
    action->AttachmentsIncomingInline = cmdIncomingInline->isChecked();
    action->ScheduleSend = cmdSchedule->isChecked();
    action->ScheduleOn = Schedule->ScheduleOn();
    action->SchedulePeriod = Schedule->SchedulePeriod();
    action->ScheduleInterval = Schedule->ScheduleInterval();
    action->ScheduleDeDup = Schedule->ScheduleDeDup();
    clsActionMSG::Relay via;
    via.Use = cmdSendVia->isChecked();
    via.Server = txtSMTPServer->text().trimmed();
    via.Port = txtSMTPPort->text().trimmed().toInt();
    via.Security = cmboSMTPSecurity->currentIndex();
    via.User = txtSMTPUser->text();
    via.Password = txtSMTPPassword->text();
    action->SendVia = via.Use || !via.Server.isEmpty() ? clsActionMSG::JoinSendVia(via) : QString();
    action->NDRSend = qint16(qMax(0, optNDR->checkedId()));
    action->NDRSendTo = txtNDRSendTo->text();
    action->NDRPassTo = chkNDRPassTo->isChecked();
    action->NDRPassToID = cmboPassTo->currentData().toString();
    action->CustomHeaders = Headers();
    return true;
}
