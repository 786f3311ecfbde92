#pragma once
#include <QHash>
#include <QString>

#include <algorithm>
#include <memory>
#include <vector>

// The ordered, keyed collection under every col... class: items in order,
// 1-based positions, keys compared without regard to case and looked up
// through a hash, never by a scan. The collection owns its items.
template <typename T> class KeyedCollection
{
public:
    int Count() const { return int(m_items.size()); }
    bool IsEmpty() const { return m_items.empty(); }

    // Item by 1-based position or by key; nullptr when there is none.
    T *Item(int Index) const { return InRange(Index) ? m_items[Index - 1].item.get() : nullptr; }
    T *Item(const QString &Key) const { return Item(IndexOf(Key)); }
    // 1-based position of a key, 0 when absent.
    int IndexOf(const QString &Key) const { return m_index.value(LowerKey(Key), -1) + 1; }
    bool Contains(const QString &Key) const { return m_index.contains(LowerKey(Key)); }
    QString KeyAt(int Index) const { return InRange(Index) ? m_items[Index - 1].key : QString(); }
    // 1-based position of the first item for which Match(item) holds, 0 when none.
    template <typename Match> int FirstIndex(Match match) const
    {
        for (int i = 0; i < Count(); ++i)
            if (match(*m_items[i].item))
                return i + 1;
        return 0;
    }

    // Adds at the end, or before the 1-based position Before when it is one.
    // An empty key adds the item without a key; a key already present is
    // refused and the item is given back as nullptr after being destroyed.
    T *Add(std::unique_ptr<T> item, const QString &Key = QString(), int Before = 0)
    {
        const QString lowerKey = LowerKey(Key);
        if (!Key.isEmpty() && m_index.contains(lowerKey))
            return nullptr;
        T *raw = item.get();
        if (InRange(Before)) {
            m_items.insert(m_items.begin() + (Before - 1), Entry{Key, std::move(item)});
            Reindex();
        } else {
            m_items.push_back(Entry{Key, std::move(item)});
            if (!Key.isEmpty())
                m_index.insert(lowerKey, Count() - 1);
        }
        return raw;
    }

    // Removes by position or key; false when there is no such item.
    bool Delete(int Index)
    {
        if (!InRange(Index))
            return false;
        m_items.erase(m_items.begin() + (Index - 1));
        Reindex();
        return true;
    }
    bool Delete(const QString &Key) { return Delete(IndexOf(Key)); }

    // Takes an item out without destroying it.
    std::unique_ptr<T> Take(int Index)
    {
        if (!InRange(Index))
            return nullptr;
        std::unique_ptr<T> item = std::move(m_items[Index - 1].item);
        m_items.erase(m_items.begin() + (Index - 1));
        Reindex();
        return item;
    }

    void Clear()
    {
        m_items.clear();
        m_index.clear();
    }

    // Exchanges two items, each keeping its key; nothing when the positions
    // are equal or either is outside 1..Count.
    void Swap(int x, int y)
    {
        if (x == y || !InRange(x) || !InRange(y))
            return;
        std::swap(m_items[x - 1], m_items[y - 1]);
        Reindex();
    }

    // Iteration over the items in order, as T*.
    class const_iterator
    {
    public:
        using Base = typename std::vector<typename KeyedCollection::Entry>::const_iterator;
        explicit const_iterator(Base it) : m_it(it) {}
        T *operator*() const { return m_it->item.get(); }
        const_iterator &operator++()
        {
            ++m_it;
            return *this;
        }
        bool operator!=(const const_iterator &other) const { return m_it != other.m_it; }

    private:
        Base m_it;
    };
    const_iterator begin() const { return const_iterator(m_items.begin()); }
    const_iterator end() const { return const_iterator(m_items.end()); }

private:
    struct Entry
    {
        QString key;
        std::unique_ptr<T> item;
    };

    bool InRange(int Index) const { return Index >= 1 && Index <= Count(); }
    // QString::toLower, done here for the plain ASCII keys that are the rule.
    static QString LowerKey(const QString &Key)
    {
        if (std::any_of(Key.begin(), Key.end(), [](QChar c) { return c.unicode() >= 128; }))
            return Key.toLower();
        if (std::none_of(Key.begin(), Key.end(), [](QChar c) { return c >= u'A' && c <= u'Z'; }))
            return Key;
        QString lower(Key.size(), Qt::Uninitialized);
        std::transform(Key.begin(), Key.end(), lower.begin(),
                       [](QChar c) { return c >= u'A' && c <= u'Z' ? QChar(c.unicode() + 32) : c; });
        return lower;
    }
    void Reindex()
    {
        m_index.clear();
        for (int i = 0; i < Count(); ++i)
            if (!m_items[i].key.isEmpty())
                m_index.insert(LowerKey(m_items[i].key), i);
    }

    std::vector<Entry> m_items;
    QHash<QString, int> m_index;
};
