#include "data/OdbcRows.h"

#include "data/Error.h"

#include <algorithm>
#include <array>

namespace dax {

namespace {

constexpr size_t usualUnits = 256;  // bound for a column that tells no small size
constexpr size_t mostUnits = 16384; // longer texts are asked for one by one
constexpr SQLLEN unitSize = sizeof(char16_t);

} // namespace

OdbcRows::OdbcRows(OdbcStatement& executed) : statement(executed) {
    SQLSMALLINT count = 0;
    statement.Check(SQLNumResultCols(statement.Handle(), &count));
    if (count <= 0) throw Error(ErrorNumbers::Unspecified, u"The statement gives no rows.");
    for (SQLSMALLINT column = 1; column <= count; ++column) Describe(static_cast<SQLUSMALLINT>(column));
    buffers.resize(columns.size());
    const bool freely = statement.Owner().GetsDataFreely();
    SQLFreeStmt(statement.Handle(), SQL_UNBIND);
    for (size_t i = 0; i < columns.size(); ++i) {
        const SQLULEN size = columns[i].size;
        const bool isShort = size > 0 && size < mostUnits / 4;
        // A driver with the strict rules gives what is not bound only behind the last bound column, and in order.
        if (!freely && !isShort) break;
        BindColumn(i, freely ? usualUnits : std::max<size_t>(size, 40) + 1);
    }
}

void OdbcRows::Describe(SQLUSMALLINT number) {
    Column& column = columns.emplace_back();
    SQLSMALLINT length = 0, digits = 0, nullable = 0;
    if (statement.Owner().IsNarrow()) {
        std::array<SQLCHAR, 1024> name{};
        statement.Check(SQLDescribeCol(statement.Handle(), number, name.data(), static_cast<SQLSMALLINT>(name.size()),
                                       &length, &column.type, &column.size, &digits, &nullable));
        column.name = FromUtf8(reinterpret_cast<const char*>(name.data()));
    } else {
        std::array<char16_t, 1024> name{};
        statement.Check(SQLDescribeColW(statement.Handle(), number, Wide(name.data()),
                                        static_cast<SQLSMALLINT>(name.size()), &length, &column.type, &column.size,
                                        &digits, &nullable));
        column.name = name.data();
    }
    column.digits = digits;
}

void OdbcRows::BindColumn(size_t index, size_t units) {
    Buffer& buffer = buffers[index];
    buffer.units.resize(units);
    buffer.isBound = true;
    statement.Check(SQLBindCol(statement.Handle(), static_cast<SQLUSMALLINT>(index + 1), SQL_C_WCHAR,
                               buffer.units.data(), static_cast<SQLLEN>(units) * unitSize, &buffer.length));
}

bool OdbcRows::Next() {
    const SQLRETURN result = SQLFetch(statement.Handle());
    statement.Check(result);
    if (result == SQL_NO_DATA) return false;
    for (Buffer& buffer : buffers) {
        const auto room = static_cast<SQLLEN>(buffer.units.size()) * unitSize;
        buffer.isLoaded =
            buffer.isBound && (buffer.length == SQL_NULL_DATA || (buffer.length >= 0 && buffer.length < room));
        if (!buffer.whole.empty()) buffer.whole.clear();
    }
    if (!statement.Owner().GetsDataFreely())
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
    if (!buffer.isLoaded) Load(column);
    if (buffer.length <= 0) return {};
    const char16_t* units = buffer.whole.empty() ? buffer.units.data() : buffer.whole.data();
    return {units, static_cast<size_t>(buffer.length / unitSize)};
}

// The length first, then all of it at once: fetching a long text in small pieces costs quadratic time in some drivers.
void OdbcRows::Load(size_t column) {
    Buffer& buffer = buffers[column];
    const auto number = static_cast<SQLUSMALLINT>(column + 1);
    const bool wasBound = buffer.isBound;
    if (!wasBound || buffer.length == SQL_NO_TOTAL) {
        char16_t terminator = 0;
        buffer.length = 0;
        const SQLRETURN result =
            SQLGetData(statement.Handle(), number, SQL_C_WCHAR, &terminator, unitSize, &buffer.length);
        statement.Check(result);
        buffer.isLoaded = true;
        if (result == SQL_NO_DATA || buffer.length == 0) buffer.length = 0;
        if (buffer.length == SQL_NULL_DATA || buffer.length == 0) return;
    }
    LoadPieces(column, buffer.length > 0 ? static_cast<size_t>(buffer.length / unitSize) : 0);
    buffer.isLoaded = true;
    // The next rows are likely to be as long.
    const auto units = static_cast<size_t>(buffer.length / unitSize);
    if (statement.Owner().GetsDataFreely() && units < mostUnits && buffer.units.size() <= units) {
        if (buffer.whole.empty()) return;
        BindColumn(column, std::min(mostUnits, units * 2) + 1);
        buffer.length = static_cast<SQLLEN>(units) * unitSize;
    }
}

void OdbcRows::LoadPieces(size_t column, size_t known) {
    Buffer& buffer = buffers[column];
    buffer.whole.resize(known + 1 > 1 ? known + 1 : mostUnits);
    for (size_t done = 0;;) {
        SQLLEN length = 0;
        const auto room = static_cast<SQLLEN>(buffer.whole.size() - done) * unitSize;
        const SQLRETURN result = SQLGetData(statement.Handle(), static_cast<SQLUSMALLINT>(column + 1), SQL_C_WCHAR,
                                            buffer.whole.data() + done, room, &length);
        statement.Check(result);
        if (result != SQL_NO_DATA && length == SQL_NULL_DATA) {
            buffer.length = SQL_NULL_DATA;
            return;
        }
        const bool more = result == SQL_SUCCESS_WITH_INFO && (length == SQL_NO_TOTAL || length >= room);
        if (result != SQL_NO_DATA) done += static_cast<size_t>((more ? room - unitSize : length) / unitSize);
        if (!more) {
            buffer.length = static_cast<SQLLEN>(done) * unitSize;
            return;
        }
        buffer.whole.resize(buffer.whole.size() * 2);
    }
}

} // namespace dax
