#include "data/RowWriter.h"

#include "base/Dates.h"
#include "data/Session.h"

#include <algorithm>
#include <utility>

namespace dax {

namespace {

constexpr size_t maxUnitsOfRows = 128 * 1024; // of a statement; a longer row is sent alone
constexpr size_t maxUnitsOfArrays = 512 * 1024, maxWaitingRows = 1000;

Text Names(const std::vector<RowColumn>& columns) {
    Text names;
    for (const RowColumn& column : columns) names.append(names.empty() ? u"" : u", ").append(column.name);
    return names;
}

class LiteralWriter final : public RowWriter {
public:
    LiteralWriter(Session& session, const Text& table, const std::vector<RowColumn>& columns)
        : statement(session.NewStatement()), maxLiteral(session.SqlDialect().maxLiteral),
          beginning(u"INSERT INTO " + table + u" (" + Names(columns) + u") VALUES ") {}

    void Put(std::span<const RowField> row) override {
        size_t units = 0, longest = 0;
        for (const RowField& field : row) {
            units += field.text.size() + 4;
            if (field.kind == RowField::Kind::Text) longest = std::max(longest, field.text.size());
        }
        // Long texts become parameters: few of them in a statement.
        if (waiting > 0 && (text.size() + units > maxUnitsOfRows || waiting == maxWaitingRows)) Finish();
        if (waiting++ == 0)
            text = beginning;
        else
            text += u", ";
        char16_t before = u'(';
        for (const RowField& field : row) {
            text += before;
            before = u',';
            Append(field);
        }
        text += u')';
        if (maxLiteral > 0 && longest > maxLiteral) Finish();
    }

    void Finish() override {
        if (waiting == 0) return;
        waiting = 0;
        statement->Execute(text);
        statement->Close();
    }

private:
    void Append(const RowField& field) {
        switch (field.kind) {
        case RowField::Kind::Null:
            text += u"NULL";
            break;
        case RowField::Kind::Number:
            text += ToText(field.number);
            break;
        case RowField::Kind::Date:
            text.append(u"'").append(FormatDate(field.date)).append(u"'");
            break;
        case RowField::Kind::Text:
            AppendText(field.text);
        }
    }
    // Drivers end a statement at a NUL character, so it is made by the server.
    void AppendText(TextView plain) {
        const bool hasZeros = plain.find(u'\0') != TextView::npos;
        text += hasZeros ? u"CONCAT('" : u"'";
        for (size_t begin = 0;;) {
            const size_t mark = hasZeros ? plain.find_first_of(TextView(u"'\0", 2), begin) : plain.find(u'\'', begin);
            text.append(plain.substr(begin, mark - begin));
            if (mark == TextView::npos) break;
            text += plain[mark] == u'\'' ? u"''" : u"', CHAR(0 USING utf8mb4), '";
            begin = mark + 1;
        }
        text += hasZeros ? u"')" : u"'";
    }

    std::unique_ptr<Statement> statement;
    size_t maxLiteral, waiting = 0; // rows
    Text beginning, text;
};

// An array for each column: the engine reads one long parameter much faster than many short literals. An array of texts
// is one text with separators, which the engine splits faster than it reads an array's literal; rows whose texts have
// such a unit themselves are sent as literals.
class ArrayWriter final : public RowWriter {
public:
    ArrayWriter(Session& session, const Text& table, const std::vector<RowColumn>& ofTable)
        : statement(session.NewStatement()), beginning(u"INSERT INTO " + table + u" (" + Names(ofTable) + u") SELECT "),
          columns(ofTable), arrays(ofTable.size()) {}

    void Put(std::span<const RowField> row) override {
        size_t rowUnits = 0;
        bool hasSeparator = false;
        for (const RowField& field : row) {
            rowUnits += field.text.size() + 4;
            hasSeparator =
                hasSeparator || (field.kind == RowField::Kind::Text && std::ranges::any_of(field.text, IsSeparator));
        }
        if (waiting > 0 &&
            (units + rowUnits > maxUnitsOfArrays || waiting == maxWaitingRows || hasSeparator == isSeparated))
            Send();
        isSeparated = !hasSeparator;
        for (size_t i = 0; i < row.size(); ++i) {
            if (IsSplit(i)) {
                if (waiting > 0) arrays[i] += separator;
                AppendPlain(row[i], arrays[i]);
            } else {
                arrays[i] += waiting > 0 ? u',' : u'{';
                AppendLiteral(row[i], arrays[i]);
            }
        }
        ++waiting;
        units += rowUnits;
    }

