// The Variant index of a collection: a 1-based position or a key text.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace zebreader81 {

/// Position (from 1) or key; converts implicitly from either.
class CollectionIndex {
public:
    CollectionIndex(int32_t position) : position_(position) {}
    CollectionIndex(std::string key) : key_(std::move(key)), isKey_(true) {}
    CollectionIndex(const char* key) : key_(key), isKey_(true) {}

    bool isKey() const { return isKey_; }
    int32_t position() const { return position_; }
    const std::string& key() const { return key_; }

private:
    int32_t position_ = 0;
    std::string key_;
    bool isKey_ = false;
};

} // namespace zebreader81
