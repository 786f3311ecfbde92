#include "colActions.h"
#include "ActionCatalogue.h"
#include "clsActionAZ.h"
#include "clsActionCSV.h"
#include "clsActionComment.h"
#include "clsActionDB.h"
#include "clsActionDBCustom.h"
#include "clsActionDBToken.h"
#include "clsActionExcel.h"
#include "clsActionFax.h"
#include "clsActionForward.h"
#include "clsActionJabber.h"
#include "clsActionLogical.h"
#include "clsActionMSG.h"
#include "clsActionPassTo.h"
#include "clsActionPopup.h"
#include "clsActionReport.h"
#include "clsActionSMS.h"
#include "clsActionRaw.h"
#include "clsActionScript.h"
#include "clsActionSetVariable.h"
#include "clsActionText.h"
#include "clsActionVCal.h"
#include "clsActionValidation.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QHash>
#include <QList>
#include <QStringList>
#include <algorithm>
#include <exception>
#include <functional>

namespace {

const QString IfClass = QStringLiteral("If");
const QString ElseClass = QStringLiteral("Else");
const QString EndIfClass = QStringLiteral("EndIf");

const MarkupTag ClassTag = QStringLiteral("Class");

// Makes one kind of action under the ID given.
using Maker = std::function<std::unique_ptr<ActionItem>(const QString &ActionID)>;

template <class Record> Maker RecordMaker()
{
    return [](const QString &ActionID) { return ActionItem::Make(Record(ActionID)); };
}

Maker LogicalMaker(qint16 LogicalType)
{
    return [LogicalType](const QString &ActionID) {
        clsActionLogical logical(ActionID);
        logical.LogicalType = LogicalType;
        return ActionItem::Make(std::move(logical));
    };
}

Maker RawMaker(const QString &ClassName, const QString &ClassDesc, const QString &CRMType)
{
    return [ClassName, ClassDesc, CRMType](const QString &ActionID) {
        clsActionRaw raw(ClassName, ClassDesc, ActionID);
        raw.CRMType = CRMType;
        return ActionItem::Make(std::move(raw));
    };
}

struct WrittenMaker
{
    QString Written; // the key as this system writes it
    Maker Make;
};

// Every kind of the catalogue and the hidden ones held raw; only the three CRM
// kinds also take a suffix, "crmget.msd" or "crmget.sfdc".
void AddRawKinds(QHash<QString, WrittenMaker> &ByLowerKey)
{
    static const QStringList crmKinds{QStringLiteral("crmget"), QStringLiteral("crmupdate"),
                                      QStringLiteral("crmattach")};
    QList<ActionKind> all = ActionCatalogue();
    all += ActionHiddenKinds();
    for (const ActionKind &kind : all) {
        const QString name = kind.Key.section(u'.', 0, 0);
        const QString key = name.toLower();
        ByLowerKey.insert(key, {name, RawMaker(name, kind.ClassDesc, QString())});
        if (!crmKinds.contains(key))
            continue;
        for (const QString &crmType : {QStringLiteral("MSD"), QStringLiteral("SFDC")}) {
            const QString written = name + u'.' + crmType;
            ByLowerKey.insert(written.toLower(), {written, RawMaker(name, kind.ClassDesc, crmType)});
        }
    }
}

// The built records, and the logical keys, each of its LogicalType;
// "Logical" keeps the class's default.
void AddRecordKinds(QHash<QString, WrittenMaker> &ByLowerKey)
{
    const auto add = [&ByLowerKey](const QString &written, Maker make) {
        ByLowerKey.insert(written.toLower(), {written, std::move(make)});
    };
    add(QStringLiteral("Comment"), RecordMaker<clsActionComment>());
    add(QStringLiteral("Set"), RecordMaker<clsActionSetVariable>());
    add(QStringLiteral("PassTo"), RecordMaker<clsActionPassTo>());
    add(QStringLiteral("Script"), RecordMaker<clsActionScript>());
    add(QStringLiteral("DatabaseUpdate"), RecordMaker<clsActionDB>());
    add(QStringLiteral("DatabaseUpdateCustom"), RecordMaker<clsActionDBCustom>());
    add(QStringLiteral("CSV"), RecordMaker<clsActionCSV>());
    add(QStringLiteral("Excel"), RecordMaker<clsActionExcel>());
    add(QStringLiteral("TextFile"), RecordMaker<clsActionText>());
    add(QStringLiteral("Azure"), RecordMaker<clsActionAZ>());
    add(QStringLiteral("UpdateToken"), RecordMaker<clsActionDBToken>());
    add(QStringLiteral("Report"), RecordMaker<clsActionReport>());
    add(QStringLiteral("Message"), RecordMaker<clsActionMSG>());
    add(QStringLiteral("Forward"), RecordMaker<clsActionForward>());
    add(QStringLiteral("SMS"), RecordMaker<clsActionSMS>());
    add(QStringLiteral("VCal"), RecordMaker<clsActionVCal>());
    add(QStringLiteral("Fax"), RecordMaker<clsActionFax>());
    add(QStringLiteral("Popup"), RecordMaker<clsActionPopup>());
    add(QStringLiteral("Jabber"), RecordMaker<clsActionJabber>());
    add(QStringLiteral("Validation"), RecordMaker<clsActionValidation>());
    add(QStringLiteral("Logical"), LogicalMaker(clsActionLogical().LogicalType));
    const QString logicalKeys[] = {QStringLiteral("If"),  QStringLiteral("Else"),  QStringLiteral("EndIf"),
                                   QStringLiteral("End"), QStringLiteral("Label"), QStringLiteral("GoTo")};
    for (qint16 type = 1; type <= 6; ++type)
        add(logicalKeys[type - 1], LogicalMaker(type));
}

// The maker of every class key NewObject takes, under the key lower-cased
// and as this system writes it, so that a stored key is found without
// lower-casing it. The records replace the raw kinds of their keys.
const QHash<QString, Maker> &Makers()
{
    static const QHash<QString, Maker> makers = [] {
        QHash<QString, WrittenMaker> byLowerKey;
        AddRawKinds(byLowerKey);
        AddRecordKinds(byLowerKey);
        QHash<QString, Maker> byKey;
        for (auto it = byLowerKey.cbegin(); it != byLowerKey.cend(); ++it) {
            byKey.insert(it.key(), it->Make);
            byKey.insert(it->Written, it->Make);
        }
        return byKey;
    }();
    return makers;
}

} // namespace

