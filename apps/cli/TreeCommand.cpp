// dax tree: the hierarchy of a course.
#include "Command.h"
#include "Course.h"
#include "Json.h"
#include "TreePrinter.h"
#include "tree/modTVW.h"

namespace dax::cli {

namespace {

constexpr size_t MaxLevels = 999'999'999;

using Counts = std::unordered_map<const Node*, Contents>;

Contents ContentsOf(const Counts& counts, const Node& node) {
    const auto found = counts.find(&node);
    return found == counts.end() ? Contents() : found->second;
}

Text Describe(const Node& node, const Counts& counts, bool showsIDs) {
    const LessonTypes type = HierarchyRows::TypeOf(node);
    Text line = node.Caption().empty() ? Text(u"(untitled)") : OneLine(node.Caption());
    if (!node.Tag().empty()) line += u"  [" + OneLine(node.Tag()) + u"]";
    if (showsIDs && node.Parent()) line += u"  {" + OneLine(node.Key()) + u"}";
    if (type != ltLesson || node.FirstChild()) {
        line += u"  " + (type == ltDatabase || type == ltGroup ? Text() : TypeName(type) + u": ") +
                ContentsText(ContentsOf(counts, node));
    }
    return line;
}

// Flat, one entry per line and each with its parent, so that a parser of the output needs no stack for a deep chain.
void PrintJson(const Node& top, size_t levels, const Counts& counts, Output& output) {
    const int32_t topLevel = top.Depth();
    bool isFirst = true;
    output.Line(u"{\"entries\":[");
    Text line;
    for (const Node* node = &top; node; node = modTVW::GetNextNode(node, &top)) {
        const auto level = static_cast<size_t>(node->Depth() - topLevel);
        if (level > levels) continue;
        const Contents contents = ContentsOf(counts, *node);
        JsonObject entry;
        entry.Add(u"lessonID", node->Key()).Add(u"title", node->Caption()).Add(u"identifier", node->Tag());
        entry.Add(u"type", TypeName(HierarchyRows::TypeOf(*node)));
        entry.Add(u"parentID", node->Parent() ? Value(node->Parent()->Key()) : Value());
        entry.AddNumber(u"level", node->Depth()).AddNumber(u"position", node->Parent() ? node->Position() : 0);
        entry.AddNumber(u"groups", contents.groups).AddNumber(u"lessons", contents.lessons);
        entry.AddNumber(u"others", contents.others);
        if (!isFirst) output.Line(line + u",");
        isFirst = false;
        line = entry.Result();
    }
    output.Line(line + u"]}");
}

ExitCode Tree(const Arguments& arguments) {
    const size_t levels = arguments.Number(u"--depth", MaxLevels, 0, MaxLevels);
    Course course(ParseTarget(arguments));
    const Node& top = arguments.HasPositional(1) ? course.Find(arguments.Positional(1)) : course.Root();
    const Counts counts = CountContents(course.Tree());
    Output output;
    if (arguments.Has(u"--json")) {
        course.Tree().Number();
        PrintJson(top, levels, counts, output);
    } else {
        const bool showsIDs = arguments.Has(u"--ids");
        PrintTree(
            top, {.hasBoxes = !arguments.Has(u"--indent"), .levels = levels},
            [&](const Node& node) { return Describe(node, counts, showsIDs); }, output);
    }
    output.Finish();
    return Success;
}

constexpr Option TreeOptions[] = {
    {u"--depth", u"N", u"only so many levels below the top"},
    {u"--ids", u"", u"show the lessonIDs, too"},
    {u"--indent", u"", u"indent by four blanks instead of drawing lines"},
    {u"--json", u"",
     u"print an object for programs: \"entries\" in the order of the tree, each with\n"
     u"lessonID, title, identifier, type, parentID, level, position, groups, lessons,\n"
     u"others"},
};

} // namespace

const Command TreeCommand = {u"tree",
                             u"FILE-or-CONNECTION [ENTRY]",
                             1,
                             2,
                             u"Show the groups and lessons of a course, or of one group.\n"
                             u"Identifiers are in brackets; for a group, the groups and lessons in it are counted.\n"
                             u"ENTRY is a lessonID, or an identifier that only one entry has.",
                             TreeOptions,
                             Tree};

} // namespace dax::cli
