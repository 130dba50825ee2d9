// An automation collection: 1-based, optionally keyed (keys compare case-insensitively),
// with insertion before or after another member. Lookups that fail raise the collection's
// run-time errors (9 for a position, 5 for a key); callers decide whether to trap them.
#pragma once

#include "core/basError.h"
#include "zebreader81/CollectionIndex.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zebreader81 {

template <class T> class Collection {
public:
    int32_t count() const { return static_cast<int32_t>(items_.size()); }

    void add(std::shared_ptr<T> item, std::optional<std::string> key = {},
             const std::optional<CollectionIndex>& before = {},
             const std::optional<CollectionIndex>& after = {})
    {
        if (before && after)
            err::raise(err::InvalidProcedureCall);
        if (key && find(*key) != items_.size())
            err::raise(err::DuplicateKey);
        std::size_t at = items_.size();
        if (before)
            at = indexOf(*before);
        else if (after)
            at = indexOf(*after) + 1;
        items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at),
                      Entry{std::move(item), std::move(key)});
    }

    void remove(const CollectionIndex& index)
    {
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(indexOf(index)));
    }
    void clear() { items_.clear(); }

    /// The member, or nullptr when the index names none.
    std::shared_ptr<T> tryItem(const CollectionIndex& index) const
    {
        const std::size_t i = index.isKey() ? find(index.key()) : positionIndex(index.position());
        return i < items_.size() ? items_[i].item : nullptr;
    }

    /// Members in order.
    std::vector<std::shared_ptr<T>> items() const
    {
        std::vector<std::shared_ptr<T>> out;
        for (const auto& e : items_)
            out.push_back(e.item);
        return out;
    }

private:
    struct Entry {
        std::shared_ptr<T> item;
        std::optional<std::string> key;
    };

    static bool sameKey(const std::string& a, const std::string& b)
    {
        return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
                   return std::tolower(static_cast<unsigned char>(x)) ==
                          std::tolower(static_cast<unsigned char>(y));
               });
    }
    std::size_t find(const std::string& key) const
    {
        for (std::size_t i = 0; i < items_.size(); ++i)
            if (items_[i].key && sameKey(*items_[i].key, key))
                return i;
        return items_.size();
    }
    std::size_t positionIndex(int32_t position) const
    {
        return position >= 1 && position <= count() ? static_cast<std::size_t>(position - 1) : items_.size();
    }
    std::size_t indexOf(const CollectionIndex& index) const
    {
        const std::size_t i = index.isKey() ? find(index.key()) : positionIndex(index.position());
        if (i == items_.size())
            err::raise(index.isKey() ? err::InvalidProcedureCall : err::SubscriptOutOfRange);
        return i;
    }

    std::vector<Entry> items_;
};

} // namespace zebreader81
