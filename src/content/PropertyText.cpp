#include "content/PropertyText.h"

#include "base/Dates.h"
#include "base/Numbers.h"

#include <array>
#include <charconv>
#include <optional>

namespace dax::PropertyText {

namespace {

constexpr size_t maxNumberLength = 40;

void WriteEscaped(Text& text, TextView raw, char16_t delimiter) {
    for (const char16_t unit : raw) {
        switch (unit) {
        case u'\n':
            text += u"\\n";
            break;
        case u'\r':
            text += u"\\r";
            break;
        default:
            if (unit == u'\\' || unit == delimiter) text += u'\\';
            text += unit;
        }
    }
}

// Reads up to an unescaped delimiter; nothing when there is none. `at` is after it afterwards.
std::optional<Text> ReadEscaped(TextView line, size_t& at, char16_t delimiter) {
    const Text marks = {delimiter, u'\\'};
    Text raw;
    size_t from = at;
    for (size_t mark; (mark = line.find_first_of(marks, from)) != TextView::npos; from = mark + 2) {
        raw.append(line.substr(from, mark - from));
        if (line[mark] == delimiter) {
            at = mark + 1;
            return raw;
        }
        const TextView unit = line.substr(mark + 1, 1);
        raw += unit == u"n" ? TextView(u"\n") : unit == u"r" ? TextView(u"\r") : unit;
    }
    return {};
}

// #2024-05-01 09:30:00# or, with a fraction of the second, #2024-05-01 09:30:00.000000001#
void WriteDate(Text& text, const DateTime& date) {
    DateTime whole = date;
    whole.fraction = 0;
    text += u'#' + FormatDate(whole);
    if (date.fraction) {
        text += u'.';
        AppendPadded(text, static_cast<int>(date.fraction), 9);
    }
    text += u'#';
}

// Exactly as it is written.
std::optional<DateTime> ReadDate(TextView text) {
    const auto date = ParseDate(text.substr(1, text.size() - 2));
    Text written;
    if (date) WriteDate(written, *date);
    return written == text ? date : std::nullopt;
}

// A value in none of the forms is taken as text, so that users may write plain words.
Value ReadValue(TextView text) {
    if (text.empty()) return Text();
    if (text.front() == u'"') {
        size_t at = 1;
        std::optional<Text> quoted = ReadEscaped(text, at, u'"');
        return quoted && at == text.size() ? Value(std::move(*quoted)) : Value(Text(text));
    }
    if (text == u"null") return {};
    if (text == u"true" || text == u"false") return text == u"true";
    if (text.front() == u'#') {
        const auto date = ReadDate(text);
        return date ? Value(*date) : Value(Text(text));
    }
    if (const auto number = ReadNumber<int64_t>(text)) return *number;
    // "inf" and "nan" are plain words here.
    const TextView digits = text.substr(text.front() == u'-');
    if (!digits.empty() && digits.front() >= u'0' && digits.front() <= u'9') {
        if (const auto number = ReadNumber<double>(text)) return *number;
    }
    return Text(text);
}

void WriteDouble(Text& text, double number) {
    if (!(number - number == 0)) { // no number or without end: there is no form for it
        text += u"null";
        return;
    }
    std::array<char, maxNumberLength> digits;
    const std::string_view written(digits.data(), std::to_chars(digits.begin(), digits.end(), number).ptr);
    text.append(written.begin(), written.end());
    // A whole one keeps a point, so that it comes back as it was.
    if (written.find_first_of(".e") == std::string_view::npos) text += u".0";
}

} // namespace

void WriteHeading(Text& text, TextView name) {
    text += u'[';
    WriteEscaped(text, name, u']');
    text += u"]\n";
}

void WriteValue(Text& text, TextView name, const Value& value) {
    if (!name.empty() && name.front() == u'[') text += u'\\'; // it is no heading
    WriteEscaped(text, name, u'=');
    text += u'=';
    if (const auto* boolean = std::get_if<bool>(&value)) {
        text += *boolean ? u"true" : u"false";
    } else if (const auto* whole = std::get_if<int64_t>(&value)) {
        text += ToText(*whole);
    } else if (const auto* number = std::get_if<double>(&value)) {
        WriteDouble(text, *number);
    } else if (const auto* words = std::get_if<Text>(&value)) {
        text += u'"';
        WriteEscaped(text, *words, u'"');
        text += u'"';
    } else if (const auto* date = std::get_if<DateTime>(&value)) {
        WriteDate(text, *date);
    } else {
        text += u"null";
    }
    text += u'\n';
}

void Read(TextView text, const std::function<void(bool, Text&&, Value&&)>& found) {
    while (!text.empty()) {
        const size_t end = std::min(text.find(u'\n'), text.size());
        TextView line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == u'\r') line.remove_suffix(1);
        const bool isHeading = !line.empty() && line.front() == u'[';
        size_t at = isHeading;
        std::optional<Text> name = ReadEscaped(line, at, isHeading ? u']' : u'=');
        if (!name || (isHeading && at != line.size())) continue;
        found(isHeading, std::move(*name), isHeading ? Value() : ReadValue(line.substr(at)));
    }
}

} // namespace dax::PropertyText
