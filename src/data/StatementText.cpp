#include "data/StatementText.h"

#include "base/Dates.h"
#include "base/TextReader.h"

#include <cstring>

namespace dax {

namespace {

enum class Piece { Plain, Literal, Name, Comment, Unterminated };

// Cuts a statement into pieces: quoted ones whole, with their quotes, and the text between them.
class Pieces {
public:
    explicit Pieces(TextView statement) : statement(statement) {}

    bool Next() {
        begin = end;
        if (begin >= statement.size()) return false;
        kind = KindAt(begin);
        if (kind == Piece::Plain) {
            while (end < statement.size() && KindAt(end) == Piece::Plain) ++end;
        } else if (kind == Piece::Comment) {
            const bool line = statement[begin] == u'-';
            end = statement.find(line ? u"\n" : u"*/", begin + 2);
            Finish(line ? 1 : 2, line);
        } else {
            const char16_t close = statement[begin] == u'[' ? u']' : statement[begin];
            // A doubled closing quote is a literal one.
            for (end = statement.find(close, begin + 1);
                 end != TextView::npos && statement.substr(end + 1).starts_with(close);)
                end = statement.find(close, end + 2);
            Finish(1, false);
        }
        return true;
    }
    Piece Kind() const { return kind; }
    TextView Units() const { return statement.substr(begin, end - begin); }

private:
    Piece KindAt(size_t at) const {
        switch (statement[at]) {
        case u'\'':
            return Piece::Literal;
        case u'"':
        case u'`':
        case u'[':
            return Piece::Name;
        case u'-':
            return statement.substr(at, 2) == u"--" ? Piece::Comment : Piece::Plain;
        case u'/':
            return statement.substr(at, 2) == u"/*" ? Piece::Comment : Piece::Plain;
        default:
            return Piece::Plain;
        }
    }
    void Finish(size_t length, bool mayEndWithText) {
        if (end != TextView::npos) {
            end += length;
            return;
        }
        end = statement.size();
        if (!mayEndWithText) kind = Piece::Unterminated;
    }