void colActions::setParent(clsAccountTrigger *Value)
{
    if (!m_parent)
        m_parent = Value;
}

QString colActions::ClassFromXML(QStringView XML)
{
    static constexpr QStringView open = u"<Class>";
    const qsizetype start = XML.indexOf(open);
    if (start < 0)
        return QString();
    const qsizetype from = start + open.size();
    const qsizetype end = XML.indexOf(u"</Class>", from);
    return end < 0 ? QString() : XML.mid(from, end - from).toString();
}

ActionItem *colActions::AddXML(const QString &XML)
{
    return AddRead(ClassFromXML(XML), [&XML](ActionItem &action) { action.setXML(XML); });
}

ActionItem *colActions::AddXML(clsXML &Reader)
{
    return AddRead(Reader.PlainSearch(ClassTag), [&Reader](ActionItem &action) { action.ReadXML(Reader); });
}

template <typename Read> ActionItem *colActions::AddRead(const QString &key, Read read)
{
    try {
        if (key.isEmpty())
            return nullptr;
        // No new ID: the read replaces it.
        std::unique_ptr<ActionItem> action = MakeObject(key, QString());
        if (!action)
            return nullptr;
        read(*action);
        return Add(std::move(action));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colActions.AddXML"), error);
        return nullptr;
    }
}

std::unique_ptr<ActionItem> colActions::NewObject(const QString &ClassName)
{
    return MakeObject(ClassName, NewUniqueID());
}

std::unique_ptr<ActionItem> colActions::MakeObject(const QString &ClassName, const QString &ActionID)
{
    try {
        const QHash<QString, Maker> &makers = Makers();
        auto maker = makers.constFind(ClassName);
        if (maker == makers.constEnd())
            maker = makers.constFind(ClassName.toLower());
        return maker == makers.constEnd() ? nullptr : (*maker)(ActionID);
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colActions.NewObject"), error);
        return nullptr;
    }
}

