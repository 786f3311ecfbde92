#include "frmField.h"
#include "DatabaseTest.h"
#include "EditorBoxes.h"
#include "frmInputEditor.h"
#include "foundation/GlobalBlock.h"
#include "foundation/TextHelpers.h"
#include "model/clsAccount.h"
#include "model/clsAccountTrigger.h"
#include "model/clsTriggerField.h"
#include "session/frmRemote.h"
#include "store/HtmlToText.h"
#include "store/Tokens.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextBlock>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int DateTimeType = 4;
// Values the preview lists beside the selection of the first.
constexpr int PreviewValues = 20;

QSpinBox *Number(QWidget *Parent, int Maximum = 32767)
{
    auto *box = new QSpinBox(Parent);
    box->setRange(0, Maximum);
    return box;
}

QString InsertNameFor(const QString &Name)
{
    return QString(Name).replace(u' ', u'_');
}

QString EnvironmentNameFor(const QString &Name)
{
    return QStringLiteral("PVN_") + InsertNameFor(Name);
}

} // namespace

frmField::frmField(clsAccountTrigger &Trigger, clsTriggerField &Field, bool IsNew, QWidget *parent)
    : QDialog(parent), Trigger(Trigger), Field(Field), IsNew(IsNew)
{
    setObjectName(QStringLiteral("frmField"));
    Tabs = new QTabWidget(this);
    Tabs->addTab(MakeGeneralTab(), EditorText("FIELDTABGENERAL", "General"));
    Tabs->addTab(MakeExtractTab(), EditorText("FIELDTABEXTRACT", "Extract Data"));
    Tabs->addTab(MakeAttributesTab(), EditorText("FIELDTABATTRIBUTES", "Attributes"));
    Tabs->addTab(MakeDatabaseTab(), EditorText("FIELDTABDATABASE", "Database Field"));
    Tabs->addTab(MakePassToTab(), EditorText("FIELDTABPASSTO", "Pass To"));
    if (Field.Lookup)
        Tabs->setTabEnabled(TabExtract, false);

    btnOK = new QPushButton(EditorText("OK", "OK"), this);
    btnOK->setDefault(true);
    btnSaveNew = new QPushButton(EditorText("SAVENEW", "Save && Ne&w"), this);
    btnCancel = new QPushButton(EditorText("CANCEL", "Cancel"), this);
    auto *help = new QPushButton(EditorText("HELP", "Help"), this);
    connect(btnOK, &QPushButton::clicked, this, &frmField::Accept);
    connect(btnSaveNew, &QPushButton::clicked, this, [this] {
        SaveAndNew = true;
        if (!Accept())
            SaveAndNew = false;
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/") +
                                       (this->Field.Lookup ? QStringLiteral("Lookup_Fields")
                                                           : QStringLiteral("Extracting_Fields")) +
                                       QStringLiteral(".htm")));
    });
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(help);
    buttons->addStretch();
    buttons->addWidget(btnOK);
    buttons->addWidget(btnSaveNew);
    buttons->addWidget(btnCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(Tabs);
    layout->addLayout(buttons);
    setWindowTitle(Field.Lookup ? EditorText("LOOKUPFIELD", "Lookup Field") : EditorText("FIELDTITLE", "Field"));
    resize(820, 640);
    Load();
    ConnectPreview();
    Preview();
}

