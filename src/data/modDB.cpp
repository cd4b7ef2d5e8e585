#include "data/modDB.h"

#include "base/Dates.h"
#include "data/Guarded.h"

#include <charconv>
#include <iterator>

namespace dax::modDB {

namespace {

template <typename Action>
void Ignoring(Action action) noexcept {
    try {
        action();
    } catch (...) {
        // Clean-up continues after errors: the first error is the one to report, and the caller has it already.
    }
}

} // namespace

Text QuoteSQLString(TextView text) {
    Text quoted;
    quoted.push_back(u'\'');
    for (const char16_t unit : text) {
        if (unit == u'\'') quoted.push_back(unit);
        quoted.push_back(unit);
    }
    quoted.push_back(u'\'');
    return quoted;
}

Text FormatSQLDate(const DateTime& date, bool isMDB) {
    const char16_t mark = isMDB ? u'#' : u'\'';
    Text text(1, mark);
    AppendPadded(text, date.year, 4);
    text.push_back(u'/');
    AppendPadded(text, date.month, 2);
    text.push_back(u'/');
    AppendPadded(text, date.day, 2);
    text.push_back(u' ');
    text += ToText(date.hour);
    text.push_back(u':');
    AppendPadded(text, date.minute, 2);
    text.push_back(u':');
    AppendPadded(text, date.second, 2);
    text.push_back(mark);
    return text;
}

Text FormatErrorNumber(int32_t number) {
    char digits[16];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), static_cast<uint32_t>(number), 16).ptr;
    Text hexadecimal(std::begin(digits), end);
    for (char16_t& unit : hexadecimal) {
        if (unit >= u'a') unit = static_cast<char16_t>(unit - 32);
    }
    return u"error number: " + ToText(number) + u" (&H" + hexadecimal + u")";
}

bool TestOpenConnection(const Text& connectionString, int32_t& errorNumber, Text& errorDescription) noexcept {
    return Guarded(errorNumber, errorDescription, [&] { Connection().Open(connectionString); });
}

void Probe(Connection& connection, const Text& statement) {
    Recordset recordset;
    recordset.Open(statement, connection, adOpenKeyset, adLockReadOnly, adAsyncFetch);
    recordset.Cancel();
    recordset.Close();
}

void CloseConnectionObjects(Recordset* recordset, Connection* connection, bool rollBack) noexcept {
    Ignoring([&] {
        if (recordset && recordset->IsOpen()) {
            recordset->Cancel();
            recordset->Close();
        }
    });
    Ignoring([&] {
        if (rollBack && connection && connection->IsOpen()) connection->RollbackTrans();
    });
    Ignoring([&] {
        if (connection && connection->IsOpen()) {
            connection->Cancel();
            connection->Close();
        }
    });
}

} // namespace dax::modDB
