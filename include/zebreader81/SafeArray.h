// An automation array: one or two dimensions, each with its own lower and upper bound,
// or empty (never dimensioned). Copies are deep, as arrays passed through automation are.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace zebreader81 {

/// Bounds of one dimension, inclusive.
struct ArrayBounds {
    int32_t lower = 0;
    int32_t upper = -1;
    int32_t count() const { return upper - lower + 1; }
    bool operator==(const ArrayBounds&) const = default;
};

/// Array with LBound/UBound semantics. Element access out of bounds throws std::out_of_range.
template <class T> class SafeArray {
public:
    SafeArray() = default;

    /// One dimension, lower..upper; elements value-initialised.
    static SafeArray vector(int32_t lower, int32_t upper) { return SafeArray({{lower, upper}}); }
    /// Two dimensions (rows, columns).
    static SafeArray matrix(int32_t rowLower, int32_t rowUpper, int32_t colLower, int32_t colUpper)
    {
        return SafeArray({{rowLower, rowUpper}, {colLower, colUpper}});
    }

    /// True when the array has never been dimensioned.
    bool empty() const { return bounds_.empty(); }
    /// Number of dimensions (0 when empty).
    int dims() const { return static_cast<int>(bounds_.size()); }
    /// Lower bound of dimension `dim` (1-based, as LBound).
    int32_t LBound(int dim = 1) const { return bound(dim).lower; }
    /// Upper bound of dimension `dim` (1-based, as UBound).
    int32_t UBound(int dim = 1) const { return bound(dim).upper; }
    /// Number of elements.
    std::size_t size() const { return data_.size(); }

    /// Element of a one-dimensional array.
    T& operator()(int32_t i) { return data_[offset1(i)]; }
    const T& operator()(int32_t i) const { return data_[offset1(i)]; }
    /// Element of a two-dimensional array.
    T& operator()(int32_t r, int32_t c) { return data_[offset2(r, c)]; }
    const T& operator()(int32_t r, int32_t c) const { return data_[offset2(r, c)]; }

    /// Changes the upper bound of a one-dimensional array keeping its contents (ReDim Preserve).
    void redimPreserve(int32_t upper)
    {
        if (dims() != 1 || upper < bounds_[0].lower - 1)
            throw std::out_of_range("Subscript out of range");
        bounds_[0].upper = upper;
        data_.resize(static_cast<std::size_t>(bounds_[0].count()));
    }

    bool operator==(const SafeArray& other) const = default;

private:
    explicit SafeArray(std::vector<ArrayBounds> bounds) : bounds_(std::move(bounds))
    {
        std::size_t n = 1;
        for (const auto& b : bounds_) {
            if (b.count() < 0)
                throw std::out_of_range("Subscript out of range");
            n *= static_cast<std::size_t>(b.count());
        }
        data_.resize(n);
    }
    const ArrayBounds& bound(int dim) const
    {
        if (dim < 1 || dim > dims())
            throw std::out_of_range("Subscript out of range");
        return bounds_[static_cast<std::size_t>(dim - 1)];
    }
    std::size_t offset1(int32_t i) const
    {
        if (dims() != 1 || i < bounds_[0].lower || i > bounds_[0].upper)
            throw std::out_of_range("Subscript out of range");
        return static_cast<std::size_t>(i - bounds_[0].lower);
    }
    std::size_t offset2(int32_t r, int32_t c) const
    {
        if (dims() != 2 || r < bounds_[0].lower || r > bounds_[0].upper || c < bounds_[1].lower ||
            c > bounds_[1].upper)
            throw std::out_of_range("Subscript out of range");
        return static_cast<std::size_t>(r - bounds_[0].lower) * static_cast<std::size_t>(bounds_[1].count()) +
               static_cast<std::size_t>(c - bounds_[1].lower);
    }

    std::vector<ArrayBounds> bounds_;
    std::vector<T> data_;
};

} // namespace zebreader81