QWidget *frmField::MakeGeneralTab()
{
    auto *page = new QWidget(this);
    txtName = new QLineEdit(page);
    chkEnabled = new QCheckBox(EditorText("FIELDENABLED", "Enabled"), page);
    connect(txtName, &QLineEdit::textEdited, this, &frmField::NameChanged);
    auto *top = new QFormLayout;
    auto *nameRow = new QHBoxLayout;
    nameRow->addWidget(txtName, 1);
    nameRow->addWidget(chkEnabled);
    top->addRow(EditorText("FIELDNAME", "Name:"), nameRow);
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(top);

    optFindField = new QRadioButton(EditorText("FINDFIELD", "Find Field"), page);
    optBuiltIn = new QRadioButton(EditorText("EXTRACTBUILTIN", "Extract Built-In Field"), page);
    cmboBuiltIn = new QComboBox(page);
    cmboBuiltIn->addItems(MessageTokenList().split(u',', Qt::SkipEmptyParts));
    txtLookFor = new QLineEdit(page);
    txtThenLookFor = new QLineEdit(page);
    chkSubject = new QCheckBox(EditorText("CHECKSUBJECT", "Chec&k Subject Line Only"), page);
    chkStartFromLast =
        new QCheckBox(EditorText("STARTFROMLAST", "&Start From Last Extract Point (Otherwise start from beginning)"), page);
    chkCase = new QCheckBox(EditorText("CASESENSITIVE", "&Case Sensitive"), page);
    chkBlock = new QCheckBox(EditorText("ISBLOCK", "Is Repeating Block"), page);
    btnRegHelp = new QPushButton(EditorText("REGHELP", "Regular E&xpressions Help"), page);
    connect(btnRegHelp, &QPushButton::clicked, this, [] {
        QDesktopServices::openUrl(
            QUrl(QStringLiteral("https://") + Global.AppDomain + QStringLiteral("/help/Regular_Expressions.htm")));
    });
    connect(optFindField, &QRadioButton::toggled, this, &frmField::ShowFindMode);

    if (Field.Lookup) {
        GroupLookup = new QGroupBox(EditorText("LOOKUPGROUP", "Lookup"), page);
        txtLUConnection = new QLineEdit(GroupLookup);
        txtLUSQL = new QPlainTextEdit(GroupLookup);
        txtLUField = new QLineEdit(GroupLookup);
        chkLookupCancelOnFail = new QCheckBox(EditorText("LOOKUPCANCEL", "Cancel Trigger If Lookup Fails"), GroupLookup);
        btnLUTest = new QPushButton(EditorText("TEST", "Test"), GroupLookup);
        btnEditSQL = new QPushButton(EditorText("EDITSQL", "Edit SQL..."), GroupLookup);
        connect(btnLUTest, &QPushButton::clicked, this, &frmField::TestLookup);
        connect(btnEditSQL, &QPushButton::clicked, this, [this] {
            frmInputEditor editor(this);
            editor.setText(txtLUSQL->toPlainText());
            if (editor.exec() == QDialog::Accepted)
                txtLUSQL->setPlainText(editor.text());
        });
        auto *form = new QFormLayout(GroupLookup);
        auto *connection = new QHBoxLayout;
        connection->addWidget(txtLUConnection, 1);
        if (Trigger.Parent && !Trigger.Parent->InternalDatabaseName().isEmpty()) {
            btnInternalDB = new QPushButton(EditorText("INTERNALDB", "Internal Database"), GroupLookup);
            connect(btnInternalDB, &QPushButton::clicked, this, [this] {
                txtLUConnection->setText(this->Trigger.Parent->InternalDatabaseConnectionString());
            });
            connection->addWidget(btnInternalDB);
        }
        form->addRow(EditorText("CONNECTIONSTRING", "Connection String:"), connection);
        form->addRow(EditorText("SQLSTATEMENT", "SQL Statement"), txtLUSQL);
        form->addRow(EditorText("RETURNFIELD", "Return Field:"), txtLUField);
        form->addRow(chkLookupCancelOnFail);
        auto *tests = new QHBoxLayout;
        tests->addWidget(btnEditSQL);
        tests->addWidget(btnLUTest);
        tests->addStretch();
        form->addRow(tests);
        layout->addWidget(GroupLookup);
        for (QWidget *hidden : std::initializer_list<QWidget *>{optFindField, optBuiltIn, cmboBuiltIn, txtLookFor,
                                                                txtThenLookFor, chkSubject, chkStartFromLast, chkCase,
                                                                chkBlock, btnRegHelp})
            hidden->hide();
    } else {
        auto *find = new QGroupBox(EditorText("FINDGROUP", "Find"), page);
        auto *form = new QFormLayout(find);
        auto *mode = new QHBoxLayout;
        mode->addWidget(optFindField);
        mode->addWidget(optBuiltIn);
        mode->addWidget(cmboBuiltIn, 1);
        form->addRow(mode);
        form->addRow(EditorText("LOOKFOR", "Look For:"), txtLookFor);
        form->addRow(EditorText("THENLOOKFOR", "Then Look For:"), txtThenLookFor);
        auto *checks = new QHBoxLayout;
        checks->addWidget(chkSubject);
        checks->addWidget(chkCase);
        checks->addWidget(chkBlock);
        checks->addStretch();
        checks->addWidget(btnRegHelp);
        form->addRow(checks);
        form->addRow(chkStartFromLast);
        layout->addWidget(find);
    }

    auto *helper = new QGroupBox(EditorText("HELPERGROUP", "Find && Extract Helper"), page);
    txtSubject = new QLineEdit(helper);
    txtHelper = new QPlainTextEdit(helper);
    txtHelper->setLineWrapMode(QPlainTextEdit::NoWrap);
    lblPreview = new QLabel(helper);
    lblPreview->setObjectName(QStringLiteral("lblPreview"));
    lblPreview->setWordWrap(true);
    lblPreview->setTextInteractionFlags(Qt::TextSelectableByMouse);
    connect(txtHelper, &QPlainTextEdit::textChanged, this, &frmField::HelperChanged);
    auto *helperForm = new QFormLayout(helper);
    helperForm->addRow(EditorText("HELPERSUBJECT", "Subject:"), txtSubject);
    helperForm->addRow(txtHelper);
    helperForm->addRow(lblPreview);
    layout->addWidget(helper, 1);
    return page;
}

