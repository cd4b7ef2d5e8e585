// dax map: the maps of a lesson, finding pages in them and moving these.
#include "Command.h"
#include "Console.h"
#include "LessonPages.h"

#include <algorithm>

namespace dax::cli {

namespace {

constexpr std::pair<TextView, StoryboardMovementTypes> Movements[] = {
    {u"up", smtUp},           {u"down", smtDown},        {u"indent", smtIndent},
    {u"outdent", smtOutdent}, {u"next-map", smtNextMap}, {u"previous-map", smtPreviousMap},
};

StoryboardMovementTypes MovementNamed(const Text& requested) {
    for (const auto& [name, movement] : Movements) {
        if (name == requested) return movement;
    }
    throw UsageError(u"'--to' takes up, down, indent, outdent, next-map or previous-map, not '" + requested + u"'.");
}

ExitCode Find(LessonPages& pages, const Arguments& arguments) {
    const std::vector<Text> found = pages.Find(arguments.Value(u"--find"), arguments.Has(u"--exact"));
    if (arguments.Has(u"--json")) {
        JsonArray list;
        for (const Text& sbid : found) list.AddRaw(pages.Json(sbid));
        Print(list.Result());
    } else {
        for (const Text& sbid : found) Print(pages.Describe(sbid));
        if (found.empty()) PrintError(u"dax map: No storyboard fits.");
    }
    return found.empty() ? Refused : Success;
}

// What can be done, and the options that go with it.
constexpr TextView AddDetails[] = {u"--identifier", u"--type", u"--sbid", u"--in", u"--before", u"--after", u"--force"};
constexpr TextView RenameDetails[] = {u"--title", u"--identifier", u"--type", u"--force"};
constexpr TextView RemoveDetails[] = {u"--keep-children", u"--force"};
constexpr TextView MoveDetails[] = {u"--to", u"--force"};
constexpr TextView FindDetails[] = {u"--exact"};
constexpr std::pair<TextView, std::span<const TextView>> Actions[] = {{u"--find", FindDetails},
                                                                      {u"--move", MoveDetails},
                                                                      {u"--add", AddDetails},
                                                                      {u"--rename", RenameDetails},
                                                                      {u"--remove", RemoveDetails}};

// The option that says what to do; empty when the map is only shown. Throws UsageError.
TextView ActionOf(const Arguments& arguments) {
    TextView chosen;
    for (const auto& [action, details] : Actions) {
        if (!arguments.Has(action)) continue;
        if (!chosen.empty())
            throw UsageError(u"Give either '" + Text(chosen) + u"' or '" + Text(action) + u"', not both.");
        chosen = action;
    }
    for (const auto& [action, details] : Actions) {
        for (const TextView detail : details) {
            const auto takesIt = [&](const auto& one) {
                return one.first == chosen && std::ranges::find(one.second, detail) != one.second.end();
            };
            if (arguments.Has(detail) && std::ranges::none_of(Actions, takesIt))
                throw UsageError(u"'" + Text(detail) + u"' requires " + Text(action) +
                                 (detail == u"--force" ? u" and the other changes." : u"."));
        }
    }
    if (chosen == u"--move" && !arguments.Has(u"--to"))
        throw UsageError(u"'--move' needs a direction: --to DIRECTION.");
    if (chosen == u"--rename" && !arguments.Has(u"--title") && !arguments.Has(u"--identifier") &&
        !arguments.Has(u"--type"))
        throw UsageError(u"'--rename' needs --title TEXT, --identifier TEXT or --type TEXT.");
    if (arguments.Has(u"--in") + arguments.Has(u"--before") + arguments.Has(u"--after") > 1)
        throw UsageError(u"Give only one of --in, --before and --after.");
    return chosen;
}

LessonPages::Fields FieldsOf(const Arguments& arguments) {
    const auto given = [&](TextView option) {
        return arguments.Has(option) ? std::optional(arguments.Value(option)) : std::nullopt;
    };
    return {given(arguments.Has(u"--add") ? u"--add" : u"--title"), given(u"--identifier"), given(u"--type")};
}

// Returns what is said before the map is shown.
Text Change(LessonPages& pages, TextView action, const Arguments& arguments) {
    const Text name = arguments.Value(action);
    Text added;
    if (action == u"--move") pages.Move(name, MovementNamed(arguments.Value(u"--to")));
    if (action == u"--rename") pages.Update(name, FieldsOf(arguments));
    if (action == u"--remove") pages.Remove(name, arguments.Has(u"--keep-children"));
    if (action == u"--add") {
        const TextView place = arguments.Has(u"--before")  ? u"--before"
                               : arguments.Has(u"--after") ? u"--after"
                                                           : u"--in";
        added = u"Added: " +
                pages.Add(arguments.Value(u"--sbid"), FieldsOf(arguments), place.substr(2), arguments.Value(place));
    }
    pages.Save(arguments.Has(u"--force"));
    return added;
}

ExitCode Map(const Arguments& arguments) {
    const TextView action = ActionOf(arguments);
    if (action == u"--move") MovementNamed(arguments.Value(u"--to")); // before anything is read
    LessonPages pages(ParseTarget(arguments), arguments.Positional(1), action == u"--add");
    if (action == u"--find") return Find(pages, arguments);
    const Text said = action.empty() ? Text() : Change(pages, action, arguments);
    if (arguments.Has(u"--json")) {
        Announce(pages.Json());
    } else {
        if (!said.empty()) Announce(said);
        pages.Print(!arguments.Has(u"--indent"));
    }
    return Success;
}

constexpr Option MapOptions[] = {
    {u"--find", u"TEXT", u"list the storyboards whose title, identifier or SBID contains the text"},
    {u"--exact", u"", u"with --find: is the text"},
    {u"--move", u"STORYBOARD", u"move a storyboard and everything below it"},
    {u"--to", u"DIRECTION", u"with --move: up, down, indent, outdent, next-map or previous-map"},
    {u"--add", u"TITLE", u"add a storyboard, and print its SBID; last in the default map, unless a place is\ngiven"},
    {u"--in", u"MAP-or-STORYBOARD", u"with --add: as the last one in this map, or below this storyboard"},
    {u"--before", u"STORYBOARD", u"with --add: before this one"},
    {u"--after", u"STORYBOARD", u"with --add: after this one"},
    {u"--sbid", u"SBID", u"with --add: its SBID; without it a new one"},
    {u"--rename", u"STORYBOARD", u"give a storyboard another title, identifier or type"},
    {u"--title", u"TEXT", u"with --rename: the title"},
    {u"--identifier", u"TEXT", u"with --add and --rename: the identifier"},
    {u"--type", u"TEXT", u"with --add and --rename: the type"},
    {u"--remove", u"STORYBOARD", u"remove a storyboard and everything below it from the lesson"},
    {u"--keep-children", u"", u"with --remove: move its children up one level, in reverse order"},
    {u"--force", u"", u"with any change: even if somebody is editing the lesson"},
    {u"--indent", u"", u"indent by four blanks instead of drawing lines"},
    {u"--json", u"",
     u"print an object for programs: lessonID, current, \"maps\", each with name, default,\n"
     u"\"storyboards\", each with sbid, missing, title, identifier, type, level; \"orphans\";\n"
     u"with --find a list of storyboards, without level"},
};

} // namespace

const Command MapCommand = {u"map",
                            u"FILE-or-CONNECTION LESSON",
                            2,
                            2,
                            u"Show, find and change the storyboards of a lesson, map by map.\n"
                            u"LESSON is a lessonID, or an identifier that only one entry has; STORYBOARD an SBID, or\n"
                            u"an identifier or a title that only one storyboard has. A change is saved at once; then\n"
                            u"the maps are printed.",
                            MapOptions,
                            Map};

} // namespace dax::cli
