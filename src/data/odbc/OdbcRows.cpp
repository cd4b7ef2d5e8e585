#include "data/odbc/OdbcRows.h"

#include "base/Error.h"

#include <algorithm>
#include <array>

namespace dax {

namespace {

constexpr size_t usualBytes = 512; // bound for a column at least
constexpr size_t maxBytes = 32768; // longer texts are fetched one by one

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
    if (count <= 0) throw Error(u"The statement returns no rows.");
    for (SQLSMALLINT column = 1; column <= count; ++column) Describe(static_cast<SQLUSMALLINT>(column));
    buffers.resize(columns.size());
    SQLFreeStmt(statement.Handle(), SQL_UNBIND);
    if (statement.Owner().HasGetDataAnyOrder()) return; // a column is bound at its first use
    for (size_t i = 0; i < columns.size(); ++i) {
        const SQLULEN size = sizes[i];
        const bool isShort = size > 0 && size < maxBytes / 8;
        // A driver with the strict rules returns unbound columns only after the last bound one, and in order.
        if (!isShort) break;
        BindColumn(i, (std::max<size_t>(size, 40) + 1) * 4);
    }
}

void OdbcRows::Describe(SQLUSMALLINT number) {
    Column& column = columns.emplace_back();
    SQLSMALLINT length = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN& size = sizes.emplace_back();
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

void OdbcRows::BindColumn(size_t index, size_t bytes) {
    Buffer& buffer = buffers[index];
    buffer.bytes.resize(bytes);
    buffer.isBound = true;
    statement.Check(SQLBindCol(statement.Handle(), static_cast<SQLUSMALLINT>(index + 1), valueType, buffer.bytes.data(),
                               static_cast<SQLLEN>(bytes), &buffer.length));
}

bool OdbcRows::Next() {
    const SQLRETURN result = SQLFetch(statement.Handle());
    statement.Check(result);
    if (result == SQL_NO_DATA) return false;
    for (Buffer& buffer : buffers) {
        const auto room = static_cast<SQLLEN>(buffer.bytes.size());
        buffer.isLoaded = buffer.isBound &&
                          (buffer.length == SQL_NULL_DATA || (buffer.length >= 0 && buffer.length <= room - unitSize));
        buffer.isDecoded = false;
        buffer.whole.clear();
    }
    if (!statement.Owner().HasGetDataAnyOrder())
        for (size_t i = 0; i < buffers.size(); ++i)
            if (!buffers[i].isLoaded) Load(i);
    return true;
}

bool OdbcRows::IsNull(size_t column) {
    if (!buffers[column].isLoaded) Load(column);
    return buffers[column].length == SQL_NULL_DATA;
}

TextView OdbcRows::FieldText(size_t column) {
    Buffer& buffer = buffers[column];
    if (buffer.isLoaded && buffer.isDecoded) return buffer.decoded;
    buffer.decoded.clear();
    AppendField(column, buffer.decoded);
    buffer.isDecoded = true;
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

// The length first, then all of it at once: fetching a long text in small pieces costs quadratic time in some drivers.
void OdbcRows::Load(size_t column) {
    Buffer& buffer = buffers[column];
    buffer.isLoaded = true;
    bool isEmpty = false;
    if (!buffer.isBound) {
        char16_t terminator = 0;
        buffer.length = 0;
        statement.Check(SQLGetData(statement.Handle(), static_cast<SQLUSMALLINT>(column + 1), valueType, &terminator,
                                   unitSize, &buffer.length));
        isEmpty = buffer.length == SQL_NULL_DATA || buffer.length == 0;
    }
    if (!isEmpty) LoadPieces(column, buffer.length > 0 ? static_cast<size_t>(buffer.length) : 0);
    // The next rows are likely to be as long.
    const SQLLEN length = buffer.length;
    if (length >= static_cast<SQLLEN>(maxBytes / 2) || !statement.Owner().HasGetDataAnyOrder()) return;
    BindColumn(column, std::max(usualBytes, static_cast<size_t>(std::max<SQLLEN>(length, 0)) * 2 + 2));
    buffer.length = length;
}

void OdbcRows::LoadPieces(size_t column, size_t known) {
    Buffer& buffer = buffers[column];
    buffer.whole.resize(known > 0 ? known + static_cast<size_t>(unitSize) : maxBytes);
    for (size_t done = 0;;) {
        SQLLEN length = 0;
        const auto room = static_cast<SQLLEN>(buffer.whole.size() - done);
        const SQLRETURN result = SQLGetData(statement.Handle(), static_cast<SQLUSMALLINT>(column + 1), valueType,
                                            buffer.whole.data() + done, room, &length);
        statement.Check(result);
        if (result != SQL_NO_DATA && length == SQL_NULL_DATA) {
            buffer.length = SQL_NULL_DATA;
            return;
        }
        const bool more = result == SQL_SUCCESS_WITH_INFO && (length == SQL_NO_TOTAL || length > room - unitSize);
        if (result != SQL_NO_DATA) done += static_cast<size_t>(more ? room - unitSize : length);
        if (!more) {
            buffer.length = static_cast<SQLLEN>(done);
            return;
        }
        buffer.whole.resize(buffer.whole.size() * 2);
    }
}

} // namespace dax