QWidget *frmField::MakeExtractTab()
{
    auto *page = new QWidget(this);
    UntilGroup = new QButtonGroup(this);
    const QStringList captions{EditorText("UNTILEOL", "Until End Of Line"),
                               EditorText("UNTILEOM", "Until End Of &Message"),
                               EditorText("UNTILANYCHARS", "Un&til Any Of These Characters"),
                               EditorText("UNTILMANY", "Until Th&ese Many Characters"),
                               EditorText("UNTILWORDS", "Until T&hese Characters"),
                               EditorText("UNTILMASK", "Use The Find Mask"),
                               EditorText("UNTILENDTAG", "Until End Tag")};
    for (int option = 0; option < captions.size(); ++option) {
        auto *button = new QRadioButton(captions.at(option), page);
        UntilGroup->addButton(button, option);
        optUntil << button;
    }
    txtUntilChars = new QLineEdit(page);
    txtUntilNumber = Number(page);
    txtUntilWords = new QLineEdit(page);
    chkTrim = new QCheckBox(EditorText("TRIMBLANKS", "Clean &and Trim &Blanks"), page);
    txtRemoveFirstXChars = Number(page);
    txtRemoveLastXChars = Number(page);
    chkExtractScript = new QCheckBox(EditorText("EXTRACTSCRIPTON", "Use An Extract Script"), page);
    btnExtractScipt = new QPushButton(EditorText("EXTRACTSCRIPT", "Extract Script"), page);
    connect(btnExtractScipt, &QPushButton::clicked, this, [this] {
        frmInputEditor editor(this);
        editor.setWindowTitle(EditorText("EXTRACTSCRIPT", "Extract Script"));
        editor.setText(this->Field.SBScriptExtract);
        if (editor.exec() == QDialog::Accepted)
            this->Field.SBScriptExtract = editor.text();
    });

    auto *until = new QGroupBox(EditorText("UNTILGROUP", "Extract"), page);
    auto *grid = new QGridLayout(until);
    for (int option = 0; option < optUntil.size(); ++option)
        grid->addWidget(optUntil.at(option), option, 0);
    grid->addWidget(txtUntilChars, 2, 1);
    grid->addWidget(txtUntilNumber, 3, 1, Qt::AlignLeft);
    grid->addWidget(txtUntilWords, 4, 1);
    grid->setColumnStretch(1, 1);
    auto *clean = new QFormLayout;
    clean->addRow(chkTrim);
    clean->addRow(EditorText("REMOVEFIRST", "Remove First Characters:"), txtRemoveFirstXChars);
    clean->addRow(EditorText("REMOVELAST", "Remove Last Characters:"), txtRemoveLastXChars);
    auto *script = new QHBoxLayout;
    script->addWidget(chkExtractScript);
    script->addWidget(btnExtractScipt);
    script->addStretch();
    clean->addRow(script);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(until);
    layout->addLayout(clean);
    layout->addStretch();
    return page;
}

