#include "hierarchy/RowFingerprints.h"

#include "base/Error.h"
#include "base/modGeneric.h"
#include "data/Dialect.h"
#include "data/Recordset.h"

#include <algorithm>
#include <cstring>

namespace dax {

namespace {

constexpr size_t maxNamed = 10;

// Four units at a time, since every row that is loaded is hashed; 64 bits, of which std::hash has 32 in 32-bit
// programs.
class Hash {
public:
    Hash& Add(TextView text) {
        uint64_t part = text.size(); // so that moving text from one field to the next changes the hash
        Mix(part);
        constexpr size_t units = sizeof part / sizeof(char16_t);
        for (; text.size() >= units; text.remove_prefix(units)) {
            std::memcpy(&part, text.data(), sizeof part);
            Mix(part);
        }
        if (text.empty()) return *this;
        part = 0;
        for (const char16_t unit : text) part = part << 16 | unit;
        Mix(part);
        return *this;
    }
    Hash& Add(int64_t number) {
        Mix(static_cast<uint64_t>(number));
        return *this;
    }
    uint64_t Get() const { return value ^ (value >> 29); }

private:
    void Mix(uint64_t part) {
        value = (value ^ part) * 0x9E3779B97F4A7C15;
        value ^= value >> 32;
    }

    uint64_t value = 0xCBF29CE484222325;
};

uint64_t IDHash(TextView id) { return Hash().Add(id).Get(); }

// Names what happened, up to a number of entries.
class Report {
public:
    void Add(TextView title, TextView what) { AddEntry(u"'" + Text(Shorten(title, 60)) + u"'", what); }
    void AddEntry(const Text& entry, TextView what) {
        if (++count > maxNamed) return;
        text += (text.empty() ? u"" : u", ") + entry + u" " + Text(what);
    }
    bool IsEmpty() const { return count == 0; }
    Text Sentence() const {
        Text more;
        if (count > maxNamed) more = u" and " + ToText(static_cast<long long>(count - maxNamed)) + u" more";
        return u"Another author has changed the course since it was loaded, so nothing was saved: " + text + more +
               u". Load it again to see the changes.";
    }

private:
    Text text;
    size_t count = 0;
};

} // namespace

RowFingerprints::Fingerprint RowFingerprints::Of(const Row& row) {
    const uint64_t texts = Hash().Add(row.title).Add(row.identifier).Add(row.type).Get();
    const uint64_t place = Hash().Add(row.parentID).Add(row.indentLevel).Add(row.sortPosition).Get();
    return {IDHash(row.id), static_cast<uint32_t>(texts), static_cast<uint32_t>(place)};
}

void RowFingerprints::Add(const Row& row) { rows.push_back(Of(row)); }

void RowFingerprints::Check(Connection& connection, const NodeTree& tree) {
    std::ranges::sort(rows, {}, &Fingerprint::id); // only here: most loads are never checked
    const Dialect& dialect = DialectOf(connection.Kind());
    if (!dialect.blockWriters.empty()) connection.Execute(Text(dialect.blockWriters));
    Recordset found;
    found.Open(u"SELECT lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType FROM "
               u"velmoraLessons" +
                   Text(dialect.lockingRead),
               connection);
    Report report;
    std::vector<bool> isThere(rows.size());
    const auto number = [&](size_t column) { return modGeneric::VariantToLong(found.Field(column), 0); };
    for (; !found.Eof(); found.MoveNext()) {
        const TextView title = found.FieldText(1);
        const Fingerprint now =
            Of({found.FieldText(0), title, found.FieldText(2), found.FieldText(3), number(4), number(5), number(6)});
        const auto before = std::ranges::lower_bound(rows, now.id, {}, &Fingerprint::id);
        if (before == rows.end() || before->id != now.id) {
            report.Add(title, u"was added");
            continue;
        }
        isThere[static_cast<size_t>(before - rows.begin())] = true;
        const bool isMoved = now.place != before->place;
        if (now.texts != before->texts)
            report.Add(title, isMoved ? TextView(u"was renamed and moved") : TextView(u"was renamed"));
        else if (isMoved)
            report.Add(title, u"was moved");
    }
    if (std::ranges::find(isThere, false) != isThere.end()) {
        size_t named = 0;
        for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
            const uint64_t id = IDHash(node->Key());
            const auto row = std::ranges::lower_bound(rows, id, {}, &Fingerprint::id);
            if (row == rows.end() || row->id != id || isThere[static_cast<size_t>(row - rows.begin())]) continue;
            report.Add(node->Caption(), u"was removed");
            ++named;
        }
        // What this author has removed, too, is not in the tree, and neither is its title.
        for (auto gone = std::ranges::count(isThere, false) - static_cast<std::ptrdiff_t>(named); gone > 0; --gone)
            report.AddEntry(u"an entry that you have removed, too,", u"was removed");
    }
    if (!report.IsEmpty()) throw Error(ErrorNumbers::Conflict, report.Sentence());
}

} // namespace dax
