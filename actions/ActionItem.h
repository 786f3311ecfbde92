#pragma once
#include <QString>

#include <memory>
#include <utility>

class clsXML;

// One action of a trigger's list, of any kind. The action classes share no
// base: each has the members ID, Enabled and Condition (data), ClassName(),
// ClassDesc(), ActionDescription(), XML(), setXML() and ReadXML(), and this
// holder deals with them by name. As<T>() gives the concrete action.
class ActionItem
{
public:
    template <class T> explicit ActionItem(T Action) : m_self(std::make_unique<Model<T>>(std::move(Action))) {}

    template <class T> static std::unique_ptr<ActionItem> Make(T Action)
    {
        return std::make_unique<ActionItem>(std::move(Action));
    }

    QString ID() const { return m_self->ID(); }
    void setID(const QString &Value) { m_self->setID(Value); }
    QString ClassName() const { return m_self->ClassName(); }
    QString ClassDesc() const { return m_self->ClassDesc(); }
    bool Enabled() const { return m_self->Enabled(); }
    void setEnabled(bool Value) { m_self->setEnabled(Value); }
    QString Condition() const { return m_self->Condition(); }
    void setCondition(const QString &Value) { m_self->setCondition(Value); }
    QString ActionDescription() const { return m_self->ActionDescription(); }
    QString XML() const { return m_self->XML(); }
    void setXML(const QString &Value) { m_self->setXML(Value); }
    void ReadXML(clsXML &Reader) { m_self->ReadXML(Reader); }

    // The action as its own class; nullptr when it is of another kind.
    template <class T> T *As()
    {
        auto *model = dynamic_cast<Model<T> *>(m_self.get());
        return model ? &model->Action : nullptr;
    }
    template <class T> const T *As() const
    {
        const auto *model = dynamic_cast<const Model<T> *>(m_self.get());
        return model ? &model->Action : nullptr;
    }

private:
    struct Concept
    {
        virtual ~Concept() = default;
        virtual QString ID() const = 0;
        virtual void setID(const QString &Value) = 0;
        virtual QString ClassName() const = 0;
        virtual QString ClassDesc() const = 0;
        virtual bool Enabled() const = 0;
        virtual void setEnabled(bool Value) = 0;
        virtual QString Condition() const = 0;
        virtual void setCondition(const QString &Value) = 0;
        virtual QString ActionDescription() const = 0;
        virtual QString XML() const = 0;
        virtual void setXML(const QString &Value) = 0;
        virtual void ReadXML(clsXML &Reader) = 0;
    };

    template <class T> struct Model final : Concept
    {
        explicit Model(T Value) : Action(std::move(Value)) {}
        QString ID() const override { return Action.ID; }
        void setID(const QString &Value) override { Action.ID = Value; }
        QString ClassName() const override { return Action.ClassName(); }
        QString ClassDesc() const override { return Action.ClassDesc(); }
        bool Enabled() const override { return Action.Enabled; }
        void setEnabled(bool Value) override { Action.Enabled = Value; }
        QString Condition() const override { return Action.Condition; }
        void setCondition(const QString &Value) override { Action.Condition = Value; }
        QString ActionDescription() const override { return Action.ActionDescription(); }
        QString XML() const override { return Action.XML(); }
        void setXML(const QString &Value) override { Action.setXML(Value); }
        void ReadXML(clsXML &Reader) override { Action.ReadXML(Reader); }
        T Action;
    };

    std::unique_ptr<Concept> m_self;
};
