#pragma once
#include <QString>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <memory>
#include <vector>

// The ordered, keyed collection under every col... class: items in order,
// 1-based positions, keys compared without regard to case and looked up
// through a hash, never by a scan. The collection owns its items.
//
// The hash table holds positions only, compared through the items' own keys,
// so that the many small collections of a configuration (a trigger's fields
// and actions) cost a few bytes per key and no copies of the keys.
template <typename T> class KeyedCollection
{
public:
    int Count() const { return int(m_items.size()); }
    bool IsEmpty() const { return m_items.empty(); }

    // Item by 1-based position or by key; nullptr when there is none.
    T *Item(int Index) const { return InRange(Index) ? m_items[Index - 1].item.get() : nullptr; }
    T *Item(const QString &Key) const { return Item(IndexOf(Key)); }
    // 1-based position of a key, 0 when absent.
    int IndexOf(const QString &Key) const { return Find(Key) + 1; }
    bool Contains(const QString &Key) const { return Find(Key) >= 0; }
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
        if (Find(Key) >= 0)
            return nullptr;
        T *raw = item.get();
        if (InRange(Before)) {
            m_items.insert(m_items.begin() + (Before - 1), Entry{Key, std::move(item)});
            Reindex();
        } else {
            m_items.push_back(Entry{Key, std::move(item)});
            if (!Key.isEmpty())
                Index(KeyHash(Key), Count() - 1);
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
        m_slots.clear();
        m_keyed = 0;
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

    static bool IsAscii(QStringView Key)
    {
        return std::none_of(Key.begin(), Key.end(), [](QChar c) { return c.unicode() >= 128; });
    }
    static char16_t FoldAscii(QChar c)
    {
        const char16_t u = c.unicode();
        return u >= u'A' && u <= u'Z' ? char16_t(u + 32) : u;
    }
    // FNV-1a of the key's lower case. Plain ASCII keys, the rule, are lowered
    // as they are hashed; others as QString::toLower lowers them.
    static std::uint32_t KeyHash(const QString &Key)
    {
        return IsAscii(Key) ? FoldedHash(Key) : FoldedHash(Key.toLower());
    }
    static std::uint32_t FoldedHash(QStringView Key)
    {
        std::uint32_t hash = 2166136261u;
        for (QChar c : Key)
            hash = (hash ^ FoldAscii(c)) * 16777619u;
        return hash;
    }
    static bool SameKey(const QString &a, const QString &b)
    {
        if (IsAscii(a) && IsAscii(b))
            return a.size() == b.size()
                   && std::equal(a.begin(), a.end(), b.begin(), [](QChar x, QChar y) { return FoldAscii(x) == FoldAscii(y); });
        return a.toLower() == b.toLower();
    }

    // The 0-based position of a key, -1 when absent or empty.
    int Find(const QString &Key) const
    {
        if (Key.isEmpty() || m_slots.empty())
            return -1;
        const std::uint32_t hash = KeyHash(Key);
        const std::size_t mask = m_slots.size() - 1;
        for (std::size_t i = hash & mask; m_slots[i].Position >= 0; i = (i + 1) & mask)
            if (m_slots[i].Hash == hash && SameKey(m_items[std::size_t(m_slots[i].Position)].key, Key))
                return m_slots[i].Position;
        return -1;
    }
    // Enters a key's position; the table is kept at most half full.
    void Index(std::uint32_t Hash, int Position)
    {
        if (std::size_t(m_keyed + 1) * 2 > m_slots.size()) {
            Reindex();
            return;
        }
        const std::size_t mask = m_slots.size() - 1;
        std::size_t i = Hash & mask;
        while (m_slots[i].Position >= 0)
            i = (i + 1) & mask;
        m_slots[i] = Slot{Hash, Position};
        ++m_keyed;
    }
    void Reindex()
    {
        const auto keyed = std::count_if(m_items.begin(), m_items.end(), [](const Entry &e) { return !e.key.isEmpty(); });
        m_slots.assign(std::max<std::size_t>(8, std::bit_ceil(std::size_t(keyed) * 2)), Slot{});
        m_keyed = 0;
        for (int i = 0; i < Count(); ++i)
            if (!m_items[std::size_t(i)].key.isEmpty())
                Index(KeyHash(m_items[std::size_t(i)].key), i);
    }

    struct Slot
    {
        std::uint32_t Hash = 0;
        int Position = -1;
    };
    std::vector<Entry> m_items;
    std::vector<Slot> m_slots;
    int m_keyed = 0;
};
