#include "content/PropertyText.h"

#include "base/Numbers.h"

#include <charconv>
#include <cstdio>
#include <optional>

namespace dax::PropertyText {

namespace {

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

// Reads up to an unescaped delimiter; nothing when there is none. `at` stands behind it afterwards.
std::optional<Text> ReadEscaped(TextView line, size_t& at, char16_t delimiter) {
    Text raw;
    for (size_t i = at; i < line.size(); ++i) {
        size_t plain = i;
        while (plain < line.size() && line[plain] != delimiter && line[plain] != u'\\') ++plain;
        raw.append(line.substr(i, plain - i));
        i = plain;
        if (i == line.size()) break;
        if (line[i] == delimiter) {
            at = i + 1;
            return raw;
        }
        if (i + 1 == line.size()) {
            raw += line[i];
            continue;
        }
        const char16_t unit = line[++i];
        raw += unit == u'n' ? u'\n' : unit == u'r' ? u'\r' : unit;
    }
    return {};
}

// #2024-05-01 09:30:00# or, with a fraction of the second, #2024-05-01 09:30:00.000000001#
std::optional<DateTime> ReadDate(TextView text) {
    if ((text.size() != 21 && text.size() != 31) || text.back() != u'#') return {};
    const auto part = [text](size_t at, size_t length, int least, int most) -> std::optional<int> {
        const auto number = ReadNumber<int>(text.substr(at, length));
        if (!number || *number < least || *number > most) return {};
        return number;
    };
    if (text[5] != u'-' || text[8] != u'-' || text[11] != u' ' || text[14] != u':' || text[17] != u':') return {};
    const auto year = part(1, 4, 1, 9999), month = part(6, 2, 1, 12), day = part(9, 2, 1, 31);
    const auto hour = part(12, 2, 0, 23), minute = part(15, 2, 0, 59), second = part(18, 2, 0, 59);
    if (!year || !month || !day || !hour || !minute || !second) return {};
    DateTime date{*year, *month, *day, *hour, *minute, *second};
    if (text.size() == 31) {
        const auto fraction = part(21, 9, 0, 999'999'999);
        if (!fraction || text[20] != u'.') return {};
        date.fraction = static_cast<uint32_t>(*fraction);
    }
    return date;
}

// A value that is in none of the forms stands for itself, as text, so that people may write plain words.
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
    // "inf" and "nan" are words to a person.
    const char16_t first = text.front() == u'-' && text.size() > 1 ? text[1] : text.front();
    if (first >= u'0' && first <= u'9') {
        if (const auto number = ReadNumber<double>(text)) return *number;
    }
    return Text(text);
}

void Append(Text& text, const char* ascii) {
    for (; *ascii; ++ascii) text += static_cast<char16_t>(*ascii);
}

void WriteDouble(Text& text, double number) {
    if (!(number - number == 0)) { // no number or without end: there is no form for it
        text += u"null";
        return;
    }
    char digits[40];
    const auto result = std::to_chars(digits, digits + sizeof digits - 3, number);
    *result.ptr = 0;
    Append(text, digits);
    // A whole one keeps a point, so that it comes back as it was.
    if (std::string_view(digits).find_first_of(".e") == std::string_view::npos) Append(text, ".0");
}

void WriteDate(Text& text, const DateTime& date) {
    char digits[80];
    std::snprintf(digits, sizeof digits, "#%04d-%02d-%02d %02d:%02d:%02d", date.year, date.month, date.day, date.hour,
                  date.minute, date.second);
    Append(text, digits);
    if (date.fraction) {
        std::snprintf(digits, sizeof digits, ".%09u", static_cast<unsigned>(date.fraction));
        Append(text, digits);
    }
    text += u'#';
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
    if (const auto* truth = std::get_if<bool>(&value)) {
        text += *truth ? u"true" : u"false";
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
