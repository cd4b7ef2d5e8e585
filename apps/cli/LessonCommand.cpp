// dax lesson: everything that the hierarchy stores of one entry; its storyboards and maps out of a file and into one.
#include "Command.h"
#include "Console.h"
#include "Course.h"
#include "Json.h"
#include "StoredLesson.h"
#include "TextFile.h"
#include "base/modGeneric.h"
#include "content/LessonText.h"

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

ExitCode Export(const StoredLesson& lesson, const Arguments& arguments) {
    const Text path = arguments.Value(u"--export");
    WriteTextFile(path, lesson.Data(), arguments.Has(u"--utf-16") ? Encoding::Utf16 : Encoding::Utf8,
                  arguments.Has(u"--force"));
    if (path != StandardStream) Announce(u"Written: " + path);
    return Success;
}

ExitCode Import(StoredLesson& lesson, const Arguments& arguments) {
    const Text path = arguments.Value(u"--import");
    const Text text = ReadTextFile(path);
    try {
        LessonText::Load(text);
    } catch (const Error& error) {
        throw RefusedError((path == StandardStream ? Text(u"The standard input") : u"The file '" + path + u"'") +
                           u" holds no lesson: " + error.Description());
    }
    lesson.Replace(text, arguments.Has(u"--force"));
    Announce(u"Saved: " + lesson.LessonID());
    return Success;
}

ExitCode ShowLesson(const Arguments& arguments) {
    const bool isExport = arguments.Has(u"--export"), isImport = arguments.Has(u"--import");
    if (isExport && isImport) throw UsageError(u"Give either --export or --import.");
    if (arguments.Has(u"--utf-16") && !isExport) throw UsageError(u"'--utf-16' requires --export.");
    if (arguments.Has(u"--force") && !isExport && !isImport)
        throw UsageError(u"'--force' requires --export or --import.");
    if (isExport || isImport) {
        if (!arguments.HasPositional(1)) throw UsageError(u"An argument is missing: ENTRY, the lesson.");
        StoredLesson lesson(ParseTarget(arguments), arguments.Positional(1));
        return isExport ? Export(lesson, arguments) : Import(lesson, arguments);
    }
    Course course(ParseTarget(arguments));
    const Node& node = course.Find(arguments.HasPositional(1) ? arguments.Positional(1) : Text(TopName));
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

constexpr Option LessonOptions[] = {
    {u"--json", u"",
     u"print an object for programs: lessonID, title, identifier, type, properties,\n"
     u"tokens, aggregate"},
    {u"--export", u"FILE", u"write the lesson's storyboards and maps to a file, as they are stored; - prints\nthem"},
    {u"--utf-16", u"", u"with --export: in UTF-16 instead of UTF-8, for Windows scripts"},
    {u"--import", u"FILE", u"replace them by those of a file in UTF-8 or UTF-16; - reads the standard input"},
    {u"--force", u"", u"with --export: replace the file; with --import: even if somebody is editing the lesson"},
};

} // namespace

const Command LessonCommand = {u"lesson",
                               u"FILE-or-CONNECTION [ENTRY]",
                               1,
                               2,
                               u"Show the properties, the tokens and the aggregate figures of one entry.\n"
                               u"ENTRY is a lessonID, or an identifier that only one entry has. Without it the\n"
                               u"figures of the whole database are shown.",
                               LessonOptions,
                               ShowLesson};

} // namespace dax::cli
