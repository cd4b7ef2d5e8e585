// dax info: what the two information panels show for an entry.
#include "Command.h"
#include "Console.h"
#include "Course.h"
#include "Json.h"
#include "panels/LessonInfo.h"
#include "panels/LockInfo.h"

namespace dax::cli {

namespace {

constexpr size_t MaxDetail = 1, MinDetail = 3;

Text LineText(const PanelLine& line) { return OneLine(line.text + line.suffix); }

void PrintPanel(const PanelLayout& layout, Output& output) {
    for (const PanelLine& line : layout) {
        const Text text = LineText(line);
        if (line.hasHalfLineGap && !text.empty()) output.Line(u"");
        if (!text.empty()) output.Line(text);
    }
}

Text PanelJson(const PanelLayout& layout) {
    JsonArray lines;
    for (const PanelLine& line : layout) {
        const Text text = LineText(line);
        if (!text.empty()) lines.AddRaw(JsonText(text));
    }
    return lines.Result();
}

ExitCode Info(const Arguments& arguments) {
    const auto level = static_cast<int>(arguments.Number(u"--level", MaxDetail, MaxDetail, MinDetail));
    Course course(ParseTarget(arguments));
    Node& node = course.Find(arguments.HasPositional(1) ? arguments.Positional(1) : Text(TopName));
    course.Tree().Select(&node);
    LessonInfo lessonInfo;
    lessonInfo.SetShowIdentifier(!arguments.Has(u"--no-identifier"));
    lessonInfo.UpdateFrom(&course.Editor());
    LockInfo lockInfo;
    Text failure;
    lockInfo.Error.AddPermanent([&](int32_t, const Text& description) { failure = description; });
    lockInfo.UpdateFrom(&course.Editor());
    const PanelLayout lesson = lessonInfo.Layout(level), locks = lockInfo.Summary().Layout();
    if (arguments.Has(u"--json")) {
        JsonObject all;
        all.Add(u"lessonID", node.Key()).AddRaw(u"lessonInfo", PanelJson(lesson));
        all.AddRaw(u"lockInfo", PanelJson(locks)).AddNumber(u"lockCount", lockInfo.LockCount());
        Print(all.Result());
    } else {
        Output output;
        PrintPanel(lesson, output);
        output.Line(u"");
        PrintPanel(locks, output);
        output.Finish();
    }
    if (failure.empty()) return Success;
    PrintError(u"dax info: The locks could not be read: " + failure);
    return Failure;
}

constexpr Option InfoOptions[] = {
    {u"--level", u"N", u"how much of the lesson panel: 1 everything (the default), 2 less, 3 least"},
    {u"--no-identifier", u"", u"leave the identifier out"},
    {u"--json", u"",
     u"print an object for programs: lessonID, lessonInfo and lockInfo, the lines of the\n"
     u"panels, lockCount"},
};

} // namespace

const Command InfoCommand = {u"info",
                             u"FILE-or-CONNECTION [ENTRY]",
                             1,
                             2,
                             u"Show what the lesson panel and the lock panel show for an entry.\n"
                             u"ENTRY is a lessonID, or an identifier that only one entry has. Without it the whole\n"
                             u"database is described.",
                             InfoOptions,
                             Info};

} // namespace dax::cli
