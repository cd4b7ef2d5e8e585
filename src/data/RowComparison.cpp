#include "data/RowComparison.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace dax {

namespace {

constexpr size_t partsPerOverflow = 4, maxParts = 4096; // with so many parts memory is taken as it is needed
constexpr size_t maxUnitsOfIdentifier = 60, unitsPerField = 32;

using Row = std::span<const RowField>;

bool AreEqual(const RowField& one, const RowField& other) {
    if (one.kind != other.kind) return false;
    switch (one.kind) {
    case RowField::Kind::Null:
        return true;
    case RowField::Kind::Number:
        return one.number == other.number;
    case RowField::Kind::Date:
        return one.date == other.date;
    case RowField::Kind::Text:
        return one.text == other.text;
    }
    return false;
}

bool AreEqual(Row one, Row other) {
    return std::ranges::equal(one, other, [](const RowField& a, const RowField& b) { return AreEqual(a, b); });
}

uint64_t Mixed(uint64_t hash, uint64_t more) {
    hash = (hash ^ more) * 0xFF51AFD7ED558CCD;
    return hash ^ hash >> 32;
}

uint64_t HashOf(const RowField& field) {
    const auto kind = static_cast<uint64_t>(field.kind);
    switch (field.kind) {
    case RowField::Kind::Null:
        return kind;
    case RowField::Kind::Number:
        return Mixed(kind, static_cast<uint64_t>(field.number));
    case RowField::Kind::Date:
        return Mixed(Mixed(kind, static_cast<uint64_t>(field.date.second)), static_cast<uint64_t>(field.date.day));
    case RowField::Kind::Text:
        return Mixed(kind, std::hash<TextView>()(field.text));
    }
    return 0;
}

// A row that waits for its counterpart in the other table.
class KeptRow {
public:
    KeptRow(Row row, size_t index) : fields(row.begin(), row.end()), index(index) {
        for (const RowField& field : fields) texts.append(field.text);
        size_t begin = 0;
        for (RowField& field : fields) {
            field.text = TextView(texts).substr(begin, field.text.size());
            begin += field.text.size();
        }
    }
    KeptRow(const KeptRow&) = delete;
    KeptRow& operator=(const KeptRow&) = delete;

    Row Fields() const { return fields; }
    size_t Index() const { return index; }
    size_t Units() const { return texts.size() + fields.size() * unitsPerField; }

private:
    std::vector<RowField> fields;
    Text texts;
    size_t index;
};

class Comparison {
public:
    Comparison(std::span<const RowColumn> columns, const std::vector<bool>& isKey, size_t maxUnits)
        : columns(columns), isKey(isKey), hasKey(std::ranges::find(isKey, true) != isKey.end()), maxUnits(maxUnits) {}

    // False when memory does not suffice for so large a part.
    bool Pass(const NextRow& nextOfSource, const NextRow& nextOfTarget, size_t part, size_t parts) {
        for (Side* side : {&source, &target}) *side = {};
        units = 0;
        const auto next = [&](const NextRow& nextRow) {
            for (;;) {
                const Row row = nextRow();
                if (row.empty() || parts == 1 || (Hash(row, hasKey) >> 32) % parts == part) return row;
            }
        };
        for (Row one = next(nextOfSource), other = next(nextOfTarget); !one.empty() || !other.empty();
             one = one.empty() ? one : next(nextOfSource), other = other.empty() ? other : next(nextOfTarget)) {
            if (!one.empty() && !other.empty() && AreEqual(one, other)) continue;
            if (!one.empty()) Match(one, source, target);
            if (!other.empty()) Match(other, target, source);
            if (units > maxUnits && parts < maxParts) return false;
        }
        return true;
    }

