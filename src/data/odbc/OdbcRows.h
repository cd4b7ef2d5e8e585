// The rows of an executed statement: columns bound once, every value as text in a buffer that is used again.
#pragma once

#include "data/odbc/OdbcStatement.h"

namespace dax {

class OdbcRows {
public:
    // Describes the columns and binds them; throws when the statement has no rows to give.
    explicit OdbcRows(OdbcStatement& statement);

    const std::vector<Column>& Columns() const { return columns; }
    // False at the end.
    bool Next();
    bool IsNull(size_t column);
    // Valid until the next row; NULL is empty.
    TextView FieldText(size_t column);
    // Appends it to a text; false, and no change, for NULL.
    bool AppendField(size_t column, Text& text);

private:
    struct Buffer {
        std::vector<char> bytes; // what is bound
        std::vector<char> whole; // what was fetched because it was longer than that
        Text decoded;            // the value as a text
        SQLLEN length = 0;       // bytes, or SQL_NULL_DATA, or SQL_NO_TOTAL
        bool isBound = false;
        bool isLoaded = false;  // the value of the current row is in bytes or whole
        bool isDecoded = false; // and in decoded
    };
    void Describe(SQLUSMALLINT column);
    void BindColumn(size_t column, size_t bytes);
    void Load(size_t column);
    void LoadPieces(size_t column, size_t known);

    OdbcStatement& statement;
    SQLSMALLINT valueType; // SQL_C_CHAR, which is UTF-8 then, or SQL_C_WCHAR
    SQLLEN unitSize;
    std::vector<Column> columns;
    std::vector<SQLULEN> sizes; // of the columns, in units, 0 when not known
    std::vector<Buffer> buffers;
};

} // namespace dax
