// Barcode areas the host describes for the scanners that read barcodes.
#pragma once

#include "zebreader81/CollectionIndex.h"
#include "zebreader81/enums.h"
#include "zebreader81/export.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace zebreader81 {

/// One barcode area. All fields start at 0.
class ZEBREADER81_API clsZEBReaderBarcode {
public:
    /// Sheet side.
    int16_t Page() const { return page_; }
    void Page(int16_t v) { page_ = v; }
    /// Position along the sheet.
    int16_t Distance() const { return distance_; }
    void Distance(int16_t v) { distance_ = v; }
    /// Number of characters.
    int16_t Length() const { return length_; }
    void Length(int16_t v) { length_ = v; }
    /// Symbology (bit values, may be combined).
    zebBarcodeType Symbology() const { return symbology_; }
    void Symbology(zebBarcodeType v) { symbology_ = v; }
    /// Direction of the bars on the sheet.
    zebBarcodeOrientation Orientation() const { return orientation_; }
    void Orientation(zebBarcodeOrientation v) { orientation_ = v; }

private:
    int16_t page_ = 0, distance_ = 0, length_ = 0;
    zebBarcodeType symbology_ = zebBarcodeTypeUnknown;
    zebBarcodeOrientation orientation_ = zebBarcodeOrientationUnknown;
};

/// 1-based collection of barcode areas, indexed by position or by key.
class ZEBREADER81_API clsZEBReaderBarcodes {
public:
    clsZEBReaderBarcodes();
    ~clsZEBReaderBarcodes();
    clsZEBReaderBarcodes(const clsZEBReaderBarcodes&) = delete;
    clsZEBReaderBarcodes& operator=(const clsZEBReaderBarcodes&) = delete;

    /// Number of areas.
    int32_t Count() const;
    /// Adds an area, optionally under a key (case-insensitive, unique) and before or after
    /// another one.
    void Add(std::shared_ptr<clsZEBReaderBarcode> barcode, std::optional<std::string> Key = {},
             std::optional<CollectionIndex> Before = {}, std::optional<CollectionIndex> After = {});
    /// Removes one area (a bad index is reported).
    void Remove(const CollectionIndex& Index);
    /// Removes every area.
    void RemoveAll();
    /// The area, or nullptr when Exists(Index) is False.
    std::shared_ptr<clsZEBReaderBarcode> Item(const CollectionIndex& Index) const;
    /// True when the lookup yields an area.
    bool Exists(const CollectionIndex& Index) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace zebreader81
