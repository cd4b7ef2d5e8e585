// dax map: the maps of a lesson, finding pages in them and moving these.
#include "Command.h"
#include "Console.h"
#include "LessonPages.h"

namespace dax::cli {

namespace {

constexpr std::pair<TextView, StoryboardMovementTypes> Movements[] = {
    {u"up", smtUp},           {u"down", smtDown},        {u"indent", smtIndent},
    {u"outdent", smtOutdent}, {u"next-map", smtNextMap}, {u"previous-map", smtPreviousMap},
};

StoryboardMovementTypes MovementNamed(const Text& wanted) {
    for (const auto& [name, movement] : Movements) {
        if (name == wanted) return movement;
    }
    throw UsageError(u"--to takes up, down, indent, outdent, next-map or previous-map, not '" + wanted + u"'.");
}

ExitCode Find(LessonPages& pages, const Arguments& arguments) {
    const std::vector<Text> found = pages.Find(arguments.Value(u"--find"), arguments.Has(u"--exact"));
    if (arguments.Has(u"--json")) {
        JsonArray list;
        for (const Text& sbid : found) list.AddRaw(pages.Json(sbid));
        Print(list.Result());
    } else {
        for (const Text& sbid : found) Print(pages.Describe(sbid));
        if (found.empty()) Complain(u"dax map: no storyboard fits.");
    }
    return found.empty() ? Refused : Success;
}

ExitCode Map(const Arguments& arguments) {
    if (arguments.Has(u"--move") != arguments.Has(u"--to")) {
        throw UsageError(u"--move STORYBOARD and --to DIRECTION go together.");
    }
    if (arguments.Has(u"--find") && arguments.Has(u"--move")) throw UsageError(u"Either --find or --move.");
    for (const auto& [option, other] : {std::pair(u"--exact", u"--find"), std::pair(u"--force", u"--move")}) {
        if (arguments.Has(option) && !arguments.Has(other))
            throw UsageError(Text(option) + u" goes with " + other + u".");
    }
    const Target target = ParseTarget(arguments.Place(0));
    LessonPages pages(target, arguments.Place(1));
    if (arguments.Has(u"--find")) return Find(pages, arguments);
    if (arguments.Has(u"--move")) {
        const StoryboardMovementTypes movement = MovementNamed(arguments.Value(u"--to"));
        pages.Move(arguments.Value(u"--move"), movement);
        pages.Save(arguments.Has(u"--force"));
    }
    if (arguments.Has(u"--json")) {
        Print(pages.Json());
    } else {
        pages.Print(!arguments.Has(u"--indent"));
    }
    return Success;
}

constexpr Option Options[] = {
    {u"--find", u"TEXT", u"list the storyboards whose title, identifier or SBID holds the text"},
    {u"--exact", u"", u"with --find: is the text"},
    {u"--move", u"STORYBOARD", u"move a storyboard, with all under it, and save; an SBID or an identifier"},
    {u"--to", u"DIRECTION", u"with --move: up, down, indent, outdent, next-map or previous-map"},
    {u"--force", u"", u"with --move: also while somebody edits the lesson"},
    {u"--indent", u"", u"indent by four blanks instead of drawing lines"},
    {u"--json", u"", u"one object for programs"},
};

} // namespace

const Command MapCommand = {u"map",
                            u"FILE-or-CONNECTION LESSON",
                            2,
                            2,
                            u"Show the storyboards of a lesson, map by map, find and move them.\n"
                            u"LESSON is a lessonID, or an identifier that only one entry has.",
                            Options,
                            Map};

} // namespace dax::cli
