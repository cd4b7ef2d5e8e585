// What hosts and databases hand us as text: connection strings, statements, properties, lessons.
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

// What stands between any two of the marks.
std::vector<Text> Split(const Text& text, TextView marks) {
    std::vector<Text> pieces;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find_first_of(marks, begin), text.size());
        pieces.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return pieces;
}

size_t CountOf(TextView text, TextView part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != TextView::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

const TextView passwords[] = {u"Password", u"PWD", u"Jet OLEDB:Database Password"};

// Nobody may read in an error what was given as a password.
void CheckSecrets(const Text& text, const Text& shown) {
    for (const TextView mark : passwords) {
        for (const Text& piece : Split(text, u";")) {
            const size_t equals = piece.find(u'=');
            if (equals == Text::npos || !EqualNoCase(TrimBlanks(TextView(piece).substr(0, equals)), mark)) continue;
            const Text secret(TrimBlanks(TextView(piece).substr(equals + 1)));
            if (secret.size() < 4 || CountOf(text, secret) > 1) continue; // a word that stands elsewhere is no secret
            Require(shown.find(secret) == Text::npos, "an error tells a password: " + ToUtf8(shown));
        }
    }
}

// Statements cut by hand: what is quoted or a comment, and what is not.
struct Cut {
    std::vector<Text> quoted;
    Text plain;
    bool isOpen = false; // the last quote does not end
    explicit Cut(const Text& statement) {
        for (size_t i = 0; i < statement.size();) {
            const char16_t unit = statement[i];
            const TextView two = TextView(statement).substr(i, 2);
            size_t end = i + 1;
            if (two == u"--" || two == u"/*") {
                const size_t close = statement.find(two == u"--" ? u"\n" : u"*/", i + 2);
                isOpen = close == Text::npos && two == u"/*";
                end = close == Text::npos ? statement.size() : close + (two == u"--" ? 1 : 2);
            } else if (unit == u'\'' || unit == u'"' || unit == u'`' || unit == u'[') {
                const char16_t close = unit == u'[' ? u']' : unit;
                for (isOpen = true; end < statement.size() && isOpen; ++end) {
                    if (statement[end] != close) continue;
                    if (end + 1 < statement.size() && statement[end + 1] == close)
                        ++end;
                    else
                        isOpen = false;
                }
            } else {
                plain += unit;
                i = end;
                continue;
            }
            quoted.push_back(statement.substr(i, end - i));
            plain += u'\1';
            i = end;
        }
    }
};

// Without anything that may stand in a date, in TOP n or in LIMIT n.
Text Remaining(const Cut& cut) {
    Text rest = cut.plain;
    std::erase_if(rest, [](char16_t unit) {
        return TextView(u"#0123456789/-:.()TOPLIMITAtoplimita \t\n\v\f\r\1").find(unit) != TextView::npos;
    });
    return rest;
}

bool IsDateLiteral(const Text& literal) {
    return literal.size() > 20 && literal.front() == u'\'' && ParseDate(literal.substr(1, literal.size() - 2));
}

void CheckAdapted(const Text& statement, const Dialect& dialect) {
    const Text adapted = AdaptStatement(statement, dialect);
    if (!dialect.adapts || PassesUnchanged(statement, dialect)) RequireEqual(adapted, statement, "what passes");
    if (!dialect.adapts) return;
    const Cut before(statement), after(adapted);
    size_t found = 0;
    for (const Text& quoted : after.quoted) {
        if (found < before.quoted.size() && quoted == before.quoted[found])
            ++found;
        else
            Require(IsDateLiteral(quoted), "only a date becomes a literal: " + ToUtf8(adapted));
    }
    Require(found == before.quoted.size(), "quoted parts are untouched: " + ToUtf8(adapted));
    RequireEqual(Remaining(after), Remaining(before), "what is neither quoted nor a date nor TOP");
    Require(after.isOpen == before.isOpen, "the statement ends as it did");
    if (!before.isOpen && CountOf(before.plain, u"TOP") + CountOf(before.plain, u"top") < 2)
        RequireEqual(AdaptStatement(adapted, dialect), adapted, "an adapted statement, adapted");
}

void CheckLiterals(const Text& statement) {
    const auto taken = TakeLongLiterals(statement, 5);
    if (!taken) return;
    Text whole;
    size_t next = 0;
    for (const char16_t unit : taken->statement) {
        if (unit == u'?' && next < taken->values.size() && Cut(whole).isOpen == false)
            whole += modDB::QuoteSQLString(std::get<Text>(taken->values[next++]));
        else
            whole += unit;
    }
    RequireEqual(whole, statement, "the statement with its literals put back");
    Require(next == taken->values.size(), "a mark for each literal");
}

// A value of each kind, of the same text.
Value MakeValue(const Text& text, size_t kind) {
    const auto number = static_cast<int64_t>(std::hash<Text>()(text));
    const auto part = [number](int at, int most) { return 1 + static_cast<int>((number >> at) & 0xFFFF) % most; };
    switch (kind % 6) {
    case 0:
        return number;
    case 1:
        return static_cast<double>(number) / 3.0e7;
    case 2:
        return number % 2 == 0;
    case 3:
        return DateTime{part(0, 9999),
                        part(16, 12),
                        part(20, 28),
                        part(24, 24) - 1,
                        part(30, 60) - 1,
                        part(36, 60) - 1,
                        number % 3 ? 0u : static_cast<uint32_t>(part(3, 30000))};
    case 4:
        return {};
    default:
        return text;
    }
}

void CheckReadAgain(const DefaultPropertyCollection& properties) {
    const Text saved = properties.Save();
    DefaultPropertyCollection again;
    again.SetValue(u"gone", true);
    again.Load(saved);
    RequireEqual(again.Save(), saved, "what was saved, loaded and saved");
    Require(again.Name() == properties.Name() && again.ValueNames() == properties.ValueNames(), "the names come back");
    for (const Text& name : properties.ValueNames())
        Require(again.GetValue(name, {}) == properties.GetValue(name, {}), "the value of " + ToUtf8(name));
}

} // namespace

