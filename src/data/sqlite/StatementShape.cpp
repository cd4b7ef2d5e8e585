#include "data/sqlite/StatementShape.h"

#include "base/TextReader.h"

#include <algorithm>

namespace dax {

namespace {

constexpr size_t maxDigits = 18; // always fits 64 bits

bool ChangesRows(TextView statement) {
    TextReader reader(statement);
    return reader.Word(u"UPDATE") || reader.Word(u"INSERT") || reader.Word(u"DELETE");
}

bool HasWord(TextView text, TextView word) {
    for (size_t i = 1; i + word.size() <= text.size(); ++i) { // each begins with another word
        if (TextReader::IsWordUnit(text[i - 1])) continue;
        TextReader reader(text.substr(i));
        if (!TextReader::IsBlank(text[i]) && reader.Word(word)) return true;
    }
    return false;
}

} // namespace

bool StatementShape::Read(TextView statement) {
    text.clear();
    literals.clear();
    if (!ChangesRows(statement)) return false;
    size_t copied = 0;
    for (size_t at = 0; at < statement.size();) {
        const char16_t unit = statement[at];
        switch (unit) {
        case u'\'':
            if (!TakeText(statement, at, copied)) return false;
            break;
        case u'"':
        case u'`':
        case u'[':
            at = statement.find(unit == u'[' ? u']' : unit, at + 1);
            if (at == TextView::npos) return false;
            ++at; // a doubled mark opens the rest of the name again
            break;
        case u'-':
        case u'/':
            if (statement.substr(at, 2) == u"--" || statement.substr(at, 2) == u"/*") return false;
            ++at;
            break;
        case u'?':
        case u':':
        case u'@':
        case u'$':
        case u'#':
        case u';':
        case u'\0':
            return false;
        default:
            if (TextReader::IsDigit(unit))
                TakeNumber(statement, at, copied);
            else
                ++at;
        }
    }
    text.append(statement.substr(copied));
    return !literals.empty();
}

bool StatementShape::MayRepeat() const { return !HasWord(text, u"BY"); }

bool StatementShape::TakeText(TextView statement, size_t& at, size_t& copied) {
    if (TextReader::IsWordUnit(statement[at - 1])) return false; // x'00'
    text.append(statement.substr(copied, at - copied));
    const size_t begin = at + 1;
    size_t end = statement.find(u'\'', begin);
    while (end != TextView::npos && statement.substr(end + 1).starts_with(u'\'')) end = statement.find(u'\'', end + 2);
    if (end == TextView::npos) return false;
    literals.push_back({statement.substr(begin, end - begin), true, 0});
    text.push_back(u'?');
    at = copied = end + 1;
    return at == statement.size() || !TextReader::IsWordUnit(statement[at]);
}

// Digits of a name, or of a number that is larger or of another form, stay where they are.
void StatementShape::TakeNumber(TextView statement, size_t& at, size_t& copied) {
    const size_t begin = at;
    while (at < statement.size() && TextReader::IsDigit(statement[at])) ++at;
    const auto joins = [&](size_t position) {
        return position < statement.size() &&
               (TextReader::IsWordUnit(statement[position]) || statement[position] == u'.');
    };
    if (joins(begin - 1) || joins(at) || at - begin > maxDigits) {
        while (joins(at)) ++at;
        return;
    }
    sqlite3_int64 number = 0;
    for (size_t i = begin; i < at; ++i) number = number * 10 + (statement[i] - u'0');
    text.append(statement.substr(copied, begin - copied));
    literals.push_back({{}, false, number});
    text.push_back(u'?');
    copied = at;
}

int StatementShape::Bind(sqlite3_stmt* compiled) {
    texts.resize(std::max(texts.size(), literals.size()));
    int result = SQLITE_OK;
    for (size_t i = 0; i < literals.size() && result == SQLITE_OK; ++i) {
        const Literal& literal = literals[i];
        const int position = static_cast<int>(i) + 1;
        if (!literal.isText) {
            result = sqlite3_bind_int64(compiled, position, literal.number);
            continue;
        }
        TextView text = literal.quoted;
        if (text.find(u'\'') != TextView::npos) {
            single.clear();
            for (size_t unit = 0; unit < text.size(); ++unit) {
                single.push_back(text[unit]);
                if (text[unit] == u'\'') ++unit;
            }
            text = single;
        }
        ToUtf8(text, texts[i]);
        result = sqlite3_bind_text64(compiled, position, texts[i].data(), texts[i].size(), SQLITE_STATIC, SQLITE_UTF8);
    }
    return result;
}

} // namespace dax