    void Finish() override {
        if (waiting > 0) Send();
        statement->Await();
        statement->Close();
    }

private:
    static constexpr char16_t separator = 1, markOfNull = 2;
    static bool IsSeparator(char16_t unit) { return unit == separator || unit == markOfNull; }

    bool IsSplit(size_t column) const { return isSeparated && columns[column].kind == RowField::Kind::Text; }

    // The engine stores these rows while the next ones are read.
    void Send() {
        Text text = beginning;
        std::vector<Value> values;
        for (size_t i = 0; i < arrays.size(); ++i) {
            const RowField::Kind kind = columns[i].kind;
            const bool isSplit = IsSplit(i) && !arrays[i].empty(); // one empty text would be split into none
            if (!isSplit) arrays[i] += arrays[i].empty() ? u"{\"\"}" : u"}";
            text.append(i == 0 ? u"unnest(" : u", unnest(")
                .append(isSplit                          ? u"string_to_array(CAST(? AS text), chr(1), chr(2))"
                        : kind == RowField::Kind::Number ? u"CAST(? AS bigint[])"
                        : kind == RowField::Kind::Date   ? u"CAST(? AS timestamp[])"
                                                         : u"CAST(? AS text[])")
                .append(u")");
            const size_t length = arrays[i].size();
            values.emplace_back(std::exchange(arrays[i], Text()));
            // The next rows are likely to be as long, but not as long as the longest text.
            arrays[i].reserve(std::min(length + length / 4, maxUnitsOfArrays));
        }
        waiting = units = 0;
        statement->Start(text, std::move(values));
    }

    static void AppendPlain(const RowField& field, Text& array) {
        if (field.kind == RowField::Kind::Null)
            array += markOfNull;
        else
            array += field.text;
    }
    static void AppendLiteral(const RowField& field, Text& array) {
        if (field.kind == RowField::Kind::Null) {
            array += u"NULL";
        } else if (field.kind == RowField::Kind::Number) {
            AppendNumber(array, field.number);
        } else {
            array += u'"';
            if (field.kind == RowField::Kind::Date)
                array += FormatDate(field.date);
            else
                AppendEscaped(field.text, array);
            array += u'"';
        }
    }
    static void AppendEscaped(TextView plain, Text& array) {
        size_t done = 0;
        for (size_t i = 0; i < plain.size(); ++i) {
            const char16_t unit = plain[i];
            if (unit != u'"' && unit != u'\\') continue;
            array.append(plain.substr(done, i - done)) += u'\\';
            done = i;
        }
        array.append(plain.substr(done));
    }

    std::unique_ptr<Statement> statement;
    Text beginning;
    std::vector<RowColumn> columns;
    std::vector<Text> arrays;
    size_t waiting = 0, units = 0;
    bool isSeparated = true; // the rows that wait
};

class ParameterWriter final : public RowWriter {
public:
    ParameterWriter(Session& session, const Text& table, const std::vector<RowColumn>& columns)
        : statement(session.NewStatement()) {
        statement->Execute(u"SELECT " + Names(columns) + u" FROM " + table + u" WHERE 1 = 0");
        for (const Column& column : statement->OpenRows()) codes.push_back(column.code);
        statement->Close();
        insert = u"INSERT INTO " + table + u" (" + Names(columns) + u") VALUES (";
        for (size_t i = 0; i < columns.size(); ++i) insert += i == 0 ? u"?" : u", ?";
        insert += u')';
    }

    void Put(std::span<const RowField> row) override {
        values.clear();
        for (const RowField& field : row) {
            if (field.kind == RowField::Kind::Null)
                values.emplace_back();
            else if (field.kind == RowField::Kind::Number)
                values.emplace_back(field.number);
            else if (field.kind == RowField::Kind::Date)
                values.emplace_back(field.date);
            else
                values.emplace_back(Text(field.text));
        }
        statement->Execute(insert, values, codes);
    }
    void Finish() override { statement->Close(); }

private:
    std::unique_ptr<Statement> statement;
    Text insert;
    std::vector<int> codes;
    std::vector<Value> values;
};

} // namespace

std::unique_ptr<RowWriter> NewStatementWriter(Session& session, const Text& table,
                                              const std::vector<RowColumn>& columns) {
    if (session.SqlDialect().engine == Engine::PostgreSQL)
        return std::make_unique<ArrayWriter>(session, table, columns);
    // An engine whose statements are sent as they are may take plain literals for texts of one code page.
    if (session.SqlDialect().adapts) return std::make_unique<LiteralWriter>(session, table, columns);
    return std::make_unique<ParameterWriter>(session, table, columns);
}

} // namespace dax