QWidget *frmField::MakeAttributesTab()
{
    auto *page = new QWidget(this);
    cmboFieldType = new QComboBox(page);
    cmboFieldType->addItems(clsTriggerField::FieldTypeLabels);
    connect(cmboFieldType, &QComboBox::currentIndexChanged, this, &frmField::TypeChanged);
    txtDefaultValue = new QLineEdit(page);
    auto *caseBox = new QGroupBox(EditorText("CHANGECASE", "Change Case"), page);
    auto *caseLayout = new QHBoxLayout(caseBox);
    for (const QString &label : clsTriggerField::ChangeCaseLabels) {
        optCase << new QRadioButton(label, caseBox);
        caseLayout->addWidget(optCase.last());
    }
    FrameValidate = new QGroupBox(EditorText("VALIDATE", "Validate"), page);
    FrameValidate->setCheckable(true);
    auto *validate = new QGridLayout(FrameValidate);
    for (const QString &label : clsTriggerField::ValidateOptionLabels)
        optValidate << new QRadioButton(label, FrameValidate);
    txtValidateLow = new QLineEdit(FrameValidate);
    txtValidateHigh = new QLineEdit(FrameValidate);
    txtValidateList = new QLineEdit(FrameValidate);
    cmboInvalidAction = new QComboBox(FrameValidate);
    cmboInvalidAction->addItems(clsTriggerField::ValidateActionLabels);
    validate->addWidget(optValidate.at(0), 0, 0);
    validate->addWidget(optValidate.at(1), 1, 0);
    auto *range = new QHBoxLayout;
    range->addWidget(txtValidateLow);
    range->addWidget(new QLabel(EditorText("TO", "To"), FrameValidate));
    range->addWidget(txtValidateHigh);
    validate->addLayout(range, 1, 1);
    validate->addWidget(optValidate.at(2), 2, 0);
    validate->addWidget(txtValidateList, 2, 1);
    validate->addWidget(new QLabel(EditorText("INVALIDACTION", "If Invalid:"), FrameValidate), 3, 0);
    validate->addWidget(cmboInvalidAction, 3, 1);
    FrameEnvironmentVar = new QGroupBox(EditorText("SETENVVAR", "Set Environment Variable"), page);
    FrameEnvironmentVar->setCheckable(true);
    txtEnvironmentVar = new QLineEdit(FrameEnvironmentVar);
    auto *environment = new QFormLayout(FrameEnvironmentVar);
    environment->addRow(EditorText("ENVVARNAME", "Name:"), txtEnvironmentVar);
    auto *form = new QFormLayout;
    form->addRow(EditorText("FIELDTYPE", "Field Type:"), cmboFieldType);
    form->addRow(EditorText("DEFAULTVALUE", "Default Value:"), txtDefaultValue);
    auto *layout = new QVBoxLayout(page);
    layout->addLayout(form);
    layout->addWidget(caseBox);
    layout->addWidget(FrameValidate);
    layout->addWidget(FrameEnvironmentVar);
    layout->addStretch();
    return page;
}

QWidget *frmField::MakeDatabaseTab()
{
    auto *page = new QWidget(this);
    txtInsertInto = new QLineEdit(page);
    txtInsertFieldname = new QLineEdit(page);
    txtMaxLength = Number(page);
    chkKeyField = new QCheckBox(
        EditorText("KEYFIELD", "Use This Fiel&d To Check If The Record Exists Before Inserting"), page);
    auto *form = new QFormLayout(page);
    form->addRow(EditorText("INSERTINTO", "Database Table:"), txtInsertInto);
    form->addRow(EditorText("INSERTFIELDNAME", "Database Field:"), txtInsertFieldname);
    form->addRow(EditorText("MAXLENGTH", "Maximum Length:"), txtMaxLength);
    form->addRow(chkKeyField);
    return page;
}

