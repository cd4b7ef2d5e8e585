#include "data/sqlite/SQLiteStatement.h"

#include "base/Dates.h"
#include "data/StatementText.h"
#include "data/sqlite/SQLiteErrors.h"

#include <algorithm>

namespace dax {

namespace {

struct DeclaredType {
    TextView word; // anywhere in a declaration
    FieldType type;
};

// A declaration may say anything; the first word that is found in it decides.
constexpr DeclaredType declaredTypes[] = {
    {u"bool", FieldType::Boolean},     {u"bit", FieldType::Boolean},     {u"int", FieldType::Integer},
    {u"date", FieldType::Date},        {u"timestamp", FieldType::Date},  {u"real", FieldType::Fraction},
    {u"float", FieldType::Fraction},   {u"double", FieldType::Fraction}, {u"numeric", FieldType::Fraction},
    {u"decimal", FieldType::Fraction},
};

FieldType TypeOfDeclaration(TextView declaration) {
    const Text lower = LowerAscii(declaration);
    for (const auto& [word, type] : declaredTypes)
        if (lower.find(word) != Text::npos) return type;
    return FieldType::Text;
}

// Bytes as a literal of a statement.
void AppendBytes(const void* bytes, size_t count, Text& text) {
    constexpr TextView digits = u"0123456789ABCDEF";
    const auto* const first = static_cast<const unsigned char*>(bytes);
    text += u"X'";
    for (size_t i = 0; i < count; ++i) {
        text.push_back(digits[first[i] >> 4]);
        text.push_back(digits[first[i] & 15]);
    }
    text.push_back(u'\'');
}

} // namespace

SQLiteStatement::SQLiteStatement(SQLiteConnection& connection) : owner(&connection) {
    owner->statements.push_back(this);
}

SQLiteStatement::~SQLiteStatement() {
    Close();
    if (owner) std::erase(owner->statements, this);
}

void SQLiteStatement::Abandon() noexcept {
    Close();
    repeated.reset();
    owner = nullptr;
}

SQLiteConnection& SQLiteStatement::Owner() const {
    if (!owner) throw Error(u"The connection is closed.");
    return *owner;
}

sqlite3_stmt* SQLiteStatement::Opened() const {
    (void)Owner();
    if (!handle) throw Error(u"The statement has no more rows.");
    return handle.get();
}

void SQLiteStatement::Run(TextView adapted, std::span<const Value> parameters, std::span<const int>) {
    // The engine reads a text up to the first zero: literals that have one go as parameters.
    if (adapted.find(u'\0') != TextView::npos) {
        const auto parametrized = parameters.empty() ? ParametrizeLiteralsWithNul(adapted) : std::nullopt;
        if (!parametrized) throw SQLiteSyntaxError(u"The statement contains a NUL character outside a quoted text.");
        return Run(parametrized->statement, parametrized->values, {});
    }
    Owner().RequireTransaction();
    const SQLiteWaitScope waiting(owner->Wait());
    changes = 0;
    const sqlite3_int64 before = sqlite3_total_changes64(owner->Handle());
    if (parameters.empty() && RunRepeated(adapted)) return Finish(before);
    handle = Compile(adapted, 0);
    if (!handle) return; // nothing but blanks and comments
    const int requested = sqlite3_bind_parameter_count(handle.get());
    if (static_cast<size_t>(requested) != parameters.size())
        throw Error(u"The statement has " + ToText(requested) + u" parameters, but " +
                    ToText(static_cast<long long>(parameters.size())) + u" values were given.");
    for (int i = 0; i < requested; ++i) Bind(i + 1, parameters[static_cast<size_t>(i)]);
    Step(handle.get());
    isFresh = hasRow;
    Finish(before);
    if (sqlite3_column_count(handle.get()) == 0) handle.reset();
}

void SQLiteStatement::Finish(sqlite3_int64 changesBefore) {
    if (sqlite3_total_changes64(owner->Handle()) != changesBefore) changes = sqlite3_changes64(owner->Handle());
}

// True when it was run this way. What cannot be compiled without its literals is run with them.
bool SQLiteStatement::RunRepeated(TextView text) {
    if (!shape.Read(text)) return false;
    if (shape.Template() != lastTemplate) {
        repeated.reset();
        lastTemplate = shape.MayRepeat() ? shape.Template() : Text();
        return false;
    }
    if (!repeated) {
        try {
            repeated = Compile(lastTemplate, SQLITE_PREPARE_PERSISTENT);
        } catch (const Error&) {
            lastTemplate.clear();
            return false;
        }
        if (sqlite3_column_count(repeated.get()) != 0) {
            repeated.reset();
            lastTemplate.clear();
            return false;
        }
    }
    owner->Check(shape.Bind(repeated.get()));
    try {
        Step(repeated.get());
    } catch (...) {
        sqlite3_reset(repeated.get());
        throw;
    }
    sqlite3_reset(repeated.get());
    return true;
}

SQLiteStatementHandle SQLiteStatement::Compile(TextView text, unsigned flags) {
    ToUtf8(text, utf8);
    sqlite3_stmt* made = nullptr;
    const char* rest = nullptr;
    owner->BeginCall();
    // With the zero at its end the text need not be copied.
    const int size = static_cast<int>(std::min<size_t>(utf8.size() + 1, INT_MAX));
    owner->Check(sqlite3_prepare_v3(owner->Handle(), utf8.c_str(), size, flags, &made, &rest));
    SQLiteStatementHandle compiled(made);
    if (std::string_view(rest).find_first_not_of(" \t\r\n\f;") != std::string_view::npos)
        throw Error(u"Only one SQL statement is allowed in a call.");
    return compiled;
}

void SQLiteStatement::Bind(int position, const Value& value) {
    const auto bindText = [&](const Text& text) {
        const std::string bytes = ToUtf8(text);
        return sqlite3_bind_text64(handle.get(), position, bytes.data(), bytes.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    };
    int result;
    if (const bool* boolean = std::get_if<bool>(&value))
        result = sqlite3_bind_int(handle.get(), position, *boolean ? 1 : 0);
    else if (const int64_t* number = std::get_if<int64_t>(&value))
        result = sqlite3_bind_int64(handle.get(), position, *number);
    else if (const double* fraction = std::get_if<double>(&value))
        result = sqlite3_bind_double(handle.get(), position, *fraction);
    else if (const Text* text = std::get_if<Text>(&value))
        result = bindText(*text);
    else if (const DateTime* date = std::get_if<DateTime>(&value))
        result = bindText(FormatDate(*date)); // as dates are stored
    else
        result = sqlite3_bind_null(handle.get(), position);
    owner->Check(result);
}

void SQLiteStatement::Step(sqlite3_stmt* statement) {
    owner->BeginCall();
    isRunning = true;
    const int result = sqlite3_step(statement);
    isRunning = false;
    hasRow = result == SQLITE_ROW;
    ++row;
    if (!hasRow && result != SQLITE_DONE) owner->Check(result);
}

const std::vector<Column>& SQLiteStatement::OpenRows() {
    (void)Owner();
    if (!handle) throw Error(u"The statement returns no rows.");
    columns.clear();
    const int count = sqlite3_column_count(handle.get());
    for (int i = 0; i < count; ++i) columns.push_back(Describe(i));
    fields.resize(columns.size());
    return columns;
}

Column SQLiteStatement::Describe(int column) const {
    Column described;
    const char* const name = sqlite3_column_name(handle.get(), column);
    if (!name) throw SQLiteError(owner->Handle(), SQLITE_NOMEM, {});
    described.name = FromUtf8(name);
    if (const char* const declared = sqlite3_column_decltype(handle.get(), column)) {
        described.type = TypeOfDeclaration(FromUtf8(declared));
    } else if (hasRow) { // the type of an expression is known from its first value only
        const int type = sqlite3_column_type(handle.get(), column);
        described.type = type == SQLITE_INTEGER ? FieldType::Integer
                         : type == SQLITE_FLOAT ? FieldType::Fraction
                                                : FieldType::Text;
    }
    return described;
}

bool SQLiteStatement::Next() {
    (void)Opened();
    if (isFresh) {
        isFresh = false;
        return true;
    }
    if (hasRow) Step(handle.get());
    if (hasRow) return true;
    handle.reset(); // keeps no lock
    return false;
}

bool SQLiteStatement::IsNull(size_t column) { return Read(column).isNull; }
TextView SQLiteStatement::FieldText(size_t column) { return Read(column).text; }

bool SQLiteStatement::AppendField(size_t column, Text& text) {
    return Append(sqlite3_column_value(Opened(), static_cast<int>(column)), text);
}

const SQLiteStatement::Field& SQLiteStatement::Read(size_t column) {
    sqlite3_stmt* const statement = Opened();
    Field& field = fields[column];
    if (field.row == row) return field;
    field.text.clear();
    field.isNull = !Append(sqlite3_column_value(statement, static_cast<int>(column)), field.text);
    field.row = row;
    return field;
}

// The value is fetched once, then read: on a connection without mutexes that is allowed, and saves a third of
// the calls.
bool SQLiteStatement::Append(sqlite3_value* value, Text& text) const {
    switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
        return false;
    case SQLITE_INTEGER:
        AppendNumber(text, sqlite3_value_int64(value));
        return true;
    case SQLITE_BLOB:
        AppendBytes(sqlite3_value_blob(value), static_cast<size_t>(sqlite3_value_bytes(value)), text);
        return true;
    default:
        const auto* const bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
        if (!bytes) throw SQLiteError(owner->Handle(), SQLITE_NOMEM, {});
        AppendUtf8(text, {bytes, static_cast<size_t>(sqlite3_value_bytes(value))});
        return true;
    }
}

std::optional<int64_t> SQLiteStatement::FieldInteger(size_t column) {
    sqlite3_stmt* const statement = Opened();
    Field& field = fields[column];
    if (field.numbersRow == row) return field.number;
    sqlite3_value* const value = sqlite3_column_value(statement, static_cast<int>(column));
    field.number.reset();
    if (sqlite3_value_type(value) == SQLITE_INTEGER) field.number = sqlite3_value_int64(value);
    field.numbersRow = row;
    return field.number;
}

void SQLiteStatement::Close() noexcept {
    handle.reset();
    hasRow = isFresh = false;
}

void SQLiteStatement::Cancel() noexcept {
    // The engine would end whatever runs on this connection, so it is interrupted only while this statement runs.
    if (!owner || !isRunning) return;
    owner->Wait().Cancel();
    sqlite3_interrupt(owner->Handle());
}

} // namespace dax
