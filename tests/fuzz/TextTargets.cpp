// Texts from hosts and databases: connection strings, statements, properties, lessons.
#include "fuzz/Driver.h"

#include "base/Dates.h"
#include "content/LessonText.h"
#include "content/PropertyCollection.h"
#include "data/ConnectionString.h"
#include "data/StatementText.h"
#include "data/modDB.h"
#include "lessonmap/LessonMapEditor.h"

#include <algorithm>

namespace dax::fuzz {

namespace {

// The input as a text: UTF-8, in which invalid bytes become half a surrogate pair.
Text TextOf(Input input) {
    Text text = FromUtf8({reinterpret_cast<const char*>(input.data()), input.size()});
    std::ranges::replace(text, u'\uFFFD', u'\xD83D');
    return text;
}

Text Quoted(const Text& content, char16_t open, char16_t close) {
    Text quoted(1, open);
    for (const char16_t unit : content) quoted.append(unit == close ? 2 : 1, unit);
    return quoted + close;
}

// A statement made of pieces, and what is known of it.
struct Statement {
    Text written, adapted, parametrized; // for an engine that adapts; with a mark for each long literal
    std::vector<Value> values;           // of the marks
    bool hasMarks = false, hasComments = false, hasSigns = false, isOpen = false;

    explicit Statement(Bytes bytes) {
        static constexpr const char16_t* inside[] = {u"#2024/05/06#", u"--", u"/* ",   u"?", u"'",
                                                     u"\"",           u"]",  u"\xD83D"};
        static constexpr const char16_t* plain[] = {u"a", u"=", u"-", u"/", u"#", u"#a#", u"\u00E9", u"?", u";", u"1"};
        enum Kind { LineComment, Comment, Name, BracketedName, Literal, Open, Date, Plain };
        static constexpr Kind kinds[] = {LineComment, Comment, Name,  BracketedName, Literal, Literal, Literal, Open,
                                         Date,        Date,    Plain, Plain,         Plain,   Plain,   Plain,   Plain};
        while (!bytes.AtEnd() && !isOpen) {
            const Kind kind = bytes.OneOf(kinds);
            Text text;
            for (size_t left = bytes.Below(4); left > 0; --left) text += bytes.OneOf(inside);
            Text piece = kind == LineComment     ? u"--" + text + u"\n"
                         : kind == Comment       ? u"/*" + text + u"*/"
                         : kind == Name          ? Quoted(text, u'"', u'"')
                         : kind == BracketedName ? Quoted(text, u'[', u']')
                         : kind == Date          ? u"#2024-2-29 1:2:3.04 pm#"
                         : kind == Plain         ? bytes.OneOf(plain)
                                                 : Quoted(text, u'\'', u'\'');
            isOpen = kind == Open;
            if (isOpen) piece.pop_back();
            hasComments = hasComments || kind <= Comment;
            hasSigns = hasSigns || (kind >= Date && piece.find_first_of(u"#;") != Text::npos);
            hasMarks = hasMarks || piece == u"?";
            const bool isLong = kind == Literal && piece.size() > longest + 2;
            if (isLong) values.emplace_back(text);
            written += u" " + piece;
            adapted += u" " + (kind == Date ? u"'2024-02-29 13:02:03.04'" : piece);
            parametrized += u" " + (isLong ? u"?" : piece);
        }
        for (Text* const text : {&written, &adapted, &parametrized}) *text += u" z";
    }
    static constexpr size_t longest = 5;
};

} // namespace

void DriveConnectionString(Input input) {
    // The last password of a kind counts, and no error shows it.
    const Text password = u"pass-phrase";
    const Text text = TextOf(input) + u";PWD=" + password + u";Jet OLEDB:Database Password=" + password;
    const auto setting = [](TextView source, TextView keyword) { return Text(source).append(keyword); };
    const OdbcConfiguration bare{[] { return std::vector<Text>(); }, [](TextView) { return Text(); }, setting};
    const OdbcConfiguration full{
        [] {
            return std::vector<Text>{u"SQL Server", u"Microsoft Access Driver (*.mdb, *.accdb)"};
        },
        [](TextView source) { return Text(source); }, setting};
    for (const OdbcConfiguration& odbc : {bare, full}) {
        try {
            const ConnectionTarget target = TranslateConnectionString(text, odbc);
            Require(target.timeout > 0, "opening may take some time");
            Require(target.engine != Engine::SQLite || (!target.path.empty() && target.odbcString.empty()),
                    "a file needs no driver, but a path");
            const ConnectionKeywords keywords(text);
            RequireEqual(ConnectionKeywords(keywords.Write()).Items(), keywords.Items(), "what was written, and read");
            if (DialectOf(target.engine).valueQuoting == ValueQuoting::Secrets)
                continue; // not in the form that we read
            const ConnectionKeywords translated(target.odbcString);
            const Text* const given = translated.Find(u"PWD");
            Require(!given || *given == password, "the password is the one that was given");
        } catch (const Error& error) {
            Require(error.Description().find(password) == Text::npos, "a password in " + ToUtf8(error.Description()));
        }
    }
}

void DriveStatement(Input input) {
    const Text text = TextOf(input);
    RequireEqual(FromUtf8(ToUtf8(text)), ReplaceLoneSurrogates(text), "the text as UTF-8 and back");
    if (const auto date = ParseDate(text)) Require(ParseDate(FormatDate(*date)) == date, "a date comes back");
    const Dialect &adapting = DialectOf(Engine::PostgreSQL), &other = DialectOf(Engine::Access);
    RequireEqual(AdaptStatement(text, other), text, "a statement for an engine that needs no other");
    const Text literal = modDB::QuoteSQLString(text);
    RequireEqual(AdaptStatement(literal + u"#2024/05/06#", adapting), literal + u" '2024-05-06 00:00:00'", "a literal");
    Require(IsSingleStatement(literal), "a quoted text is a literal");
    (void)AdaptStatement(text, adapting);
    (void)ParametrizeLongLiterals(text, Statement::longest);

    const Statement made{Bytes(input)};
    const bool mayLimit = !made.hasComments && !made.isOpen;
    RequireEqual(AdaptStatement(made.written, adapting), made.adapted, "dates outside quotes, adapted");
    RequireEqual(AdaptStatement(u"SELECT TOP 3" + made.written, adapting),
                 mayLimit ? u"SELECT" + made.adapted + u" LIMIT 3" : u"SELECT TOP 3" + made.adapted, "TOP, adapted");
    Require(IsSingleStatement(made.written) == (mayLimit && !made.hasSigns), "whether another statement may follow");
    const auto taken = ParametrizeLongLiterals(made.written, Statement::longest);
    Require(taken.has_value() == (!made.values.empty() && !made.hasMarks && !made.isOpen),
            "whether there are literals");
    if (!taken) return;
    RequireEqual(taken->statement, made.parametrized, "the statement without its long literals");
    Require(taken->values == made.values, "the long literals");
}

void DriveProperties(Input input) {
    DefaultPropertyCollection properties, again;
    properties.Load(TextOf(input));
    again.SetValue(u"gone", true);
    again.Load(properties.Save());
    RequireEqual(again.Save(), properties.Save(), "what was saved, loaded and saved");
    RequireEqual(again.Name(), properties.Name(), "the name");
    RequireEqual(again.ValueNames(), properties.ValueNames(), "the names of the values");
    for (const Text& name : properties.ValueNames())
        Require(again.GetValue(name, {}) == properties.GetValue(name, {}), "the value of " + ToUtf8(name));
}

void DriveLesson(Input input) {
    const Text text = TextOf(input);
    std::shared_ptr<ContentLesson> lesson;
    try {
        lesson = LessonText::Load(text);
    } catch (const Error& error) {
        Require(error.Description().starts_with(u"Line "), "a refusal names the line: " + ToUtf8(error.Description()));
        return;
    }
    const Text saved = LessonText::Save(*lesson);
    RequireEqual(LessonText::Save(*LessonText::Load(saved)), saved, "what was saved, loaded and saved");
    const auto editor = LessonMapEditor::Create();
    editor->SetLesson(lesson);
    CheckTree(*editor->tvwObject());
    editor->CheckAllStoryboards();
    (void)editor->GetCheckedLesson();
    const auto repaired = LessonText::Load(LessonText::Save(*lesson));
    Require(repaired->Maps()->Count() == lesson->Maps()->Count(), "a repaired lesson is saved whole");
}

} // namespace dax::fuzz
