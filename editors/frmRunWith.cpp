#include "frmRunWith.h"
#include "EditorBoxes.h"
#include "foundation/Formatting.h"
#include "foundation/GlobalBlock.h"
#include "model/Selection.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "session/frmRemote.h"
#include "store/MimeMail.h"
#include "workbench/TaskDialog.h"

#include <QDesktopServices>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMimeDatabase>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int WebServiceSeconds = 60;
// The result of the web service stands after its envelope's first tag.
constexpr int ResultFrom = 50;

QString WebServiceResult(const QString &Reply)
{
    const qsizetype open = Reply.indexOf(u'>', ResultFrom - 1);
    if (open < 0)
        return Reply;
    const qsizetype close = Reply.indexOf(u'<', open);
    return Reply.mid(open + 1, close < 0 ? -1 : close - open - 1);
}

} // namespace

frmRunWith::Route frmRunWith::RouteFor(qint64 Size)
{
    if (Size > MaximumSize)
        return TooBig;
    return Size < WebServiceSize ? ByRequest : ByWebService;
}

frmRunWith::frmRunWith(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmRunWith"));
    txtTo = new QLineEdit(this);
    txtFrom = new QLineEdit(this);
    txtSubject = new QLineEdit(this);
    txtBody = new QPlainTextEdit(this);
    txtAttach = new QLineEdit(this);
    btnAttach = new QPushButton(EditorText("ATTACH", "Attach..."), this);
    btnOK = new QPushButton(this);
    btnOK->setDefault(true);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    btnHelp = new QPushButton(EditorText("HELP", "Help"), this);
    connect(btnAttach, &QPushButton::clicked, this, [this] {
        const QStringList files = QFileDialog::getOpenFileNames(this, EditorText("ATTACHFILES", "Attach Files"));
        if (!files.isEmpty())
            txtAttach->setText(files.join(QStringLiteral("; ")));
    });
    connect(btnOK, &QPushButton::clicked, this, &frmRunWith::Accept);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnHelp, &QPushButton::clicked, this, [] {
        QDesktopServices::openUrl(
            QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/Run_With.htm")));
    });
    auto *form = new QFormLayout;
    form->addRow(EditorText("RUNWITHTO", "To:"), txtTo);
    form->addRow(EditorText("RUNWITHFROM", "From:"), txtFrom);
    form->addRow(EditorText("RUNWITHSUBJECT", "Subject:"), txtSubject);
    form->addRow(txtBody);
    auto *attach = new QHBoxLayout;
    attach->addWidget(txtAttach, 1);
    attach->addWidget(btnAttach);
    form->addRow(EditorText("RUNWITHATTACH", "Attachments:"), attach);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(btnHelp);
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    resize(640, 520);
}

void frmRunWith::Prepare(clsAccount *ForAccount)
{
    Account = ForAccount;
    if (!Account) {
        if (!Trigger)
            Trigger = SelectedTrigger;
        if (Trigger) {
            txtSubject->setText(Trigger->HelperSubject);
            txtBody->setPlainText(Trigger->HelperMessage);
            txtTo->setText(Trigger->HelperTo.section(u',', 0, 0));
            setWindowTitle((Trigger->Parent ? Trigger->Parent->Name : QString()) + QStringLiteral(" - ") + Trigger->Name);
        }
        btnOK->setText(EditorText("SEND", "Send"));
        return;
    }
    setWindowTitle(EditorText("AUTORUNWITH", "Auto Run With") + u' ' + Account->Name);
    btnOK->setText(EditorText("OK", "OK"));
    MimeMail message;
    message.LoadMime(Account->AutoRunMessageMime);
    txtSubject->setText(message.Header(QStringLiteral("Subject")));
    txtFrom->setText(message.Header(QStringLiteral("From")));
    txtTo->setText(message.Header(QStringLiteral("To")));
    txtBody->setPlainText(message.TextBody());
    QStringList names;
    for (const MimeAttachment &attachment : message.Attachments())
        names << attachment.Name;
    txtAttach->setText(names.join(QStringLiteral("; ")));
}

int frmRunWith::ShowForm(clsAccount *ForAccount)
{
    Prepare(ForAccount);
    return exec();
}