void DriveConnectionString(Input input) {
    const Text text = TextOf(input);
    const auto itself = [](TextView source) { return Text(source); };
    const auto setting = [](TextView source, TextView keyword) { return Text(source).append(keyword); };
    const Machine machines[] = {
        {[] { return std::vector<Text>(); }, [](TextView) { return Text(); }, setting},
        {[] {
             return std::vector<Text>{u"SQL Server", u"Microsoft Access Driver (*.mdb, *.accdb)"};
         },
         itself, setting}};
    try {
        const ConnectionKeywords keywords(text);
        const ConnectionKeywords again(keywords.Write());
        RequireEqual(again.Write(), keywords.Write(), "what was written, read and written");
        for (const Text& piece : Split(text, u";=")) {
            const Text* const value = keywords.Find(TrimBlanks(piece));
            const Text* const same = again.Find(TrimBlanks(piece));
            Require(!value == !same, "the keyword comes back: " + ToUtf8(piece));
            if (value) RequireEqual(*same, *value, "the value of " + ToUtf8(piece));
        }
    } catch (const Error& error) {
        CheckSecrets(text, error.Description());
    }
    for (const Machine& machine : machines) {
        try {
            const ConnectionTarget target = TranslateConnectionString(text, machine);
            Require(target.timeout >= 0, "the time to wait is no less than none");
            if (target.engine == Engine::SQLite) {
                Require(!target.path.empty() && target.odbcString.empty(), "a file needs no driver, but a path");
                continue;
            }
            if (DialectOf(target.engine).valueMarks == ValueMarks::Secrets) continue; // not in the form that we read
            const ConnectionKeywords keywords(target.odbcString);
            const ConnectionTarget again = TranslateConnectionString(target.odbcString, machine);
            Require(again.engine == target.engine, "the engine of the string for the driver");
            const ConnectionKeywords same(again.odbcString);
            for (const auto& [keyword, value] : keywords.Items())
                RequireEqual(same.First({keyword}), value, "translated again: " + ToUtf8(keyword));
            const Text* const password = keywords.Find(u"PWD");
            bool isGiven = !password;
            const ConnectionKeywords host(text);
            const Text* const inner = host.Find(u"Extended Properties");
            for (const TextView name : passwords) {
                for (const ConnectionKeywords& source : {host, inner ? ConnectionKeywords(*inner) : host}) {
                    const Text* const given = source.Find(name);
                    isGiven = isGiven || (given && *given == *password);
                }
            }
            Require(isGiven, "the password is the one that was given");
        } catch (const Error& error) {
            CheckSecrets(text, error.Description());
        }
    }
}

void DriveStatement(Input input) {
    const Text statement = TextOf(input);
    for (const Engine engine : {Engine::SQLite, Engine::PostgreSQL, Engine::Access})
        CheckAdapted(statement, DialectOf(engine));
    CheckLiterals(statement);
    const Cut cut(statement);
    if (StandsAlone(statement)) {
        Require(!cut.isOpen && cut.plain.find_first_of(u";#") == Text::npos, "a whole statement");
        for (const Text& quoted : cut.quoted)
            Require(quoted.front() != u'-' && quoted.front() != u'/', "a statement without a comment");
    }
    Require(statement.find(TableOf(statement)) != Text::npos, "the table is one of the statement's");
    RequireEqual(FromUtf8(ToUtf8(statement)), MadeWellFormed(statement), "the text as UTF-8 and back");
    if (const auto date = ParseDate(statement)) {
        const auto again = ParseDate(FormatDate(*date));
        Require(again && *again == *date, "a date comes back");
    }
    const Text quoted = modDB::QuoteSQLString(statement);
    const Cut alone(quoted);
    Require(!alone.isOpen && alone.quoted.size() == 1 && alone.plain == u"\1", "a quoted text is one literal");
}

void DriveProperties(Input input) {
    const Text text = TextOf(input);
    DefaultPropertyCollection read;
    read.Load(text);
    CheckReadAgain(read);
    DefaultPropertyCollection made;
    made.SetName(text.substr(0, 3));
    size_t kind = text.size();
    for (const Text& piece : Split(text, u"\n=")) made.SetValue(piece, MakeValue(text.substr(piece.size()), ++kind));
    CheckReadAgain(made);
}

void DriveLesson(Input input) {
    const Text text = TextOf(input);
    std::shared_ptr<ContentLesson> lesson;
    try {
        lesson = LessonText::Load(text);
    } catch (const Error& error) {
        Require(error.Description().starts_with(u"Line "), "a refusal tells the line: " + ToUtf8(error.Description()));
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
