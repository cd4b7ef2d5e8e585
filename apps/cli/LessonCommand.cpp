// dax lesson: everything that the hierarchy knows of one entry.
#include "Command.h"
#include "Console.h"
#include "Course.h"
#include "Json.h"
#include "data/modGeneric.h"

#include <algorithm>

namespace dax::cli {

namespace {

using Properties = std::shared_ptr<PropertyCollection>;

void PrintSection(const Text& title, const Properties& properties, Output& output) {
    if (!properties || properties->ValueNames().empty()) return;
    output.Line(u"");
    output.Line(title);
    size_t width = 0;
    for (const Text& name : properties->ValueNames()) width = std::max(width, Columns(OneLine(name)));
    for (const Text& name : properties->ValueNames()) {
        const Value value = properties->GetValue(name, {});
        const Text shown = IsNull(value) ? Text(u"(nothing)") : OneLine(modGeneric::VariantToString(value, u""));
        output.Line(u"  " + Fit(name, width) + u"  " + shown);
    }
}

Text SectionJson(const Properties& properties) {
    if (!properties) return u"null";
    JsonObject object;
    for (const Text& name : properties->ValueNames()) object.Add(name, properties->GetValue(name, {}));
    return object.Result();
}

ExitCode ShowLesson(const Arguments& arguments) {
    Course course(ParseTarget(arguments.Place(0)));
    const Node& node = course.Find(arguments.HasPlace(1) ? arguments.Place(1) : Text(TopName));
    GroupEditor& editor = course.Editor();
    const Text id = node.Key();
    const Properties properties = editor.GetLessonProperties(id), tokens = editor.GetLessonTokens(id),
                     aggregate = editor.GetAggregateProperties(id);
    const Text type = TypeName(editor.GetLessonType(id));
    if (arguments.Has(u"--json")) {
        JsonObject all;
        all.Add(u"lessonID", id).Add(u"title", node.Caption()).Add(u"identifier", node.Tag()).Add(u"type", type);
        all.AddRaw(u"properties", SectionJson(properties)).AddRaw(u"tokens", SectionJson(tokens));
        all.AddRaw(u"aggregate", SectionJson(aggregate));
        Print(all.Result());
        return Success;
    }
    Output output;
    output.Line(type + u": " + (node.Caption().empty() ? Text(u"(untitled)") : OneLine(node.Caption())));
    PrintSection(u"properties", properties, output);
    PrintSection(u"tokens", tokens, output);
    PrintSection(u"together with all that it contains", aggregate, output);
    output.Finish();
    return Success;
}

constexpr Option Options[] = {
    {u"--json", u"", u"one object for programs"},
};

} // namespace

const Command LessonCommand = {u"lesson",
                               u"FILE-or-CONNECTION [ENTRY]",
                               1,
                               2,
                               u"Show the properties, the tokens and the aggregate figures of one entry.\n"
                               u"ENTRY is a lessonID, or an identifier that only one entry has. Without it the\n"
                               u"figures of the whole database are shown.",
                               Options,
                               ShowLesson};

} // namespace dax::cli