void frmRunWith::BuildMessage(MimeMail &Message, bool WithHeaders) const
{
    Message.Compose(txtFrom->text(), txtTo->text(), txtSubject->text(), QDateTime::currentDateTime(),
                    txtBody->toPlainText().replace(u'\n', QStringLiteral("\r\n")));
    if (WithHeaders && Trigger) {
        const QString id = NewUniqueID();
        Message.SetHeader(QStringLiteral("Postvane-AccountID"), Trigger->Parent ? Trigger->Parent->AccountID : QString());
        Message.SetHeader(QStringLiteral("Postvane-TriggerID"), Trigger->TriggerID);
        Message.SetHeader(QStringLiteral("Postvane-UID"), id);
        Message.SetHeader(QStringLiteral("Postvane-Source"), QStringLiteral("Admin"));
        Message.SetHeader(QStringLiteral("Message-ID"), id);
    }
    const QMimeDatabase types;
    for (const QString &part : txtAttach->text().split(u';', Qt::SkipEmptyParts)) {
        const QString path = part.trimmed();
        QFile file(path);
        if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
            continue;
        Message.AddAttachment(QFileInfo(path).fileName(), file.readAll(), types.mimeTypeForFile(path).name());
    }
}

bool frmRunWith::Accept()
{
    if (Account) {
        MimeMail message;
        BuildMessage(message, false);
        Account->AutoRunMessageMime = message.GetMimeText();
        accept();
        return true;
    }
    if (!Trigger)
        return false;
    if (ShowTaskDialog(this, EditorText("RUNWITH1", "Send Message?"),
                       EditorText("RUNWITH2", "The message will be added to the Edge Queue and be processed immediately."),
                       QString(), QMessageBox::Yes | QMessageBox::No) != QMessageBox::Yes)
        return false;
    if (!SendTest())
        return false;
    accept();
    return true;
}

bool frmRunWith::SendTest()
{
    frmRemote &remote = Remote();
    const QString accountID = Trigger->Parent ? Trigger->Parent->AccountID : QString();
    const QString body = txtBody->toPlainText().replace(u'\n', QStringLiteral("\r\n"));
    if (txtSubject->text() != Trigger->HelperSubject || body != Trigger->HelperMessage ||
        txtTo->text() != Trigger->HelperTo) {
        // The server's copy may have changed since the window opened.
        remote.HTTPGet(QStringLiteral("gettrigger.xml?accountid=") + accountID + QStringLiteral("&triggerid=") +
                       Trigger->TriggerID);
        Trigger->HelperSubject = txtSubject->text();
        Trigger->HelperMessage = body;
        Trigger->HelperTo = txtTo->text();
        remote.SendTrigger(*Trigger);
    }
    MimeMail message;
    BuildMessage(message, true);
    const QString mime = message.GetMimeText();
    switch (RouteFor(mime.toUtf8().size())) {
    case TooBig:
        WarningBox(this, EditorText("RUNWITHTOOBIG", "Message Too Big. The maximum size is 10mb"));
        return false;
    case ByRequest:
        return remote.HTTPPut(QStringLiteral("runwith.xml?accountid=") + accountID + QStringLiteral("&triggerid=") +
                                  Trigger->TriggerID,
                              mime);
    case ByWebService:
        return SendViaWebService(mime);
    }
    return false;
}

bool frmRunWith::SendViaWebService(const QString &MimeText)
{
    const QString base = Remote().WebServicesURL.isEmpty() ? Global.ServerURL : Remote().WebServicesURL;
    QNetworkRequest request(QUrl(base + QStringLiteral("PostvaneWS.asmx/AddMessage")));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/x-www-form-urlencoded"));
    QByteArray form;
    const auto add = [&form](const char *Name, const QString &Value) {
        if (!form.isEmpty())
            form += '&';
        form += QByteArray(Name) + '=' + QUrl::toPercentEncoding(Value);
    };
    add("UserName", Global.UserName);
    add("Password", Global.Password);
    add("AccountID", Trigger->Parent ? Trigger->Parent->AccountID : QString());
    add("TriggerID", Trigger->TriggerID);
    add("MimeText", MimeText);
    QNetworkAccessManager network;
    QNetworkReply *reply = network.post(request, form);
    connect(reply, &QNetworkReply::sslErrors, reply, [reply] { reply->ignoreSslErrors(); });
    QEventLoop wait;
    QTimer::singleShot(WebServiceSeconds * 1000, &wait, &QEventLoop::quit);
    connect(reply, &QNetworkReply::finished, &wait, &QEventLoop::quit);
    wait.exec();
    const QString result = WebServiceResult(QString::fromUtf8(reply->readAll()));
    reply->deleteLater();
    if (result == QStringLiteral("OK"))
        return true;
    WarningBox(this, EditorText("RUNWITHWSFAIL", "Could not send via Web Services: ") + result);
    return false;
}
