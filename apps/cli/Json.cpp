#include "Json.h"

#include <charconv>
#include <cstdio>
#include <string>

namespace dax::cli {

namespace {

Text FromAscii(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

Text DateText(const DateTime& date) {
    char digits[80];
    std::snprintf(digits, sizeof digits, "%04d-%02d-%02dT%02d:%02d:%02d", date.year, date.month, date.day, date.hour,
                  date.minute, date.second);
    return FromAscii(digits);
}

Text NumberText(double number) {
    if (!(number - number == 0)) return u"null"; // JSON has no word for it
    char digits[40];
    return FromAscii({digits, std::to_chars(digits, digits + sizeof digits, number).ptr});
}

} // namespace

Text JsonText(TextView text) {
    Text json = u"\"";
    for (const char16_t unit : text) {
        switch (unit) {
        case u'"':
        case u'\\':
            json += u'\\';
            json += unit;
            break;
        case u'\n':
            json += u"\\n";
            break;
        case u'\r':
            json += u"\\r";
            break;
        case u'\t':
            json += u"\\t";
            break;
        default:
            if (unit < 0x20 || unit == 0x7F) {
                json += u"\\u00";
                json += u"0123456789abcdef"[unit >> 4];
                json += u"0123456789abcdef"[unit & 0xF];
            } else {
                json += unit;
            }
        }
    }
    return json + u'"';
}

Text JsonValue(const Value& value) {
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? u"true" : u"false";
    if (const auto* whole = std::get_if<int64_t>(&value)) return ToText(*whole);
    if (const auto* number = std::get_if<double>(&value)) return NumberText(*number);
    if (const auto* text = std::get_if<Text>(&value)) return JsonText(*text);
    if (const auto* date = std::get_if<DateTime>(&value)) return JsonText(DateText(*date));
    return u"null";
}

JsonObject& JsonObject::AddRaw(TextView name, const Text& json) {
    if (!members.empty()) members += u',';
    members += JsonText(name);
    members += u':';
    members += json;
    return *this;
}

} // namespace dax::cli