    std::optional<RowDifference> Difference() const {
        if (source.rows.empty() && target.rows.empty()) return std::nullopt;
        if (source.rows.empty()) return RowDifference{RowDifference::Kind::Additional, 0, Identifier(First(target))};
        const KeptRow& row = First(source);
        const KeptRow* other = CounterpartOf(row);
        if (!other) return RowDifference{RowDifference::Kind::Missing, 0, Identifier(row)};
        size_t column = 0;
        while (AreEqual(row.Fields()[column], other->Fields()[column])) ++column;
        return RowDifference{RowDifference::Kind::Value, column, Identifier(row)};
    }

private:
    struct Side {
        std::unordered_multimap<uint64_t, std::unique_ptr<KeptRow>> rows;
        size_t read = 0;
    };

    uint64_t Hash(Row row, bool ofKey) const {
        uint64_t hash = 0;
        for (size_t i = 0; i < row.size(); ++i)
            if (!ofKey || isKey[i]) hash = Mixed(hash, HashOf(row[i]));
        return hash;
    }

    void Match(Row row, Side& own, Side& others) {
        const uint64_t hash = Hash(row, false);
        const auto [begin, end] = others.rows.equal_range(hash);
        const auto same =
            std::find_if(begin, end, [&](const auto& kept) { return AreEqual(kept.second->Fields(), row); });
        if (same != end) {
            units -= same->second->Units();
            others.rows.erase(same);
        } else {
            const auto kept = own.rows.emplace(hash, std::make_unique<KeptRow>(row, own.read));
            units += kept->second->Units();
        }
        ++own.read;
    }

    static const KeptRow& First(const Side& side) {
        return *std::ranges::min_element(side.rows, {}, [](const auto& kept) { return kept.second->Index(); })->second;
    }

    // The row of the same key; none without a key.
    const KeptRow* CounterpartOf(const KeptRow& row) const {
        for (const auto& [hash, kept] : target.rows) {
            bool isOfKey = hasKey;
            for (size_t i = 0; i < columns.size() && isOfKey; ++i)
                isOfKey = !isKey[i] || AreEqual(row.Fields()[i], kept->Fields()[i]);
            if (isOfKey) return kept.get();
        }
        return nullptr;
    }

    Text Identifier(const KeptRow& row) const { return IdentifierOf(row.Fields(), columns, isKey); }

    std::span<const RowColumn> columns;
    const std::vector<bool>& isKey;
    bool hasKey;
    size_t maxUnits, units = 0;
    Side source, target;
};

} // namespace

Text IdentifierOf(std::span<const RowField> row, std::span<const RowColumn> columns, const std::vector<bool>& isKey) {
    const bool hasKey = std::ranges::find(isKey, true) != isKey.end();
    Text identifier;
    for (size_t i = 0; i < columns.size(); ++i) {
        const RowField& field = row[i];
        if ((hasKey && !isKey[i]) || field.kind == RowField::Kind::Null) continue;
        identifier.append(identifier.empty() ? u"" : u", ").append(columns[i].name).append(u" ");
        if (field.kind == RowField::Kind::Number) {
            identifier.append(ToText(field.number));
            continue;
        }
        const TextView shown = Shorten(field.text, maxUnitsOfIdentifier);
        identifier.append(u"'").append(shown).append(shown.size() < field.text.size() ? u"…'" : u"'");
    }
    return identifier;
}

std::optional<RowDifference> CompareRows(std::span<const RowColumn> columns, const std::vector<bool>& isKey,
                                         const std::function<NextRow()>& source, const std::function<NextRow()>& target,
                                         size_t maxUnits) {
    Comparison comparison(columns, isKey, maxUnits);
    for (size_t part = 0, parts = 1; part < parts;) {
        if (!comparison.Pass(source(), target(), part, parts)) {
            // A row whose hash now leaves a remainder below this part's left the same before: it has been compared.
            parts *= partsPerOverflow;
            continue;
        }
        if (auto difference = comparison.Difference()) return difference;
        ++part;
    }
    return std::nullopt;
}

} // namespace dax
