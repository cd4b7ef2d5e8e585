#include "data/sqlite/SQLiteErrors.h"

#include <system_error>

namespace dax {

namespace {

struct MessageRule {
    TextView fragment;
    int32_t number;
};

// SQLite reports all of these as one code.
constexpr MessageRule messageRules[] = {
    {u"no such table", ErrorNumbers::NoTable},
    {u"no such column", ErrorNumbers::SyntaxOrColumn},
    {u"has no column named", ErrorNumbers::SyntaxOrColumn},
    {u"syntax error", ErrorNumbers::SyntaxOrColumn},
    {u"unrecognized token", ErrorNumbers::SyntaxOrColumn},
    {u"incomplete input", ErrorNumbers::SyntaxOrColumn},
};

int32_t NumberOfCode(int result, const Text& message) {
    switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return ErrorNumbers::Timeout;
    case SQLITE_READONLY:
        return ErrorNumbers::Permission;
    case SQLITE_TOOBIG:
        return ErrorNumbers::DataOverflow;
    case SQLITE_CONSTRAINT:
        return ErrorNumbers::Integrity;
    case SQLITE_ERROR:
        for (const MessageRule& rule : messageRules)
            if (message.find(rule.fragment) != Text::npos) return rule.number;
        return ErrorNumbers::Unspecified;
    default:
        return ErrorNumbers::Unspecified;
    }
}

// " (the system says: ...)", when it says something.
Text SystemErrorText(sqlite3* file) {
    const int code = file ? sqlite3_system_errno(file) : 0;
    if (code == 0) return {};
    return u" (the system says: " + FromUtf8(std::system_category().message(code)) + u")";
}

// What the user can do about it; the engine's own message otherwise.
Text SentenceOf(sqlite3* file, int result, const Text& message, const Text& path) {
    const Text name = u"'" + path + u"'";
    switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_PROTOCOL:
        return u"The database file " + name +
               u" is locked by another program or another connection. Wait until that has finished, or close it, and "
               u"try again.";
    case SQLITE_LOCKED:
        return u"A table of " + name + u" is still being read on the same connection and cannot be changed now (" +
               message + u").";
    case SQLITE_READONLY:
        if (result == SQLITE_READONLY_DBMOVED)
            return u"The database file " + name +
                   u" was moved, deleted or replaced while it was open, so nothing more is written to it. Open it "
                   u"again.";
        if (result != SQLITE_READONLY)
            return u"The database file " + name +
                   u" is read-only here: the files beside it cannot be written. Check that you may write into its "
                   u"folder.";
        return u"The database file " + name +
               u" is read-only, so nothing can be written to it. Check its attributes, your rights, and whether its "
               u"disk can be written.";
    case SQLITE_FULL:
        return u"The disk with the database file " + name + u" is full. Make room on it and try again.";
    case SQLITE_NOTADB:
        return name + u" is not a database file, or it is encrypted.";
    case SQLITE_CORRUPT:
        return u"The database file " + name + u" is damaged (" + message +
               u"). Put a copy of it in its place, or have it repaired with SQLite's own tool.";
    case SQLITE_IOERR:
        return u"The database file " + name + u" could not be read or written" + SystemErrorText(file) +
               u". Check the disk, or the network on which the file lies.";
    case SQLITE_CANTOPEN:
        return u"The database file " + name + u", or a file beside it that is needed, cannot be opened" +
               SystemErrorText(file) + u". Check that you may read it and may write into its folder.";
    case SQLITE_NOMEM:
        return u"There is not enough memory to work on the database file " + name + u".";
    case SQLITE_INTERRUPT:
        return u"The statement was cancelled.";
    default:
        return message;
    }
}

} // namespace

Error SQLiteError(sqlite3* file, int result, const Text& path) {
    // Without a file, which there was no memory to open, the engine says just that.
    const bool isRecorded = sqlite3_extended_errcode(file) != SQLITE_OK;
    const Text message = FromUtf8(isRecorded ? sqlite3_errmsg(file) : sqlite3_errstr(result));
    return {NumberOfCode(result, message), SentenceOf(file, result, message, path)};
}

Error SQLiteSyntaxError(Text description) { return {ErrorNumbers::SyntaxOrColumn, std::move(description)}; }

} // namespace dax
