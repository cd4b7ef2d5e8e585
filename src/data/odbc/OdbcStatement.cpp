#include "data/odbc/OdbcStatement.h"

#include "base/Error.h"
#include "data/odbc/OdbcRows.h"

#include <algorithm>

namespace dax {

namespace {

bool IsTextType(SQLSMALLINT type) {
    switch (type) {
    case SQL_CHAR:
    case SQL_VARCHAR:
    case SQL_LONGVARCHAR:
    case SQL_WCHAR:
    case SQL_WVARCHAR:
    case SQL_WLONGVARCHAR:
    case SQL_UNKNOWN_TYPE:
        return true;
    default:
        return false;
    }
}

// Engines refuse a plain text type for a long text: Access beyond 255 units, SQL Server beyond 4000.
SQLSMALLINT TypeOfText(size_t length) { return length <= 255 ? SQL_WVARCHAR : SQL_WLONGVARCHAR; }

} // namespace

OdbcStatement::OdbcStatement(OdbcConnection& connection) : owner(connection), handle(connection.Handle()) {
    if (!handle) ThrowOdbcError(SQL_HANDLE_DBC, connection.Handle(), connection.SqlDialect());
    // Braces in our texts are never ODBC escapes. A driver without the attribute looks only outside quotes anyway.
    SQLSetStmtAttr(handle.Get(), SQL_ATTR_NOSCAN, reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_NOSCAN_ON)),
                   0);
    if (owner.StatementLimit() > 0)
        SQLSetStmtAttr(handle.Get(), SQL_ATTR_QUERY_TIMEOUT,
                       reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(owner.StatementLimit())), 0);
}

OdbcStatement::~OdbcStatement() = default;

void OdbcStatement::Check(SQLRETURN result) { CheckOdbc(result, SQL_HANDLE_STMT, handle.Get(), owner.SqlDialect()); }

void OdbcStatement::Run(TextView adapted, std::span<const Value> values, std::span<const int> codes) {
    const struct Unbinding {
        ~Unbinding() { statement.Unbind(); }
        OdbcStatement& statement;
    } unbinding{*this};
    for (size_t i = 0; i < values.size(); ++i)
        Bind(static_cast<SQLUSMALLINT>(i + 1), values[i],
             i < codes.size() ? static_cast<SQLSMALLINT>(codes[i]) : SQLSMALLINT{0});
    Send(adapted);
}

Text OdbcStatement::Joined(std::span<const Text> adapted) {
    Text batch;
    for (const Text& statement : adapted) {
        if (!batch.empty()) batch += u";\n";
        batch += statement;
    }
    return batch;
}

void OdbcStatement::RunBatchText(const Text& batch) {
    Send(batch);
    // Each statement has its own result, and a late one its own error.
    for (SQLRETURN result = SQL_SUCCESS; result != SQL_NO_DATA;) {
        result = SQLMoreResults(Handle());
        Check(result);
    }
}

const std::vector<Column>& OdbcStatement::OpenRows() {
    rows = std::make_unique<OdbcRows>(*this);
    return rows->Columns();
}

bool OdbcStatement::ReturnsRows() const {
    SQLSMALLINT columns = 0;
    return SQL_SUCCEEDED(SQLNumResultCols(Handle(), &columns)) && columns > 0;
}

const std::vector<Column>& OdbcStatement::Columns() const { return rows->Columns(); }
bool OdbcStatement::Next() { return rows->Next(); }
bool OdbcStatement::IsNull(size_t column) { return rows->IsNull(column); }
TextView OdbcStatement::FieldText(size_t column) { return rows->FieldText(column); }
bool OdbcStatement::AppendField(size_t column, Text& text) { return rows->AppendField(column, text); }

void OdbcStatement::Send(TextView text) {
    if (owner.IsNarrow()) {
        const std::string utf8 = ToUtf8(text);
        Check(SQLExecDirect(Handle(), Narrow(utf8.c_str()), static_cast<SQLINTEGER>(utf8.size())));
    } else {
        const Text wellFormed = ReplaceLoneSurrogates(text);
        Check(SQLExecDirectW(Handle(), Wide(wellFormed.c_str()), static_cast<SQLINTEGER>(wellFormed.size())));
    }
}

