// A checksum of 128 bits for each column of a table, and one for its rows, whatever the order of the rows.
#pragma once

#include "data/RowWriter.h"

#include <span>
#include <vector>

namespace dax {

class TableDigest {
public:
    // `isKey` tells for each column whether it belongs to the key, which ties the values of a row together.
    explicit TableDigest(std::vector<bool> isKey);
    void Add(std::span<const RowField> row);

    int64_t Rows() const { return rows; }
    bool operator==(const TableDigest& other) const {
        return rows == other.rows && whole == other.whole && columns == other.columns;
    }
    // The first column whose values are not those of the other table; the number of columns when none is found.
    size_t FirstDifference(const TableDigest& other) const;

private:
    struct Sum {
        uint64_t low = 0, high = 0;
        void Add(const Sum& other);
        bool operator==(const Sum&) const = default;
    };
    static Sum HashOf(const RowField& field);
    static Sum Mixed(const Sum& one, const Sum& other);

    std::vector<bool> keys;
    std::vector<Sum> columns, hashes; // hashes: of the row that is added
    Sum whole;
    int64_t rows = 0;
};

} // namespace dax
