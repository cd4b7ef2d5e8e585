// dax find: the entries that have a text in their title, identifier or lessonID.
#include "Command.h"
#include "Console.h"
#include "Course.h"
#include "Json.h"
#include "base/TextComparison.h"
#include "tree/modTVW.h"

#include <algorithm>

namespace dax::cli {

namespace {

// The titles from the top of the course down to the entry's parent.
std::vector<Text> PathTo(const Node& node) {
    std::vector<Text> path;
    for (const Node* above = node.Parent(); above && above->Parent(); above = above->Parent())
        path.push_back(above->Caption());
    std::reverse(path.begin(), path.end());
    return path;
}

Text DisplayTitle(const Text& title) { return title.empty() ? Text(u"(untitled)") : OneLine(title); }

Text Describe(const Node& node) {
    Text line;
    for (const Text& title : PathTo(node)) line += DisplayTitle(title) + u" / ";
    line += DisplayTitle(node.Caption());
    if (!node.Tag().empty()) line += u"  [" + OneLine(node.Tag()) + u"]";
    return line + u"  {" + OneLine(node.Key()) + u"}";
}

Text EntryJson(const Node& node) {
    JsonArray path;
    for (const Text& title : PathTo(node)) path.AddRaw(JsonText(title));
    JsonObject entry;
    entry.Add(u"lessonID", node.Key()).Add(u"title", node.Caption()).Add(u"identifier", node.Tag());
    entry.Add(u"type", TypeName(HierarchyRows::TypeOf(node)));
    return entry.AddRaw(u"path", path.Result()).Result();
}

ExitCode Find(const Arguments& arguments) {
    const Text requested = FoldCase(arguments.Positional(1));
    if (requested.empty()) throw UsageError(u"The text to find is empty.");
    const bool isExact = arguments.Has(u"--exact"), isJson = arguments.Has(u"--json");
    Course course(ParseTarget(arguments));
    const auto fits = [&](TextView text) {
        const Text folded = FoldCase(text);
        return isExact ? folded == requested : folded.find(requested) != Text::npos;
    };
    Output output;
    if (isJson) output.Line(u"{\"entries\":[");
    Text last; // which no comma follows
    size_t count = 0;
    for (const Node* node = modTVW::GetNextNode(&course.Root()); node; node = modTVW::GetNextNode(node)) {
        if (!fits(node->Caption()) && !fits(node->Tag()) && !fits(node->Key())) continue;
        if (++count > 1) output.Line(isJson ? last + u"," : last);
        last = isJson ? EntryJson(*node) : Describe(*node);
    }
    if (isJson) output.Line(last + u"]}");
    if (!isJson && count > 0) output.Line(last);
    output.Finish();
    if (count > 0) return Success;
    PrintError(u"dax find: No entry has '" + arguments.Positional(1) + u"' in its title, identifier or lessonID.");
    return Refused;
}

constexpr Option FindOptions[] = {
    {u"--exact", u"", u"only those whose whole title, identifier or lessonID is the text"},
    {u"--json", u"",
     u"print an object for programs: \"entries\", each with lessonID, title, identifier,\n"
     u"type, path"},
};

} // namespace

const Command FindCommand = {u"find",
                             u"FILE-or-CONNECTION TEXT",
                             2,
                             2,
                             u"Find the entries with a text in their title, identifier or lessonID.\n"
                             u"Case is ignored. Prints each entry with the groups that contain it, its identifier\n"
                             u"in brackets and its lessonID in braces; the exit code is 1 if there is none.",
                             FindOptions,
                             Find};

} // namespace dax::cli