void OdbcStatement::Bind(SQLUSMALLINT position, const Value& value, SQLSMALLINT columnType) {
    Parameter& parameter = parameters.emplace_back();
    const auto bind = [&](SQLSMALLINT own, SQLSMALLINT type, void* data, int digits = {}, SQLULEN size = {}) {
        Check(SQLBindParameter(Handle(), position, SQL_PARAM_INPUT, own, type, size, static_cast<SQLSMALLINT>(digits),
                               data, 0, data ? nullptr : &parameter.length));
    };
    if (const bool* boolean = std::get_if<bool>(&value)) {
        parameter.small = *boolean ? 1 : 0;
        bind(SQL_C_SLONG, columnType == SQL_BIT ? SQL_BIT : SQL_INTEGER, &parameter.small);
    } else if (const int64_t* number = std::get_if<int64_t>(&value)) {
        parameter.number = *number;
        parameter.small = static_cast<SQLINTEGER>(*number);
        // The driver of Access refuses numbers of 64 bits.
        if (parameter.small == *number)
            bind(SQL_C_SLONG, SQL_INTEGER, &parameter.small);
        else
            bind(SQL_C_SBIGINT, SQL_BIGINT, &parameter.number);
    } else if (const double* fraction = std::get_if<double>(&value)) {
        parameter.fraction = *fraction;
        bind(SQL_C_DOUBLE, SQL_DOUBLE, &parameter.fraction);
    } else if (const Text* text = std::get_if<Text>(&value)) {
        parameter.text = owner.IsNarrow() ? *text : ReplaceLoneSurrogates(*text);
        BindText(position, parameter, columnType);
    } else if (const DateTime* date = std::get_if<DateTime>(&value)) {
        const int digits = owner.SqlDialect().fractionDigits;
        uint32_t unit = 1;
        for (int digit = digits; digit < 9; ++digit) unit *= 10;
        parameter.date = {static_cast<SQLSMALLINT>(date->year),    static_cast<SQLUSMALLINT>(date->month),
                          static_cast<SQLUSMALLINT>(date->day),    static_cast<SQLUSMALLINT>(date->hour),
                          static_cast<SQLUSMALLINT>(date->minute), static_cast<SQLUSMALLINT>(date->second),
                          date->fraction - date->fraction % unit};
        bind(SQL_C_TYPE_TIMESTAMP, SQL_TYPE_TIMESTAMP, &parameter.date, digits,
             static_cast<SQLULEN>(digits == 0 ? 19 : 20 + digits));
    } else {
        parameter.length = SQL_NULL_DATA;
        bind(SQL_C_WCHAR, columnType == SQL_UNKNOWN_TYPE ? SQLSMALLINT{SQL_WVARCHAR} : columnType, nullptr, {}, 1);
    }
}

void OdbcStatement::BindText(SQLUSMALLINT position, Parameter& parameter, SQLSMALLINT columnType) {
    const bool isNarrow = owner.IsNarrow();
    SQLPOINTER data;
    if (isNarrow) {
        parameter.utf8 = ToUtf8(parameter.text);
        parameter.length = static_cast<SQLLEN>(parameter.utf8.size());
        data = parameter.utf8.data();
    } else {
        parameter.length = static_cast<SQLLEN>(parameter.text.size() * sizeof(char16_t));
        data = parameter.text.data();
    }
    const size_t units = isNarrow ? parameter.utf8.size() : parameter.text.size();
    const SQLSMALLINT type = !IsTextType(columnType) ? columnType
                             : !isNarrow             ? TypeOfText(units)
                             : units <= 255          ? SQLSMALLINT{SQL_VARCHAR}
                                                     : SQLSMALLINT{SQL_LONGVARCHAR};
    Check(SQLBindParameter(Handle(), position, SQL_PARAM_INPUT, isNarrow ? SQL_C_CHAR : SQL_C_WCHAR, type,
                           std::max<size_t>(units, 1), 0, data, parameter.length, &parameter.length));
}

void OdbcStatement::Unbind() noexcept {
    if (parameters.empty()) return;
    SQLFreeStmt(Handle(), SQL_RESET_PARAMS);
    parameters.clear();
}

int64_t OdbcStatement::RowCount() const {
    SQLLEN count = -1;
    return SQL_SUCCEEDED(SQLRowCount(Handle(), &count)) ? count : -1;
}

void OdbcStatement::Close() noexcept {
    rows.reset();
    SQLFreeStmt(Handle(), SQL_CLOSE);
}

} // namespace dax
