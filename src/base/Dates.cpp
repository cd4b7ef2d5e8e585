#include "base/Dates.h"

#include "base/TextReader.h"

namespace dax {

namespace {

bool ReadFraction(TextReader& reader, uint32_t& fraction) {
    const TextView digits = reader.Digits();
    if (digits.empty()) return false;
    for (size_t i = 0; i < 9; ++i) fraction = fraction * 10 + (i < digits.size() ? digits[i] - u'0' : 0u);
    return true;
}

bool ReadTime(TextReader& reader, DateTime& date) {
    if (!reader.Number(date.hour, 1, 2) || !reader.Unit(u':') || !reader.Number(date.minute, 1, 2)) return false;
    if (reader.Unit(u':')) {
        if (!reader.Number(date.second, 1, 2)) return false;
        if (reader.Unit(u'.') && !ReadFraction(reader, date.fraction)) return false;
    }
    const bool isMorning = reader.Word(u"AM");
    if (isMorning || reader.Word(u"PM")) {
        if (date.hour < 1 || date.hour > 12) return false;
        date.hour = date.hour % 12 + (isMorning ? 0 : 12);
    }
    return date.hour < 24 && date.minute < 60 && date.second < 60;
}

bool IsCalendarDay(const DateTime& date) {
    static constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (date.month < 1 || date.month > 12) return false;
    const bool isLeapYear = (date.year % 4 == 0 && date.year % 100 != 0) || date.year % 400 == 0;
    return date.day >= 1 && date.day <= lengths[date.month - 1] + (date.month == 2 && isLeapYear ? 1 : 0);
}

} // namespace

std::optional<DateTime> ParseDate(TextView text) {
    TextReader reader(text);
    DateTime date;
    reader.SkipBlanks();
    if (!reader.Number(date.year, 4, 4)) return std::nullopt;
    const char16_t mark = reader.Unit(u'/') ? u'/' : u'-';
    if (mark == u'-' && !reader.Unit(u'-')) return std::nullopt;
    if (!reader.Number(date.month, 1, 2) || !reader.Unit(mark) || !reader.Number(date.day, 1, 2)) return std::nullopt;
    if (!reader.AtEnd()) {
        if (!reader.Unit(u'T') && !reader.Unit(u' ')) return std::nullopt;
        reader.SkipBlanks();
        if (!reader.AtEnd() && !ReadTime(reader, date)) return std::nullopt;
    }
    reader.SkipBlanks();
    if (!reader.AtEnd() || !IsCalendarDay(date)) return std::nullopt;
    return date;
}

Text FormatDate(const DateTime& date) {
    Text text;
    AppendPadded(text, date.year, 4);
    text.push_back(u'-');
    AppendPadded(text, date.month, 2);
    text.push_back(u'-');
    AppendPadded(text, date.day, 2);
    text.push_back(u' ');
    AppendPadded(text, date.hour, 2);
    text.push_back(u':');
    AppendPadded(text, date.minute, 2);
    text.push_back(u':');
    AppendPadded(text, date.second, 2);
    if (date.fraction == 0) return text;
    text.push_back(u'.');
    AppendPadded(text, static_cast<int>(date.fraction), 9);
    while (text.back() == u'0') text.pop_back();
    return text;
}

void AppendPadded(Text& text, int number, size_t width) {
    constexpr size_t maxDigits = 10; // digits of an int
    char16_t digits[maxDigits];
    size_t first = maxDigits;
    for (int rest = number; rest > 0 || maxDigits - first < width; rest /= 10)
        digits[--first] = static_cast<char16_t>(u'0' + rest % 10);
    text.append(digits + first, maxDigits - first);
}

} // namespace dax
