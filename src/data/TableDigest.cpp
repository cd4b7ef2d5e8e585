#include "data/TableDigest.h"

#include <cstring>
#include <utility>

namespace dax {

namespace {

// Two lanes that differ in their odd factors; what is not a whole word at the end is filled up with zeros, which the
// length tells apart.
struct Lanes {
    uint64_t low = 0x9E3779B97F4A7C15, high = 0xC2B2AE3D27D4EB4F;

    void Take(uint64_t word) {
        low = (low ^ word) * 0xFF51AFD7ED558CCD;
        low ^= low >> 32;
        high = (high + word) * 0xC4CEB9FE1A85EC53;
        high ^= high >> 29;
    }
};

} // namespace

TableDigest::TableDigest(std::vector<bool> isKey) : keys(std::move(isKey)), columns(keys.size()), hashes(keys.size()) {}

void TableDigest::Sum::Add(const Sum& other) {
    low += other.low;
    high += other.high + (low < other.low ? 1 : 0);
}

TableDigest::Sum TableDigest::Mixed(const Sum& one, const Sum& other) {
    Lanes lanes{one.low, one.high};
    lanes.Take(other.low);
    lanes.Take(other.high);
    return {lanes.low, lanes.high};
}

TableDigest::Sum TableDigest::HashOf(const RowField& field) {
    Lanes lanes;
    lanes.Take(static_cast<uint64_t>(field.kind));
    switch (field.kind) {
    case RowField::Kind::Null:
        break;
    case RowField::Kind::Number:
        lanes.Take(static_cast<uint64_t>(field.number));
        break;
    case RowField::Kind::Date:
        for (const int part : {field.date.year, field.date.month, field.date.day, field.date.hour, field.date.minute,
                               field.date.second, static_cast<int>(field.date.fraction)})
            lanes.Take(static_cast<uint64_t>(part));
        break;
    case RowField::Kind::Text:
        lanes.Take(field.text.size());
        constexpr size_t unitsOfWord = sizeof(uint64_t) / sizeof(char16_t);
        for (size_t i = 0; i < field.text.size(); i += unitsOfWord) {
            uint64_t word = 0;
            std::memcpy(&word, field.text.data() + i, std::min(unitsOfWord, field.text.size() - i) * sizeof(char16_t));
            lanes.Take(word);
        }
    }
    return {lanes.low, lanes.high};
}

void TableDigest::Add(std::span<const RowField> row) {
    Sum key, all;
    for (size_t i = 0; i < keys.size(); ++i) {
        hashes[i] = HashOf(row[i]);
        if (keys[i]) key = Mixed(key, hashes[i]);
        all = Mixed(all, hashes[i]);
    }
    for (size_t i = 0; i < keys.size(); ++i) columns[i].Add(Mixed(key, hashes[i]));
    whole.Add(all);
    ++rows;
}

size_t TableDigest::FirstDifference(const TableDigest& other) const {
    // The key first: where it differs, every column does.
    for (const bool isKey : {true, false})
        for (size_t i = 0; i < keys.size(); ++i)
            if (keys[i] == isKey && columns[i] != other.columns[i]) return i;
    return keys.size();
}

} // namespace dax
