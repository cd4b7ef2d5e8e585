#include "data/odbc/DriverString.h"

#include "base/Error.h"

#include <algorithm>
#include <charconv>

namespace dax {

namespace {

constexpr TextView cutBlanks = u" \t\n\v\f\r";

[[noreturn]] void RefuseValue(const Text& keyword, const Dialect& dialect, TextView reason) {
    throw Error(u"The value of \"" + keyword + u"\" in the connection string " + Text(reason) +
                u", which cannot be passed to the driver for " + Text(dialect.name) + u". Use another value.");
}

bool IsOneOf(TextView keyword, std::initializer_list<TextView> words) {
    return std::ranges::any_of(words, [&](TextView word) { return EqualNoCase(keyword, word); });
}

// As the drivers read numbers: up to the first letter that is no digit.
uint32_t ReadBits(const Text& text, int base) {
    const std::string digits = ToUtf8(TrimBlanks(text));
    uint32_t bits = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), bits, base);
    return bits;
}

Text WriteBits(uint32_t bits, int base) {
    char digits[16];
    const auto [end, failure] = std::to_chars(digits, digits + sizeof digits, bits, base);
    return FromUtf8({digits, end});
}

void Force(ConnectionKeywords& keywords, const DriverOption& option) {
    if (option.isDefault) return keywords.SetIfMissing(option.keyword, option.value);
    const int base = option.isHexadecimal ? 16 : 10;
    uint32_t bits = ReadBits(keywords.Last({option.keyword}), base);
    for (TextView rest = option.otherNames; !rest.empty();) {
        const size_t end = std::min(rest.find(u';'), rest.size());
        keywords.Remove(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    bits = (bits | option.setBits) & ~option.clearedBits;
    // At the end: some drivers take the last of a repeated option, and one takes several packed into another.
    keywords.Set(option.keyword, option.value.empty() ? WriteBits(bits, base) : Text(option.value));
}

bool NeedsBraces(const Text& keyword, const Text& value, const Dialect& dialect) {
    if (EqualNoCase(keyword, u"Driver")) return true;
    if (value.empty()) return false;
    switch (dialect.valueQuoting) {
    case ValueQuoting::Secrets:
        if (IsOneOf(keyword, {u"PWD", u"Password", u"ConnSettings", u"A6", u"pqopt"})) return true;
        if (value.find(u';') != Text::npos) RefuseValue(keyword, dialect, u"contains a semicolon");
        // It looks for the closing brace of such a value, which must be its end.
        if (value.front() == u'{' && value.find_first_of(u"{}", 1) != value.size() - 1)
            RefuseValue(keyword, dialect, u"begins with a brace");
        return false;
    case ValueQuoting::WhereNeeded:
        return value.front() == u'{' || value.find(u';') != Text::npos || TrimBlanks(value).size() < value.size();
    case ValueQuoting::Trimmed:
        if (cutBlanks.find(value.front()) != TextView::npos || cutBlanks.find(value.back()) != TextView::npos)
            RefuseValue(keyword, dialect, u"begins or ends with a blank");
        break;
    case ValueQuoting::Standard:
        break;
    }
    return value.find_first_of(u"[]{}(),;?*=!@'\" \t") != Text::npos;
}

} // namespace

Text WriteForDriver(ConnectionKeywords keywords, const Dialect& dialect) {
    for (const DriverOption& option : dialect.driverOptions) Force(keywords, option);
    Text text;
    for (const auto& [keyword, value] : keywords.Items()) {
        if (value.find(u'\0') != Text::npos) RefuseValue(keyword, dialect, u"contains a NUL character");
        const bool braces = NeedsBraces(keyword, value, dialect);
        text += keyword + (braces ? u"={" : u"=");
        for (const char16_t unit : value) {
            text.push_back(unit);
            if (braces && unit == u'}') text.push_back(unit);
        }
        text += braces ? u"};" : u";";
    }
    return text;
}

} // namespace dax