    TextView statement;
    size_t begin = 0, end = 0;
    Piece kind = Piece::Plain;
};

// Two adjacent literals would become one.
void SeparateLiterals(Text& result) {
    if (!result.empty() && result.back() == u'\'') result.push_back(u' ');
}

// The dates between number signs of a piece outside quotes.
void AppendWithDates(Text& result, TextView plain) {
    size_t done = 0;
    for (size_t open = plain.find(u'#'); open != TextView::npos;) {
        const size_t close = plain.find(u'#', open + 1);
        if (close == TextView::npos) break;
        const auto date = close - open < 40 ? ParseDate(plain.substr(open + 1, close - open - 1)) : std::nullopt;
        if (!date) {
            open = close;
            continue;
        }
        result.append(plain.substr(done, open - done));
        SeparateLiterals(result);
        result.push_back(u'\'');
        result += FormatDate(*date);
        result.push_back(u'\'');
        done = close + 1;
        open = plain.find(u'#', done);
    }
    result.append(plain.substr(done));
}

// The number after SELECT TOP, and where the clause begins and ends in the statement.
struct Top {
    size_t begin = 0, end = 0;
    TextView count;
};

std::optional<Top> FindTop(TextView statement) {
    TextReader reader(statement);
    if (!reader.Word(u"SELECT")) return std::nullopt;
    if (!reader.Word(u"DISTINCT")) (void)reader.Word(u"ALL");
    Top top;
    reader.SkipBlanks();
    top.begin = reader.Position();
    if (!reader.Word(u"TOP")) return std::nullopt;
    reader.SkipBlanks();
    const bool bracket = reader.Unit(u'(');
    reader.SkipBlanks();
    top.count = reader.Digits();
    reader.SkipBlanks();
    if (top.count.empty() || (bracket && !reader.Unit(u')')) || reader.Word(u"PERCENT")) return std::nullopt;
    if (bracket) reader.SkipBlanks();
    top.end = reader.Position();
    if (reader.AtEnd() || (!bracket && !TextReader::IsBlank(statement[top.end - 1]))) return std::nullopt;
    return top;
}

template <typename IsReplaced>
std::optional<Parametrized> ParametrizeLiterals(TextView statement, IsReplaced isReplaced) {
    Parametrized result;
    Pieces pieces(statement);
    while (pieces.Next()) {
        const TextView units = pieces.Units();
        if (pieces.Kind() == Piece::Plain && units.find(u'?') != TextView::npos) return std::nullopt;
        if (pieces.Kind() == Piece::Unterminated) return std::nullopt;
        if (pieces.Kind() != Piece::Literal || !isReplaced(units)) {
            result.statement.append(units);
            continue;
        }
        Text value;
        for (size_t i = 1; i + 1 < units.size(); ++i) {
            value.push_back(units[i]);
            if (units[i] == u'\'') ++i;
        }
        result.statement.push_back(u'?');
        result.values.emplace_back(std::move(value));
    }
    if (result.values.empty()) return std::nullopt;
    return result;
}

} // namespace

bool PassesUnchanged(TextView statement, const Dialect& dialect) {
    if (!dialect.adapts || statement.empty()) return true;
    // A byte of that value anywhere may be a number sign; mostly there is none.
    return !std::memchr(statement.data(), '#', statement.size() * sizeof(char16_t)) && !FindTop(statement);
}

Text AdaptStatement(TextView statement, const Dialect& dialect) {
    if (PassesUnchanged(statement, dialect)) return Text(statement);
    const std::optional<Top> top = FindTop(statement);
    bool whole = true;
    Text result;
    Pieces pieces(statement);
    while (pieces.Next()) {
        if (pieces.Kind() == Piece::Plain) {
            AppendWithDates(result, pieces.Units());
        } else {
            if (pieces.Units().front() == u'\'') SeparateLiterals(result);
            result.append(pieces.Units());
        }
        // After a comment a LIMIT could be lost, after an open quote it would become text.
        whole = whole && pieces.Kind() != Piece::Unterminated && pieces.Kind() != Piece::Comment;
    }
    if (!top || !whole) return result;
    // No date can be before TOP, so its position is the same in the result.
    result.erase(top->begin, top->end - top->begin);
    size_t end = result.size();
    while (TextReader::IsBlank(result[end - 1]) || result[end - 1] == u';') --end;
    result.insert(end, u" LIMIT " + Text(top->count));
    return result;
}

bool IsSingleStatement(TextView statement) {
    Pieces pieces(statement);
    while (pieces.Next()) {
        switch (pieces.Kind()) {
        case Piece::Plain:
            if (pieces.Units().find_first_of(u";#") != TextView::npos) return false;
            break;
        case Piece::Comment:
        case Piece::Unterminated:
            return false;
        default:
            break;
        }
    }
    return !TrimBlanks(statement).empty();
}

std::optional<Parametrized> ParametrizeLongLiterals(TextView statement, size_t maxUnits) {
    if (maxUnits == 0 || statement.size() <= maxUnits) return std::nullopt;
    return ParametrizeLiterals(statement, [maxUnits](TextView quoted) { return quoted.size() > maxUnits + 2; });
}

std::optional<Parametrized> ParametrizeLiteralsWithNul(TextView statement) {
    auto result = ParametrizeLiterals(statement, [](TextView quoted) { return quoted.find(u'\0') != TextView::npos; });
    if (result && result->statement.find(u'\0') != Text::npos) return std::nullopt;
    return result;
}

Text TableOf(TextView statement) {
    bool isNext = false;
    Pieces pieces(statement);
    while (pieces.Next()) {
        if (pieces.Kind() != Piece::Plain) continue;
        const TextView units = pieces.Units();
        for (size_t begin = 0; begin < units.size();) {
            size_t end = begin;
            while (end < units.size() && TextReader::IsWordUnit(units[end])) ++end;
            const TextView word = units.substr(begin, end - begin);
            if (isNext && !word.empty()) return Text(word);
            isNext = isNext || EqualNoCase(word, u"FROM");
            begin = end + 1;
        }
    }
    return {};
}

} // namespace dax
