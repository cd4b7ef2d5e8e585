// dax sample: a database to try things on.
#include "Command.h"
#include "Console.h"
#include "Password.h"
#include "SampleCourse.h"
#include "Target.h"

namespace dax::cli {

namespace {

constexpr size_t DefaultLessons = 120, MaxLessons = 1000000;
constexpr size_t StatementsAtATime = 1000;

Text Counted(size_t number, const Text& word) { return ToText(static_cast<long long>(number)) + u" " + word; }

// Collects statements and sends them in large portions, so that a big course needs little memory.
class Sender {
public:
    Sender(Connection& target, size_t expected) : connection(target), progress(u"writing the sample", expected) {}

    void Take(Text statement) {
        waiting.push_back(std::move(statement));
        if (waiting.size() >= StatementsAtATime) Flush();
    }

    void Flush() {
        connection.ExecuteAll(waiting);
        sent += waiting.size();
        waiting.clear();
        progress.Report(sent);
    }

private:
    Connection& connection;
    Progress progress;
    std::vector<Text> waiting;
    size_t sent = 0;
};

void FillCourse(NewDatabase& database, size_t lessons, const Text& shown) {
    // Beside the lessons there are a milestone to every fifth and a group to about every fifth.
    Sender sender(database.Rows(), lessons + lessons * 2 / 5 + 100);
    const SampleCounts counts =
        WriteSampleCourse(lessons, Now(), database.IsMDB(), [&](Text statement) { sender.Take(std::move(statement)); });
    sender.Flush();
    database.Finish();
    Announce(u"Made a sample course: " + shown + u"\n" + Counted(counts.lessons, u"lessons in ") +
             Counted(counts.groups, u"groups, ") + Counted(counts.milestones, u"milestones, ") +
             Counted(counts.locks, u"locks, ") + Counted(counts.posts, u"discussions"));
}

void FillConnector(NewDatabase& database, const Arguments& arguments, const Text& password, const Text& shown) {
    Sender sender(database.Rows(), 0);
    const SampleConnectorCounts counts =
        WriteSampleConnector(Now(), database.IsMDB(), arguments.Value(u"--login", u"velmora"), password,
                             [&](Text statement) { sender.Take(std::move(statement)); });
    sender.Flush();
    database.Finish();
    Announce(u"Made a sample connector: " + shown + u"\n" +
             Counted(counts.users, u"users (admin, anna, j.o'neil, юлия, guest), ") +
             Counted(counts.catalogs, u"catalogs"));
}

// Of the catalogs' login.
Text LoginPassword(const Arguments& arguments) {
    const auto hidden = ReadPassword(arguments, u"--login-password");
    if (hidden && arguments.Has(u"--password")) throw UsageError(u"Give the login's password only once.");
    if (arguments.Has(u"--password")) AddSecret(arguments.Value(u"--password"));
    return hidden ? *hidden : arguments.Value(u"--password", u"sample");
}

ExitCode Sample(const Arguments& arguments) {
    const bool isConnector = arguments.Has(u"--connector");
    if (isConnector && arguments.Has(u"--lessons")) throw UsageError(u"A connector has no lessons: omit --lessons.");
    for (const TextView option :
         {u"--login", u"--password", u"--login-password-env", u"--login-password-file", u"--login-password-prompt"}) {
        if (arguments.Has(option) && !isConnector) throw UsageError(u"'" + Text(option) + u"' requires --connector.");
    }
    const size_t lessons = arguments.Number(u"--lessons", DefaultLessons, 0, MaxLessons);
    const Target target = ParseTarget(arguments);
    const Text password = LoginPassword(arguments);
    try {
        NewDatabase database(target, isConnector ? Schema::Database::Connector : Schema::Database::Content,
                             PlaceOptions(arguments));
        if (isConnector) {
            FillConnector(database, arguments, password, target.shown);
        } else {
            FillCourse(database, lessons, target.shown);
        }
    } catch (const TargetExistsError& error) {
        PrintError(u"dax sample: " + error.Description());
        return Refused;
    }
    return Success;
}

constexpr Option SampleOptions[] = {
    {u"--lessons", u"N", u"how many lessons (120), up to 1000000"},
    {u"--connector", u"", u"a connector database with users, catalogs and rights instead of a course"},
    {u"--login", u"NAME", u"with --connector: the login of the catalogs that it lists (velmora)"},
    {u"--password", u"TEXT", u"with --connector: its password, stored unencrypted in the connector (sample)"},
    {u"--login-password-env", u"NAME", u"take it from an environment variable"},
    {u"--login-password-file", u"FILE", u"take it from the first line of a file"},
    {u"--login-password-prompt", u"", u"the same, typed at a prompt"},
    ForceOption,
    NewCatalogOption,
};

} // namespace

const Command SampleCommand = {
    u"sample",
    u"FILE-or-CONNECTION",
    1,
    1,
    u"Create a database with a sample course for trying things out.\n"
    u"A file becomes a SQLite database, whatever its name. Prints what was created, and how much.",
    SampleOptions,
    Sample};

} // namespace dax::cli