QWidget *frmField::MakePassToTab()
{
    auto *page = new QWidget(this);
    cmboPassTo = new QComboBox(page);
    cmboPassTo->addItem(EditorText("PASSTONONE", "(none)"));
    if (Trigger.Parent)
        for (const clsAccountTrigger *other : Trigger.Parent->Triggers)
            cmboPassTo->addItem(other->Name, other->TriggerID);
    txtPassToSubject = new QLineEdit(page);
    txtPassToBody = new QLineEdit(page);
    auto *form = new QFormLayout(page);
    form->addRow(EditorText("PASSTOTRIGGER2", "Pass Extracted Data To Trigger:"), cmboPassTo);
    form->addRow(EditorText("PASSTOSUBJECT", "Subject:"), txtPassToSubject);
    form->addRow(EditorText("PASSTOBODY", "Body:"), txtPassToBody);
    return page;
}

void frmField::Load()
{
    m_loading = true;
    const clsTriggerField &f = Field;
    txtName->setText(f.Name);
    m_lastName = f.Name;
    chkEnabled->setChecked(f.Enabled);
    optBuiltIn->setChecked(f.ExtractBuiltIn);
    optFindField->setChecked(!f.ExtractBuiltIn);
    const int builtIn = cmboBuiltIn->findText(f.ExtractBuiltInField, Qt::MatchFixedString);
    cmboBuiltIn->setCurrentIndex(builtIn < 0 ? 0 : builtIn);
    txtLookFor->setText(f.LookFor);
    txtThenLookFor->setText(f.ThenLookFor);
    chkSubject->setChecked(f.CheckSubjectLine);
    chkStartFromLast->setChecked(f.StartFromLastExtractPoint == 1);
    chkCase->setChecked(f.CaseSensitive);
    chkBlock->setChecked(f.Block);
    if (GroupLookup) {
        txtLUConnection->setText(f.LookupConnection);
        txtLUSQL->setPlainText(f.LookupSQL);
        txtLUField->setText(f.LookupField);
        chkLookupCancelOnFail->setChecked(f.LookupCancelOnFail);
    }
    int option = 0;
    if (f.Until_EndOfBody)
        option = 1;
    else if (f.Until_AnyChars)
        option = 2;
    else if (f.Until_ThisMany)
        option = 3;
    else if (f.Until_TheseWords)
        option = 4;
    else if (f.ExtractMask)
        option = 5;
    else if (f.Until_EndTag)
        option = 6;
    optUntil.at(option)->setChecked(true);
    txtUntilChars->setText(f.UntilAnyOfTheseChars);
    txtUntilNumber->setValue(f.UntilThisManyChars);
    txtUntilWords->setText(f.UntilTheseWords);
    chkTrim->setChecked(f.TrimBlanks);
    txtRemoveFirstXChars->setValue(f.RemoveFirstXChars);
    txtRemoveLastXChars->setValue(f.RemoveLastXChars);
    chkExtractScript->setChecked(f.SBScriptExtractEnabled);
    cmboFieldType->setCurrentIndex(qBound(0, int(f.FieldType), int(clsTriggerField::FieldTypeLabels.size()) - 1));
    TypeChanged(cmboFieldType->currentIndex());
    txtDefaultValue->setText(f.DefaultValue);
    optCase.value(f.ChangeCase, optCase.first())->setChecked(true);
    FrameValidate->setChecked(f.Validate);
    optValidate.value(f.ValidateOption, optValidate.first())->setChecked(true);
    txtValidateLow->setText(f.ValidateLow.ToText());
    txtValidateHigh->setText(f.ValidateHigh.ToText());
    txtValidateList->setText(f.ValidateList);
    cmboInvalidAction->setCurrentIndex(qBound(0, int(f.ValidateAction), 1));
    FrameEnvironmentVar->setChecked(f.EnvironmentVarSet);
    txtEnvironmentVar->setText(f.EnvironmentVarName);
    txtInsertInto->setText(f.InsertInto);
    txtInsertFieldname->setText(f.InsertFieldName);
    txtMaxLength->setValue(f.MaxLength);
    chkKeyField->setChecked(f.KeyExists);
    const int passTo = f.PassToTrigger.isEmpty() ? 0 : cmboPassTo->findData(f.PassToTrigger);
    cmboPassTo->setCurrentIndex(passTo < 0 ? 0 : passTo);
    txtPassToSubject->setText(f.PassToSubject);
    txtPassToBody->setText(f.PassToBody);
    txtSubject->setText(Trigger.HelperSubject);
    txtHelper->setPlainText(Trigger.HelperMessage);
    ShowFindMode();
    m_loading = false;
}

