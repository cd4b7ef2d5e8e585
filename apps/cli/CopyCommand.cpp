// dax copy: a database moved to another file or server, whatever engine each is on.
#include "Command.h"
#include "Console.h"
#include "Interruption.h"
#include "Password.h"
#include "Target.h"
#include "data/DatabaseCopy.h"

#include <filesystem>
#include <optional>

namespace dax::cli {

namespace {

Text Count(size_t number, const Text& word) {
    return ToText(static_cast<long long>(number)) + u" " + word + (number == 1 ? u"" : u"s");
}

Text Listed(const std::vector<Text>& names) {
    Text list;
    for (const Text& name : names) list.append(list.empty() ? u"" : u", ").append(name);
    return list;
}

Text KindOf(const DatabaseCopy& copy) {
    if (copy.HasContent() && copy.HasConnector()) return u"content and connector database";
    return copy.HasContent() ? u"content database" : u"connector database";
}

Text ResultText(const DatabaseCopy& copy, const Target& from, const Target& to) {
    Text result = u"Copied the " + KindOf(copy) + u" '" + from.shown + u"' to '" + to.shown + u"': " +
                  Count(copy.RowsInAll(), u"row") + u" in " + Count(copy.Tables().size(), u"table") +
                  u"\nRead again and compared: every value is the same";
    if (!copy.UnknownInSource().empty())
        result += u"\nNot copied, since a " + KindOf(copy) + u" has no such tables or columns: " +
                  Listed(copy.UnknownInSource());
    if (!copy.UnknownInTarget().empty())
        result += u"\nLeft alone in '" + to.shown + u"': " + Listed(copy.UnknownInTarget());
    return result;
}

ExitCode Copy(const Arguments& arguments) {
    const Target from = ParseTarget(arguments), to = ParseTarget(arguments, 1, u"--to-password");
    std::optional<NewFile> file;
    InterruptScope copying(u"Nothing was copied.", [&] {
        if (file) file->Remove();
    });
    std::optional<DatabaseCopy> copy;
    try {
        std::error_code failure;
        if (to.isFile && !std::filesystem::exists(std::filesystem::path(to.connection), failure)) file.emplace(to);
        copy.emplace(DatabaseCopy::Endpoint{from.connection, from.shown},
                     DatabaseCopy::Endpoint{file ? file->Path() : to.connection, to.shown});
        if (!copy->TableWithRows().empty() && !arguments.Has(ForceOption.name))
            throw RefusedError(u"'" + to.shown + u"' has rows in " + copy->TableWithRows() +
                               u" already. Give an empty database, or replace all rows with --force.");
        Progress progress(u"copying", copy->RowsInAll() * 2); // written, then compared
        copy->Write([&](size_t done) { progress.Report(done); });
        copying.Finish();
        copy->Finish();
        const Text result = ResultText(*copy, from, to);
        copy.reset(); // which closes the file
        if (file) file->Put();
        Announce(result);
    } catch (const Error& error) { // which names the place of the two
        PrintError(u"dax copy: " + error.Description() +
                   (copy && copy->IsInDoubt() ? u" It is not known whether the copy was stored: all of it, or nothing. "
                                                u"Check '" +
                                                    to.shown + u"'."
                                              : Text(u" Nothing was copied.")));
        return Failure;
    }
    return Success;
}

constexpr Option CopyOptions[] = {
    {ForceOption.name, u"", u"replace all rows of the tables that exist in TO"},
    SecondPasswordOptions[0],
    SecondPasswordOptions[1],
    SecondPasswordOptions[2],
};

} // namespace

const Command CopyCommand = {
    u"copy",
    u"FROM TO",
    2,
    2,
    u"Copy a content or connector database to another file or server.\n"
    u"FROM and TO are files or connection strings, on the same engine or on two. A missing file becomes a SQLite\n"
    u"database; in an empty catalog or file the tables are created. All rows of all tables are copied in one\n"
    u"transaction, read again and compared. If anything fails, TO stays as it was; FROM is only read. Tables and\n"
    u"columns that other programs have added are neither copied nor changed, and are named.",
    CopyOptions,
    Copy};

} // namespace dax::cli
