#include "data/odbc/OdbcRows.h"

#include "base/Error.h"

#include <algorithm>
#include <array>

namespace dax {

namespace {

constexpr SQLLEN usualBytes = 512;  // bound for a column at least
constexpr SQLLEN mostBytes = 16384; // longer texts are asked for one by one

FieldType FieldTypeOf(SQLSMALLINT type, SQLSMALLINT digits) {
    switch (type) {
    case SQL_BIT:
        return FieldType::Boolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
        return FieldType::Integer;
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
        return FieldType::Fraction;
    case SQL_NUMERIC:
    case SQL_DECIMAL:
        return digits == 0 ? FieldType::Integer : FieldType::Fraction;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
        return FieldType::Date;
    default:
        return FieldType::Text;
    }
}

} // namespace

OdbcRows::OdbcRows(OdbcStatement& executed)
    : statement(executed), valueType(executed.Owner().IsNarrow() ? SQL_C_CHAR : SQL_C_WCHAR),
      unitSize(executed.Owner().IsNarrow() ? sizeof(char) : sizeof(char16_t)) {
    SQLSMALLINT count = 0;
    statement.Check(SQLNumResultCols(statement.Handle(), &count));
    if (count <= 0) throw Error(ErrorNumbers::Unspecified, u"The statement returns no rows.");
    for (SQLSMALLINT column = 1; column <= count; ++column) Describe(static_cast<SQLUSMALLINT>(column));
    buffers.resize(columns.size());
    SQLFreeStmt(statement.Handle(), SQL_UNBIND);
}

void OdbcRows::Describe(SQLUSMALLINT number) {
    Column& column = columns.emplace_back();
    SQLSMALLINT length = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    if (statement.Owner().IsNarrow()) {
        std::array<SQLCHAR, 1024> name{};
        statement.Check(SQLDescribeCol(statement.Handle(), number, name.data(), static_cast<SQLSMALLINT>(name.size()),
                                       &length, &type, &size, &digits, &nullable));
        column.name = FromUtf8(reinterpret_cast<const char*>(name.data()));
    } else {
        std::array<char16_t, 1024> name{};
        statement.Check(SQLDescribeColW(statement.Handle(), number, Wide(name.data()),
                                        static_cast<SQLSMALLINT>(name.size()), &length, &type, &size, &digits,
                                        &nullable));
        column.name = name.data();
    }
    column.code = type;
    column.type = FieldTypeOf(type, digits);
}

bool OdbcRows::Next() {
    const SQLRETURN result = SQLFetch(statement.Handle());
    statement.Check(result);
    if (result == SQL_NO_DATA) return false;
    for (Buffer& buffer : buffers) {
        buffer.isLoaded = !buffer.bytes.empty() && buffer.length != SQL_NO_TOTAL &&
                          buffer.length < static_cast<SQLLEN>(buffer.bytes.size());
        buffer.whole.clear();
    }
    // A driver with the strict rules gives the columns only in order.
    for (size_t i = 0; i < buffers.size() && !statement.Owner().ReadsInAnyOrder(); ++i) Load(i);
    return true;
}

bool OdbcRows::IsNull(size_t column) {
    if (!buffers[column].isLoaded) Load(column);
    return buffers[column].length == SQL_NULL_DATA;
}

TextView OdbcRows::FieldText(size_t column) {
    Buffer& buffer = buffers[column];
    buffer.decoded.clear();
    AppendField(column, buffer.decoded);
    return buffer.decoded;
}

bool OdbcRows::AppendField(size_t column, Text& text) {
    Buffer& buffer = buffers[column];
    if (!buffer.isLoaded) Load(column);
    if (buffer.length <= 0) return buffer.length != SQL_NULL_DATA;
    const char* const bytes = buffer.whole.empty() ? buffer.bytes.data() : buffer.whole.data();
    if (valueType == SQL_C_WCHAR)
        text.append(reinterpret_cast<const char16_t*>(bytes), static_cast<size_t>(buffer.length / unitSize));
    else
        AppendUtf8(text, {bytes, static_cast<size_t>(buffer.length)});
    return true;
}

// The beginning and the length, then all the rest at once: in small pieces a long text costs quadratic time in some
// drivers.
void OdbcRows::Load(size_t column) {
    Buffer& buffer = buffers[column];
    buffer.isLoaded = true;
    buffer.whole.resize(usualBytes);
    buffer.length = 0;
    for (;;) {
        SQLLEN length = 0; // of what is left
        const SQLLEN room = static_cast<SQLLEN>(buffer.whole.size()) - buffer.length;
        const SQLRETURN result = SQLGetData(statement.Handle(), static_cast<SQLUSMALLINT>(column + 1), valueType,
                                            buffer.whole.data() + buffer.length, room, &length);
        statement.Check(result);
        if (result != SQL_SUCCESS_WITH_INFO || (length >= 0 && length < room)) {
            buffer.length = length == SQL_NULL_DATA ? length : buffer.length + length;
            break;
        }
        const size_t whole =
            length == SQL_NO_TOTAL ? buffer.whole.size() * 2 : static_cast<size_t>(buffer.length + length + unitSize);
        buffer.length += room - unitSize;
        buffer.whole.resize(whole);
    }
    // The next rows are likely to be as long.
    if (buffer.length >= mostBytes || !statement.Owner().ReadsInAnyOrder()) return;
    const SQLLEN bytes = std::max(usualBytes, buffer.length * 2 + unitSize);
    buffer.bytes.resize(static_cast<size_t>(bytes));
    statement.Check(SQLBindCol(statement.Handle(), static_cast<SQLUSMALLINT>(column + 1), valueType,
                               buffer.bytes.data(), bytes, &buffer.length));
}

} // namespace dax