void frmField::WriteTo(clsTriggerField &Target) const
{
    Target.Name = txtName->text().trimmed();
    Target.Enabled = chkEnabled->isChecked();
    Target.ExtractBuiltIn = optBuiltIn->isChecked() && !Target.Lookup;
    Target.ExtractBuiltInField = Target.ExtractBuiltIn ? cmboBuiltIn->currentText() : QString();
    Target.CheckSubjectLine = chkSubject->isChecked();
    Target.StartFromLastExtractPoint = chkStartFromLast->isChecked() ? 1 : 0;
    Target.LookFor = txtLookFor->text();
    Target.ThenLookFor = txtThenLookFor->text();
    Target.CaseSensitive = chkCase->isChecked();
    Target.Block = chkBlock->isChecked();
    const int option = UntilGroup->checkedId();
    Target.Until_EndOfLine = option == 0;
    Target.Until_EndOfBody = option == 1;
    Target.Until_AnyChars = option == 2;
    Target.Until_ThisMany = option == 3;
    Target.Until_TheseWords = option == 4;
    Target.ExtractMask = option == 5;
    Target.Until_EndTag = option == 6;
    Target.UntilAnyOfTheseChars = txtUntilChars->text();
    Target.UntilThisManyChars = qint16(txtUntilNumber->value());
    Target.UntilTheseWords = txtUntilWords->text();
    Target.TrimBlanks = chkTrim->isChecked();
    Target.RemoveFirstXChars = qint16(txtRemoveFirstXChars->value());
    Target.RemoveLastXChars = qint16(txtRemoveLastXChars->value());
    Target.FieldType = qint16(cmboFieldType->currentIndex());
    if (Target.ExtractBuiltIn && Target.ExtractBuiltInField.compare(QStringLiteral("%msg_date%"), Qt::CaseInsensitive) == 0)
        Target.FieldType = DateTimeType;
    Target.SBScriptExtractEnabled = chkExtractScript->isChecked();
    Target.InsertInto = txtInsertInto->text().trimmed();
    Target.InsertFieldName = txtInsertFieldname->text().trimmed();
    Target.MaxLength = qint16(txtMaxLength->value());
    Target.EnvironmentVarSet = FrameEnvironmentVar->isChecked();
    Target.EnvironmentVarName = txtEnvironmentVar->text().trimmed();
    Target.KeyExists = chkKeyField->isChecked();
    if (GroupLookup) {
        Target.LookupConnection = txtLUConnection->text();
        Target.LookupSQL = txtLUSQL->toPlainText();
        Target.LookupField = txtLUField->text();
        Target.LookupCancelOnFail = chkLookupCancelOnFail->isChecked();
    }
    Target.DefaultValue = txtDefaultValue->text();
    for (int option = 0; option < optCase.size(); ++option)
        if (optCase.at(option)->isChecked())
            Target.ChangeCase = qint16(option);
    Target.Validate = FrameValidate->isChecked();
    for (int option = 0; option < optValidate.size(); ++option)
        if (optValidate.at(option)->isChecked())
            Target.ValidateOption = qint16(option);
    Currency low, high;
    Target.ValidateLow = Currency::FromText(txtValidateLow->text(), low) ? low : Currency{};
    Target.ValidateHigh = Currency::FromText(txtValidateHigh->text(), high) ? high : Currency{};
    Target.ValidateList = txtValidateList->text();
    Target.ValidateAction = qint16(cmboInvalidAction->currentIndex());
    if (cmboPassTo->currentIndex() <= 0) {
        Target.PassToTrigger.clear();
        Target.PassToSubject.clear();
        Target.PassToBody.clear();
    } else {
        Target.PassToTrigger = cmboPassTo->currentData().toString();
        Target.PassToSubject = txtPassToSubject->text();
        Target.PassToBody = txtPassToBody->text();
    }
}