ActionItem *colActions::Insert(std::unique_ptr<ActionItem> NewAction, int Before)
{
    if (!NewAction)
        return nullptr;
    const QString key = NewAction->ID();
    ActionItem *added = m_actions.Add(std::move(NewAction), key, Before);
    if (!added)
        LogError(QStringLiteral("colActions.Add"), QStringLiteral("An action with the ID ") + key
                                                        + QStringLiteral(" is already in the list"));
    return added;
}

ActionItem *colActions::Add(std::unique_ptr<ActionItem> NewAction)
{
    return Insert(std::move(NewAction), 0);
}

ActionItem *colActions::AddAfter(std::unique_ptr<ActionItem> NewAction, const QString &AfterID)
{
    const int n = ActionNoFromID(AfterID);
    return n == 0 ? nullptr : Insert(std::move(NewAction), n + 1);
}

ActionItem *colActions::AddBefore(std::unique_ptr<ActionItem> NewAction, const QString &BeforeID)
{
    const int n = ActionNoFromID(BeforeID);
    return n == 0 ? nullptr : Insert(std::move(NewAction), n);
}

QString colActions::ItemType(int Index) const
{
    const ActionItem *action = m_actions.Item(Index);
    return action ? action->ClassName() : QString();
}

QString colActions::HTMLForValidationID(const QString &ID) const
{
    const ActionItem *action = m_actions.Item(ID);
    if (!action)
        return QString();
    const auto *validation = action->As<clsActionValidation>();
    if (!validation) {
        LogError(QStringLiteral("colActions.HTMLForValidationID"),
                 QStringLiteral("The action ") + ID + QStringLiteral(" is no Validation action"));
        return QString();
    }
    return validation->ConfirmationHTML;
}

int colActions::ActionNoFromID(const QString &ID) const
{
    const QString id = ID.trimmed();
    const int index = m_actions.IndexOf(id);
    return index > 0 && m_actions.Item(index)->ID() == id ? index : 0;
}

// The level of each position at once: the running sum of If (+1) and EndIf
// (-1) before it, a negative sum counting as 0. Index 0 is unused.
QList<int> colActions::Levels() const
{
    QList<int> levels(Count() + 1, 0);
    int sum = 0;
    for (int p = 1; p <= Count(); ++p) {
        levels[p] = std::max(sum, 0);
        const QString type = ItemType(p);
        if (type == IfClass)
            ++sum;
        else if (type == EndIfClass)
            --sum;
    }
    return levels;
}

int colActions::IFBlockLevel(const QString &ForActionID) const
{
    const int n = ActionNoFromID(ForActionID);
    return n < 2 ? 0 : Levels().at(n);
}

// Kept as it has always answered: False in every case. The trigger editor
// relies on it to give every new If its own End If.
bool colActions::IFBlockHasEndIf(const QString &) const
{
    return false;
}

bool colActions::IFBlocksClosed() const
{
    int sum = 0;
    for (const ActionItem *action : m_actions) {
        const QString type = action->ClassName();
        if (type == IfClass)
            ++sum;
        else if (type == EndIfClass)
            --sum;
    }
    return sum == 0;
}

bool colActions::IFElseBlocksClosed() const
{
    const QList<int> levels = Levels();
    qint64 c = 0;
    for (int p = 1; p <= Count(); ++p) {
        const QString type = ItemType(p);
        if (type == ElseClass) {
            --c;
            if (!ElseBlockHasEndIf(levels, p))
                return false;
        } else if (type == EndIfClass) {
            ++c;
        }
    }
    return c >= 0;
}

bool colActions::ElseBlockHasEndIf(const QList<int> &Levels, int Position) const
{
    const int level = Levels.at(Position);
    int counter = 1;
    for (int p = Position + 1; p <= Count() && counter > 0; ++p)
        if (Levels.at(p) == level && ItemType(p) == EndIfClass)
            --counter;
    return counter == 0;
}

QString colActions::IFBlockID(const QString &ForActionID) const
{
    const int n = ActionNoFromID(ForActionID);
    QHash<int, QString> openIfs; // ID of the last If that opened each depth
    int depth = 0;
    for (int p = 1; p < n; ++p) {
        const ActionItem *action = m_actions.Item(p);
        if (action->ClassName() == IfClass)
            openIfs.insert(++depth, action->ID());
        else if (action->ClassName() == EndIfClass)
            --depth;
    }
    return depth > 0 ? openIfs.value(depth) : QString();
}
