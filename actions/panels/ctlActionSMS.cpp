#include "ctlActionSMS.h"
#include "SchedulePanel.h"
#include "actions/ActionItem.h"
#include "actions/clsActionSMS.h"
#include "editors/EditorBoxes.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTcpSocket>
#include <QVBoxLayout>

namespace {

// One SNPP exchange: the line sent (none for the greeting) and the reply read.
QString Exchange(QTcpSocket &Socket, const QByteArray &Line, bool *Ok)
{
    if (!Line.isEmpty()) {
        Socket.write(Line + "\r\n");
        Socket.waitForBytesWritten(10000);
    }
    if (!Socket.canReadLine() && !Socket.waitForReadyRead(10000)) {
        *Ok = false;
        return QStringLiteral("ERROR: the server did not answer");
    }
    const QString reply = QString::fromUtf8(Socket.readLine()).trimmed();
    *Ok = reply.startsWith(u'2');
    return reply;
}

} // namespace

ctlActionSMS::ctlActionSMS(QWidget *parent) : ActionEditor(parent)
{
    setObjectName(QStringLiteral("SMS"));
    txtFrom = new QLineEdit(this);
    txtTo = new QLineEdit(this);
    txtTo->setMinimumWidth(320);
    txtSubject = new QLineEdit(this);
    txtBody = new QPlainTextEdit(this);
    txtBody->setMaximumHeight(100);
    Schedule = new SchedulePanel(this);
    connect(Schedule, &SchedulePanel::Edited, this, [this] { Dirty = true; });
    ScheduleBox = new QGroupBox(EditorText("SCHEDULEDSEND", "Scheduled Send"), this);
    ScheduleBox->setCheckable(true);
    (new QVBoxLayout(ScheduleBox))->addWidget(Schedule);
    txtSNPPServer = new QLineEdit(this);
    txtSNPPLoginID = new QLineEdit(this);
    txtSNPPAssignReplyTo = new QLineEdit(this);
    btnSNPPtest = new QPushButton(EditorText("SNPPTEST", "Send Test Page"), this);
    SNPPBox = new QGroupBox(EditorText("SNPPSEND", "Send Via An SNPP Server"), this);
    SNPPBox->setCheckable(true);
    auto *snpp = new QFormLayout(SNPPBox);
    snpp->addRow(EditorText("SNPPSERVER", "SNPP Server (host:port):"), txtSNPPServer);
    snpp->addRow(EditorText("SNPPLOGIN", "Login ID:"), txtSNPPLoginID);
    snpp->addRow(EditorText("SNPPASSIGN", "Assign Reply To:"), txtSNPPAssignReplyTo);
    snpp->addRow(QString(), btnSNPPtest);
    connect(btnSNPPtest, &QPushButton::clicked, this, [this] {
        const QString reply = SendTestPage(txtSNPPServer->text(), txtSNPPLoginID->text(), txtFrom->text(),
                                           txtTo->text(), txtBody->toPlainText());
        if (reply.startsWith(QStringLiteral("ERROR")))
            WarningBox(this, reply);
        else
            QMessageBox::information(this, EditorText("SNPPTEST", "Send Test Page"),
                                     reply + QStringLiteral("\r\n\r\n") + EditorText("SNPPSENT", "Message Sent"));
    });
    for (QGroupBox *box : {ScheduleBox, SNPPBox})
        connect(box, &QGroupBox::clicked, this, [this] { Dirty = true; });
    auto *form = new QFormLayout;
    form->addRow(EditorText("MSGFROM", "From:"), txtFrom);
    form->addRow(EditorText("MSGTO", "To:"), txtTo);
    form->addRow(EditorText("MSGSUBJECT", "Subject:"), txtSubject);
    form->addRow(EditorText("SMSTEXT", "Message:"), txtBody);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(form);
    layout->addWidget(ScheduleBox);
    layout->addWidget(SNPPBox);
    WatchEdits();
}

QString ctlActionSMS::SendTestPage(const QString &Server, const QString &LoginID, const QString &From,
                                   const QString &To, const QString &Text)
{
    const QString host = Server.section(u':', 0, 0).trimmed();
    const int port = Server.contains(u':') ? Server.section(u':', 1).trimmed().toInt() : 444;
    if (host.isEmpty() || port <= 0)
        return QStringLiteral("ERROR: no SNPP server is given");
    QTcpSocket socket;
    socket.connectToHost(host, quint16(port));
    if (!socket.waitForConnected(10000))
        return QStringLiteral("ERROR: ") + socket.errorString();
    QStringList replies;
    bool ok = true;
    replies << Exchange(socket, QByteArray(), &ok);
    QList<QByteArray> lines;
    if (!LoginID.trimmed().isEmpty())
        lines << "LOGI " + LoginID.trimmed().toUtf8();
    if (!From.trimmed().isEmpty())
        lines << "CALL " + From.trimmed().toUtf8();
    lines << "PAGE " + To.trimmed().toUtf8() << "MESS " + Text.simplified().toUtf8() << "SEND";
    for (const QByteArray &line : lines) {
        if (!ok)
            return QStringLiteral("ERROR: ") + replies.join(QStringLiteral("\r\n"));
        replies << Exchange(socket, line, &ok);
    }
    Exchange(socket, "QUIT", &ok);
    return replies.join(QStringLiteral("\r\n"));
}

void ctlActionSMS::Load()
{
    const auto *action = ThisAction->As<clsActionSMS>();
    txtFrom->setText(action->From);
    txtTo->setText(action->SendTo);
    txtSubject->setText(action->Subject);
    txtBody->setPlainText(action->Body);
    ScheduleBox->setChecked(action->ScheduleSend);
    Schedule->Load(action->ScheduleOn, action->SchedulePeriod, action->ScheduleInterval, action->ScheduleDeDup);
    SNPPBox->setChecked(action->SendViaSNPP);
    txtSNPPServer->setText(action->SNPPServer);
    txtSNPPLoginID->setText(action->SNPPLoginID);
    txtSNPPAssignReplyTo->setText(action->SNPPAssignReplyTo);
    Dirty = false;
}

bool ctlActionSMS::Save()
{
    if (txtTo->text().trimmed().isEmpty())
        return Refuse(EditorText("ERRORNOTOADDRESS", "You must specify a To address"));
    auto *action = ThisAction->As<clsActionSMS>();
    action->From = txtFrom->text();
    action->SendTo = txtTo->text();
    action->Subject = txtSubject->text();
    action->Body = txtBody->toPlainText();
    action->ScheduleSend = ScheduleBox->isChecked();
    action->ScheduleOn = Schedule->ScheduleOn();
    action->SchedulePeriod = Schedule->SchedulePeriod();
    action->ScheduleInterval = Schedule->ScheduleInterval();
    action->ScheduleDeDup = Schedule->ScheduleDeDup();
    action->SendViaSNPP = SNPPBox->isChecked();
    action->SNPPServer = txtSNPPServer->text();
    action->SNPPLoginID = txtSNPPLoginID->text();
    action->SNPPAssignReplyTo = txtSNPPAssignReplyTo->text();
    return true;
}
