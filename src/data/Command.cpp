#include "data/Command.h"

#include "data/odbc/OdbcStatement.h"

namespace dax {

int64_t Command::Execute(int) {
    OdbcStatement& scratch = connection.Native().Scratch();
    scratch.Execute(commandText, parameters);
    const int64_t rows = scratch.RowCount();
    scratch.CloseCursor();
    return rows;
}

} // namespace dax