void frmField::NameChanged(const QString &Name)
{
    auto follow = [](QLineEdit *Edit, const QString &Before, const QString &After) {
        if (Edit->text().isEmpty() || Edit->text() == Before)
            Edit->setText(After);
    };
    follow(txtInsertFieldname, InsertNameFor(m_lastName), InsertNameFor(Name));
    follow(txtEnvironmentVar, EnvironmentNameFor(m_lastName), EnvironmentNameFor(Name));
    if (!Field.Lookup)
        follow(txtLookFor, m_lastName, Name);
    m_lastName = Name;
}

void frmField::ShowFindMode()
{
    const bool find = optFindField->isChecked();
    cmboBuiltIn->setEnabled(!find);
    for (QWidget *control : std::initializer_list<QWidget *>{txtLookFor, txtThenLookFor, chkSubject, chkStartFromLast,
                                                             chkCase, chkBlock})
        control->setEnabled(find);
}

void frmField::TypeChanged(int Type)
{
    // Only the text type has a length in the database.
    txtMaxLength->setEnabled(Type == 0);
}

void frmField::HelperChanged()
{
    if (m_loading)
        return;
    const QString text = txtHelper->toPlainText();
    const bool html = text.contains(QStringLiteral("<body "), Qt::CaseInsensitive) ||
                      text.contains(QStringLiteral("<body>"), Qt::CaseInsensitive) ||
                      text.contains(QStringLiteral("<html>"), Qt::CaseInsensitive);
    if (!html) {
        m_htmlAsked = false;
        return;
    }
    if (m_htmlAsked)
        return;
    m_htmlAsked = true;
    if (QuestionBox(this, Global.AppTitle,
                    EditorText("CONVPLAINTEXT", "Text is HTML. Do you want to convert to plain text?")) ==
        QMessageBox::Yes) {
        txtHelper->setPlainText(HtmlToText(text));
        Preview();
    }
}

void frmField::ConnectPreview()
{
    const auto run = [this] {
        if (!m_loading)
            Preview();
    };
    for (QLineEdit *edit : {txtLookFor, txtThenLookFor, txtUntilChars, txtUntilWords, txtSubject})
        connect(edit, &QLineEdit::textChanged, this, run);
    for (QCheckBox *check : {chkSubject, chkStartFromLast, chkCase, chkBlock, chkTrim, chkEnabled})
        connect(check, &QCheckBox::toggled, this, run);
    for (QSpinBox *number : {txtUntilNumber, txtRemoveFirstXChars, txtRemoveLastXChars})
        connect(number, &QSpinBox::valueChanged, this, run);
    connect(UntilGroup, &QButtonGroup::idToggled, this, [run](int, bool On) {
        if (On)
            run();
    });
    connect(optFindField, &QRadioButton::toggled, this, run);
}

QString frmField::ExpressionError(const clsTriggerField &Probe) const
{
    QStringList expressions{Probe.LookFor, Probe.ThenLookFor};
    if (Probe.Until_TheseWords)
        expressions << Probe.UntilTheseWords;
    for (const QString &expression : expressions) {
        if (expression.isEmpty() || expression == QStringLiteral("*"))
            continue;
        const QRegularExpression compiled(expression);
        if (!compiled.isValid())
            return EditorText("REGEXERROR", "Error in expression") + QStringLiteral(" \"") + expression +
                   QStringLiteral("\": ") + compiled.errorString() + QStringLiteral(" (at %1)").arg(compiled.patternErrorOffset() + 1);
    }
    return QString();
}

