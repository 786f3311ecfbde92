#include "colActions.h"
#include "ActionCatalogue.h"
#include "clsActionComment.h"
#include "clsActionLogical.h"
#include "clsActionPassTo.h"
#include "clsActionRaw.h"
#include "clsActionScript.h"
#include "clsActionSetVariable.h"
#include "foundation/Startup.h"
#include "foundation/clsXML.h"

#include <QHash>
#include <QList>
#include <algorithm>
#include <exception>

namespace {

const QString IfClass = QStringLiteral("If");
const QString ElseClass = QStringLiteral("Else");
const QString EndIfClass = QStringLiteral("EndIf");

struct KnownKind
{
    QString ClassName;
    QString ClassDesc;
};

// Every kind of the catalogue and the hidden ones, by lower-cased key without
// a CRM suffix.
const QHash<QString, KnownKind> &KnownKinds()
{
    static const QHash<QString, KnownKind> kinds = [] {
        QHash<QString, KnownKind> byKey;
        QList<ActionKind> all = ActionCatalogue();
        all += ActionHiddenKinds();
        for (const ActionKind &kind : all) {
            const QString name = kind.Key.section(u'.', 0, 0);
            byKey.insert(name.toLower(), KnownKind{name, kind.ClassDesc});
        }
        return byKey;
    }();
    return kinds;
}

// The LogicalType of a logical key; "logical" keeps the class's default.
qint16 LogicalTypeOfKey(const QString &Key)
{
    static const QHash<QString, qint16> types{
        {QStringLiteral("logical"), clsActionLogical().LogicalType},
        {QStringLiteral("if"), 1},
        {QStringLiteral("else"), 2},
        {QStringLiteral("endif"), 3},
        {QStringLiteral("end"), 4},
        {QStringLiteral("label"), 5},
        {QStringLiteral("goto"), 6},
    };
    return types.value(Key, 0);
}

// Splits "crmget.msd" into "crmget" and "MSD"; only the three CRM kinds take
// a suffix. False for a suffix behind any other key.
bool SplitCRMKey(const QString &Key, QString &Base, QString &CRMType)
{
    Base = Key;
    CRMType.clear();
    if (Key.endsWith(QStringLiteral(".msd"))) {
        Base.chop(4);
        CRMType = QStringLiteral("MSD");
    } else if (Key.endsWith(QStringLiteral(".sfdc"))) {
        Base.chop(5);
        CRMType = QStringLiteral("SFDC");
    }
    static const QStringList crmKinds{QStringLiteral("crmget"), QStringLiteral("crmupdate"),
                                      QStringLiteral("crmattach")};
    return CRMType.isEmpty() || crmKinds.contains(Base);
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
    return AddRead(Reader.PlainSearch(QStringLiteral("Class")), [&Reader](ActionItem &action) { action.ReadXML(Reader); });
}

template <typename Read> ActionItem *colActions::AddRead(const QString &key, Read read)
{
    try {
        if (key.isEmpty())
            return nullptr;
        std::unique_ptr<ActionItem> action = NewObject(key);
        if (!action)
            return nullptr;
        read(*action);
        return Add(std::move(action));
    } catch (const std::exception &error) {
        LogError(QStringLiteral("colActions.AddXML"), error);
        return nullptr;
    }
}

// The built records first; every other known kind is held raw until its own
// record exists.
std::unique_ptr<ActionItem> colActions::NewObject(const QString &ClassName)
{
    try {
        const QString key = ClassName.toLower();
        if (const qint16 logicalType = LogicalTypeOfKey(key)) {
            clsActionLogical logical;
            logical.LogicalType = logicalType;
            return ActionItem::Make(std::move(logical));
        }
        if (key == QStringLiteral("comment"))
            return ActionItem::Make(clsActionComment());
        if (key == QStringLiteral("set"))
            return ActionItem::Make(clsActionSetVariable());
        if (key == QStringLiteral("passto"))
            return ActionItem::Make(clsActionPassTo());
        if (key == QStringLiteral("script"))
            return ActionItem::Make(clsActionScript());
        QString base;
        QString crmType;
        if (!SplitCRMKey(key, base, crmType))
            return nullptr;
        const auto kind = KnownKinds().constFind(base);
        if (kind == KnownKinds().constEnd())
            return nullptr;
        clsActionRaw raw(kind->ClassName, kind->ClassDesc);
        raw.CRMType = crmType;
        return ActionItem::Make(std::move(raw));
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
    if (m_actions.Contains(key)) {
        LogError(QStringLiteral("colActions.Add"), QStringLiteral("An action with the ID ") + key
                                                        + QStringLiteral(" is already in the list"));
        return nullptr;
    }
    return m_actions.Add(std::move(NewAction), key, Before);
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

// Until the Validation kind has its own record it is held raw, and the value
// comes from its kept fragment.
QString colActions::HTMLForValidationID(const QString &ID) const
{
    const ActionItem *action = m_actions.Item(ID);
    if (!action)
        return QString();
    const auto *raw = action->As<clsActionRaw>();
    if (action->ClassName() != QStringLiteral("Validation") || !raw) {
        LogError(QStringLiteral("colActions.HTMLForValidationID"),
                 QStringLiteral("The action ") + ID + QStringLiteral(" is no Validation action"));
        return QString();
    }
    return raw->TagValue(QStringLiteral("ConfirmationHTML"));
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
