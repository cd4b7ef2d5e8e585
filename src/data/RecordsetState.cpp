#include "data/RecordsetState.h"

#include "base/Dates.h"
#include "base/Numbers.h"
#include "data/StatementText.h"

#include <algorithm>
#include <numeric>

namespace dax {

namespace {

// The value as its column means it; what does not fit the column's type (SQLite allows that) stays a text.
Value FromText(TextView text, FieldType type) {
    switch (type) {
    case FieldType::Boolean:
        if (text.size() == 1) return !(text[0] == u'0' || text[0] == 0 || text[0] == u'f');
        break;
    case FieldType::Integer:
        if (const auto number = ReadNumber<int64_t>(text)) return *number;
        [[fallthrough]];
    case FieldType::Fraction:
        if (const auto number = ReadNumber<double>(text)) return *number;
        break;
    case FieldType::Date:
        if (const auto date = ParseDate(text)) return *date;
        break;
    case FieldType::Text:
        break;
    }
    return Text(text);
}

} // namespace

void RecordsetState::Open(const Text& source, Connection& newConnection, CursorTypes, LockTypes lock, int options) {
    (void)newConnection.Opened(); // throws when it is closed
    connection = &newConnection;
    // Every cursor reads forward; what the other cursor types add is not needed here. Rows are written by generated
    // statements, which no driver gets wrong.
    const bool isTable = options != adOptionUnspecified && (options & adCmdTable) != 0;
    isUpdatable = lock != adLockReadOnly;
    if (isUpdatable) table = isTable ? source : TableOf(source);
    try {
        // A table opened for adding need not be read: its columns are known without a row.
        isDeferred = isTable && isUpdatable && location == adUseServer;
        Run(isDeferred ? u"SELECT * FROM " + source + u" WHERE 1 = 0" : isTable ? u"SELECT * FROM " + source : source);
        if (!isDeferred) MoveNext();
    } catch (...) {
        Close();
        throw;
    }
}

void RecordsetState::Run(const Text& text) {
    stored.reset();
    if (!rows) rows = connection->Opened().NewStatement();
    rows->Execute(text);
    columns = rows->OpenRows();
    if (location != adUseClient) return;
    stored.emplace();
    stored->Read(*rows, columns.size());
    rows.reset();
    storedRow = SIZE_MAX; // so that the next one is the first
}

void RecordsetState::Close() noexcept {
    rows.reset(); // before its connection
    const CursorLocations kept = location;
    *this = RecordsetState();
    location = kept;
}

void RecordsetState::RequireOpen() const {
    if (!connection) throw Error(u"The recordset is closed.");
}

void RecordsetState::FetchDeferred() {
    if (!isDeferred) return;
    isDeferred = false;
    Run(u"SELECT * FROM " + table);
    MoveNext();
}

bool RecordsetState::Eof() {
    RequireOpen();
    FetchDeferred();
    return atEnd;
}

void RecordsetState::MoveNext() {
    RequireOpen();
    FetchDeferred();
    if (stored) {
        atEnd = ++storedRow >= stored->Count();
    } else {
        atEnd = !rows || !rows->Next();
        if (atEnd) rows.reset(); // asking for more would be an error of the driver's
    }
    changes.clear();
    isAdding = false;
}

int64_t RecordsetState::RecordCount() {
    RequireOpen();
    return stored ? static_cast<int64_t>(stored->Count()) : -1;
}

size_t RecordsetState::FieldIndex(TextView name) const {
    RequireOpen();
    for (size_t i = 0; i < columns.size(); ++i)
        if (EqualNoCase(columns[i].name, name)) return i;
    throw Error(ErrorNumbers::SyntaxOrColumn, u"The recordset has no field \"" + Text(name) + u"\".");
}

void RecordsetState::RequireRow(size_t column) {
    FetchDeferred();
    if (atEnd) throw Error(u"The recordset has no current row.");
    if (column >= columns.size())
        throw Error(u"The recordset has no field number " + ToText(static_cast<long long>(column)) + u".");
}

TextView RecordsetState::FieldText(size_t column) {
    RequireRow(column);
    return stored ? stored->Field(storedRow, column).value_or(TextView()) : rows->FieldText(column);
}

std::optional<TextView> RecordsetState::FieldTextOrNull(size_t column) {
    RequireRow(column);
    if (stored) return stored->Field(storedRow, column);
    if (rows->IsNull(column)) return {};
    return rows->FieldText(column);
}

Value RecordsetState::Field(size_t column) {
    RequireRow(column);
    if (!stored && columns[column].type == FieldType::Integer)
        if (const auto number = rows->FieldInteger(column)) return *number;
    const auto text = FieldTextOrNull(column);
    return text ? FromText(*text, columns[column].type) : Value();
}

void RecordsetState::AddNew() {
    RequireOpen();
    if (table.empty()) throw Error(u"The recordset is read-only: no row can be added.");
    isAdding = true;
    changes.clear();
}

void RecordsetState::SetField(TextView name, Value value) {
    if (table.empty()) throw Error(u"The recordset is read-only: no field can be set.");
    const size_t column = FieldIndex(name);
    if (!isAdding) RequireRow(column);
    for (auto& change : changes) {
        if (change.first == column) {
            change.second = std::move(value);
            return;
        }
    }
    changes.emplace_back(column, std::move(value));
}

void RecordsetState::Update() {
    RequireOpen();
    if (isAdding)
        Insert();
    else if (!changes.empty())
        UpdateRow();
    changes.clear();
    isAdding = false;
}

Text RecordsetState::Quoted(size_t column) const {
    const Dialect& dialect = connection->Opened().SqlDialect();
    Text quoted(1, dialect.openQuote);
    for (const char16_t unit : columns[column].name) {
        quoted.push_back(unit);
        if (unit == dialect.closeQuote) quoted.push_back(unit);
    }
    quoted.push_back(dialect.closeQuote);
    return quoted;
}

void RecordsetState::Insert() {
    if (changes.empty()) throw Error(u"No field of the new row was set.");
    Text names, parameters;
    std::vector<Value> values;
    std::vector<int> codes;
    for (const auto& [column, value] : changes) {
        names += (names.empty() ? u"" : u", ") + Quoted(column);
        parameters += parameters.empty() ? u"?" : u", ?";
        values.push_back(value);
        codes.push_back(columns[column].code);
    }
    connection->Opened().NewStatement()->Execute(
        u"INSERT INTO " + table + u" (" + names + u") VALUES (" + parameters + u")", values, codes);
}

// The row is found again by its key; a table without one by all values that were read.
void RecordsetState::UpdateRow() {
    Text assignments, conditions;
    std::vector<Value> values;
    std::vector<int> codes;
    for (const auto& [column, value] : changes) {
        assignments += (assignments.empty() ? u"" : u", ") + Quoted(column) + u" = ?";
        values.push_back(value);
        codes.push_back(columns[column].code);
    }
    const bool datesAsText = connection->Opened().SqlDialect().datesAsText;
    for (const size_t column : KeyColumns()) {
        conditions += (conditions.empty() ? u"" : u" AND ") + Quoted(column);
        const auto text = FieldTextOrNull(column);
        if (!text) {
            conditions += u" IS NULL";
            continue;
        }
        conditions += u" = ?";
        Value value = Field(column);
        // As stored, whatever its form.
        if (datesAsText && std::holds_alternative<DateTime>(value)) value = Text(*text);
        values.push_back(std::move(value));
        codes.push_back(columns[column].code);
    }
    const std::unique_ptr<Statement> update = connection->Opened().NewStatement();
    update->Execute(u"UPDATE " + table + u" SET " + assignments + u" WHERE " + conditions, values, codes);
    if (update->RowCount() == 0) throw Error(u"The row was changed or deleted by another user, so it was not updated.");
}

std::vector<size_t> RecordsetState::KeyColumns() {
    std::vector<size_t> found;
    bool isComplete = true;
    for (const Text& column : connection->Opened().KeyColumns(table)) {
        const auto isKey = [&](const Column& each) { return EqualNoCase(each.name, column); };
        const auto position = std::ranges::find_if(columns, isKey);
        isComplete = isComplete && position != columns.end();
        if (isComplete) found.push_back(static_cast<size_t>(position - columns.begin()));
    }
    if (isComplete && !found.empty()) return found;
    found.resize(columns.size());
    std::iota(found.begin(), found.end(), 0);
    return found;
}

void RecordsetState::Cancel() noexcept {
    if (rows) rows->Cancel();
}

} // namespace dax