void frmField::Preview()
{
    Found.clear();
    lblPreview->clear();
    if (txtHelper->document()->isEmpty() && txtSubject->text().isEmpty())
        return;
    clsTriggerField probe;
    probe.Lookup = Field.Lookup;
    WriteTo(probe);
    probe.Enabled = true;
    if (!clsFieldExtractor::Searches(probe) || probe.SBScriptExtractEnabled)
        return;
    const QString error = ExpressionError(probe);
    if (!error.isEmpty()) {
        lblPreview->setText(error);
        return;
    }
    Extractor.Subject = txtSubject->text();
    // Messages end their lines with CR LF, as the server reads them.
    Extractor.Body = txtHelper->toPlainText().replace(u'\n', QStringLiteral("\r\n"));
    const int position = Trigger.FieldsToProcess().FieldPosition(&Field);
    if (position > 0) {
        // The fields before this one set the extract points, as in a run.
        Extractor.Reset();
        for (int before = 1; before < position; ++before)
            if (clsFieldExtractor::Searches(*Trigger.FieldsToProcess().Item(before)))
                Extractor.Extract(*Trigger.FieldsToProcess().Item(before));
        Found = Extractor.Extract(probe);
    } else {
        Found = Extractor.Preview(Trigger.FieldsToProcess(), probe);
    }
    if (Found.isEmpty()) {
        lblPreview->setText(EditorText("PREVIEWNOTFOUND", "Not found"));
        return;
    }
    QStringList values;
    for (int at = 0; at < Found.size() && at < PreviewValues; ++at)
        values << Found.at(at).Value;
    QString shown = (Found.size() == 1 ? EditorText("PREVIEWVALUE", "Value: ")
                                       : EditorText("PREVIEWVALUES", "Values (%1): ").arg(Found.size())) +
                    values.join(QStringLiteral(" | "));
    lblPreview->setText(shown.toHtmlEscaped().replace(u'\n', u' '));
    const clsFieldExtractor::FoundValue &first = Found.first();
    if (probe.CheckSubjectLine) {
        txtSubject->setSelection(first.Position - 1, first.Length);
    } else {
        // The box holds one character for each CR LF.
        const QStringView body(Extractor.Body);
        const qsizetype start = first.Position - 1;
        const qsizetype startInBox = start - body.first(start).count(u'\r');
        const qsizetype length = first.Length - body.sliced(start, first.Length).count(u'\r');
        QTextCursor cursor(txtHelper->document());
        cursor.setPosition(int(startInBox));
        cursor.setPosition(int(startInBox + length), QTextCursor::KeepAnchor);
        txtHelper->setTextCursor(cursor);
        txtHelper->ensureCursorVisible();
    }
}

bool frmField::ValidateControls()
{
    const QString name = txtName->text().trimmed();
    const int existing = Trigger.FieldsToProcess().FieldNoFromName(name);
    QString problem;
    if (existing > 0 && (IsNew || Trigger.FieldsToProcess().Item(existing) != &Field))
        problem = EditorText("ERRORFIELDEXISTS", "A field already exists with the same name. Field names must be unique.");
    else if (name.isEmpty())
        problem = EditorText("ERRORNONAME", "You must enter a Name");
    else if (!Field.Lookup && optFindField->isChecked() && txtLookFor->text().trimmed().isEmpty() &&
             !chkExtractScript->isChecked())
        problem = EditorText("ERRORNOLOOKFORVAL", "You must enter a LookFor value");
    if (problem.isEmpty())
        return true;
    WarningBox(this, problem);
    return false;
}

bool frmField::Accept()
{
    if (!ValidateControls())
        return false;
    WriteTo(Field);
    Trigger.HelperMessage = txtHelper->toPlainText().replace(u'\n', QStringLiteral("\r\n"));
    Trigger.HelperSubject = txtSubject->text();
    accept();
    return true;
}

void frmField::TestLookup()
{
    const QString connection = txtLUConnection->text().trimmed();
    if (connection.isEmpty() || txtLUSQL->toPlainText().trimmed().isEmpty()) {
        WarningBox(this, EditorText("ERRORNOCONSTRING", "You need to specify the Connection String and SQL Statement"));
        return;
    }
    if (!ServerOpensDatabase(this, connection))
        return;
    QMessageBox::information(this, Global.AppTitle,
                             EditorText("DBTESTOK", "The server opened the database with this connection string."));
}
