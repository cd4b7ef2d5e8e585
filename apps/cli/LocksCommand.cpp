// dax locks: who holds which locks, and clearing those that were left over.
#include "Command.h"
#include "Console.h"
#include "Course.h"
#include "Json.h"
#include "LockList.h"

#include <algorithm>
#include <iostream>

namespace dax::cli {

namespace {

struct SortName {
    TextView name, column;
};
constexpr SortName SortNames[] = {
    {u"title", u"title"},     {u"identifier", u"identifier"},
    {u"type", u"locktype"},   {u"date", u"lockdate"},
    {u"age", u"age"},         {u"user", u"user"},
    {u"machine", u"machine"}, {u"ip", u"ip"},
};

Text SortColumn(const Arguments& arguments) {
    if (!arguments.Has(u"--sort")) {
        if (arguments.Has(u"--descending")) throw UsageError(u"'--descending' requires --sort COLUMN.");
        return {};
    }
    const Text key = arguments.Value(u"--sort");
    for (const auto& [name, column] : SortNames) {
        if (name == key) return Text(column);
    }
    throw UsageError(u"'--sort' takes title, identifier, type, date, age, user, machine or ip, not '" + key + u"'.");
}

void CheckRights(const Arguments& arguments) {
    const bool isDeleting = arguments.Has(u"--delete");
    for (const TextView option : {u"--as", u"--admin", u"--yes"}) {
        if (arguments.Has(option) && !isDeleting) throw UsageError(u"'" + Text(option) + u"' requires --delete.");
    }
    if (isDeleting && !arguments.Has(u"--admin") && arguments.Value(u"--as").empty()) {
        throw UsageError(
            u"'--delete' needs --as USER, who may delete their own locks, or --admin, who may delete all.");
    }
}

Text OutcomeText(LockOutcome outcome) {
    switch (outcome) {
    case LockOutcome::Deleted:
        return u"deleted";
    case LockOutcome::Protected:
        return u"not deleted: it belongs to another user";
    case LockOutcome::NotDeleted:
        return u"not deleted: the database did not find it under its exact values";
    case LockOutcome::LockedAgain:
        return u"not deleted: it was taken again in the meantime";
    default:
        return u"";
    }
}

Text Validity(const ListedLock& lock) { return lock.record.invalid ? u"invalid" : u"valid"; }

void PrintTable(const std::vector<ListedLock>& locks) {
    struct Column {
        Text heading;
        size_t most;
        Text (*cell)(const ListedLock&);
        size_t width = 0;
    };
    Column columns[] = {
        {u"Lesson", 36, [](const ListedLock& lock) { return lock.title; }},
        {u"Identifier", 14, [](const ListedLock& lock) { return lock.identifier; }},
        {u"Lock", 28, [](const ListedLock& lock) { return lock.type; }},
        {u"Age", 24, [](const ListedLock& lock) { return lock.age; }},
        {u"User", 16, [](const ListedLock& lock) { return lock.record.username; }},
        {u"Machine", 16, [](const ListedLock& lock) { return lock.record.machineName; }},
        {u"Validity", 8, Validity},
    };
    for (Column& column : columns) {
        column.width = Columns(column.heading);
        for (const ListedLock& lock : locks) column.width = std::max(column.width, Columns(column.cell(lock)));
        column.width = std::min(column.width, column.most);
    }
    Output output;
    const auto print = [&](const auto& cellOf) {
        Text line;
        for (const Column& column : columns) line += Fit(cellOf(column), column.width) + u"  ";
        output.Line(line.substr(0, line.find_last_not_of(u' ') + 1));
    };
    print([](const Column& column) { return column.heading; });
    for (const ListedLock& lock : locks) print([&](const Column& column) { return column.cell(lock); });
    output.Finish();
}

void PrintJson(const std::vector<ListedLock>& locks) {
    Output output;
    output.Line(u"{\"locks\":[");
    for (size_t i = 0; i < locks.size(); ++i) {
        const LockRecord& record = locks[i].record;
        JsonObject lock;
        lock.Add(u"lessonID", record.lessonID).Add(u"title", locks[i].title).Add(u"identifier", locks[i].identifier);
        lock.AddNumber(u"lockType", record.lockType).Add(u"lock", locks[i].type);
        lock.Add(u"lockDate", record.lockDate.year > 0 ? Value(record.lockDate) : Value()).Add(u"age", locks[i].age);
        lock.Add(u"user", record.username).Add(u"machine", record.machineName).Add(u"ip", record.machineIP);
        lock.Add(u"sessionID", record.sessionID).Add(u"valid", !record.invalid);
        if (locks[i].outcome != LockOutcome::None) {
            lock.Add(u"deleted", locks[i].outcome == LockOutcome::Deleted)
                .Add(u"outcome", OutcomeText(locks[i].outcome));
        }
        output.Line(lock.Result() + (i + 1 < locks.size() ? u"," : u""));
    }
    output.Line(u"]}");
    output.Finish();
}

bool IsConfirmed(size_t deletable, size_t listed) {
    Text question = u"Delete " + CountText(static_cast<int64_t>(deletable), u"lock");
    if (deletable < listed) {
        question += u" of " + ToText(static_cast<long long>(listed)) + u", the rest being held by other users";
    }
    PrintError(question + u"? Type y and Enter to go on.");
    std::string answer;
    std::getline(std::cin, answer);
    if (answer.ends_with('\r')) answer.pop_back();
    return answer == "y" || answer == "Y" || answer == "yes";
}

ExitCode Delete(LockList& list, const Arguments& arguments) {
    std::vector<ListedLock>& locks = list.Locks();
    const bool isJson = arguments.Has(u"--json");
    if (!isJson) PrintTable(locks);
    const size_t deletable = list.CountDeletable(arguments.Value(u"--as"), arguments.Has(u"--admin"));
    if (deletable > 0 && !arguments.Has(u"--yes") && !IsConfirmed(deletable, locks.size())) {
        PrintError(u"dax locks: Nothing was deleted. With --yes the command does not ask.");
        return Refused;
    }
    std::optional<Text> unread;
    InterruptScope deleting(u"Nothing was deleted.");
    deleting.Finish(); // it is brief, and what was deleted is reported
    try {
        unread = list.Delete(arguments.Value(u"--as"), arguments.Has(u"--admin"));
    } catch (const Error& error) {
        throw Error(error.Number(), error.Description() + u"\nNothing was deleted.");
    }
    const auto deleted = std::count_if(locks.begin(), locks.end(),
                                       [](const ListedLock& lock) { return lock.outcome == LockOutcome::Deleted; });
    if (isJson) {
        PrintJson(locks);
    } else {
        Output output;
        output.Line(u"");
        for (const ListedLock& lock : locks) {
            if (lock.outcome == LockOutcome::Deleted) continue;
            output.Line(OneLine(lock.title) + u", " + OneLine(lock.type) + u" by " + OneLine(lock.record.username) +
                        u": " + OutcomeText(lock.outcome));
        }
        output.Line(ToText(deleted) + u" of " + CountText(static_cast<int64_t>(locks.size()), u"lock") + u" deleted");
        output.Finish();
    }
    if (unread) PrintError(u"dax locks: The list could not be read again: " + *unread);
    return static_cast<size_t>(deleted) == locks.size() ? Success : Refused;
}

ExitCode Locks(const Arguments& arguments) {
    const Text sortColumn = SortColumn(arguments);
    CheckRights(arguments);
    const Target target = ParseTarget(arguments);
    LockFilter filter;
    filter.user = arguments.Value(u"--user");
    filter.onlyInvalid = arguments.Has(u"--invalid");
    std::optional<Course> course;
    if (arguments.Has(u"--lesson") || arguments.Has(u"--group")) course.emplace(target);
    if (arguments.Has(u"--group")) {
        const Text id = course->Find(arguments.Value(u"--group")).Key();
        filter.group = std::make_shared<IDCollection>(course->Editor().GetChildLessonIDCollection(id));
    }
    const Text lesson = arguments.Value(u"--lesson");
    if (!lesson.empty()) {
        // Locks outlive their lessons: what is no entry may be the identifier of a deleted one.
        const Node* const node = course->TryFind(lesson);
        filter.lessonID = node ? node->Key() : lesson;
    }
    LockList list(target, filter);
    list.Read(sortColumn, arguments.Has(u"--descending"));
    const std::vector<ListedLock>& locks = list.Locks();
    if (!lesson.empty() && locks.empty()) course->Find(lesson); // says what is wrong with the name
    if (list.OddValues() > 0) {
        PrintError(u"dax locks: Some locks lack values that every lock should have. They are shown without them.");
    }
    if (arguments.Has(u"--delete")) return Delete(list, arguments);
    if (arguments.Has(u"--json")) {
        PrintJson(locks);
        return Success;
    }
    if (locks.empty()) {
        Print(u"no locks");
        return Success;
    }
    PrintTable(locks);
    const auto invalid =
        std::count_if(locks.begin(), locks.end(), [](const ListedLock& lock) { return lock.record.invalid; });
    Print(u"\n" + CountText(static_cast<int64_t>(locks.size()), u"lock") + u", " + ToText(invalid) + u" invalid");
    return Success;
}

constexpr Option LocksOptions[] = {
    {u"--user", u"NAME", u"only the locks of one user"},
    {u"--lesson", u"ENTRY", u"only the locks on one entry, or on one that was deleted"},
    {u"--group", u"ENTRY", u"only the locks on a group and on the entries in it"},
    {u"--invalid", u"", u"only those that no running program can still hold"},
    {u"--sort", u"COLUMN", u"sort by title, identifier, type, date, age, user, machine or ip"},
    {u"--descending", u"", u"with --sort: in descending order"},
    {u"--json", u"",
     u"print an object for programs: \"locks\", each with lessonID, title, identifier,\n"
     u"lockType, lock, lockDate, age, user, machine, ip, sessionID, valid; after\n"
     u"--delete also deleted, outcome"},
    {u"--delete", u"", u"delete the listed locks, after asking; needs --as or --admin"},
    {u"--as", u"USER", u"with --delete: with the rights of that user, who may delete their own"},
    {u"--admin", u"", u"with --delete: with the rights of an administrator, who may delete all"},
    {u"--yes", u"", u"with --delete: do not ask"},
};

} // namespace

const Command LocksCommand = {u"locks",
                              u"FILE-or-CONNECTION",
                              1,
                              1,
                              u"List the locks that users hold, and delete those that were left over.\n"
                              u"Prints a table, in the order of --sort, and the number of locks. If several filters\n"
                              u"are given, all of them apply. After --delete the exit code is 0 if every listed lock\n"
                              u"was deleted, 1 if some were not.",
                              LocksOptions,
                              Locks};

} // namespace dax::cli
