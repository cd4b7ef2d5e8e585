#include "base/modGeneric.h"

#include "base/Dates.h"
#include "base/FileSearch.h"
#include "base/LongText.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <limits>
#include <locale>
#include <optional>
#include <sstream>
#include <utility>
#ifdef _WIN32
#include <locale.h>
#endif

namespace dax::modGeneric {

namespace {

// Days since 30 December 1899, the fraction counting away from zero on both sides: how hosts number dates.
double DateSerial(const DateTime& date) {
    using namespace std::chrono;
    const sys_days day =
        year(date.year) / month(static_cast<unsigned>(date.month)) / std::chrono::day(static_cast<unsigned>(date.day));
    const auto days = static_cast<double>((day - sys_days(year(1899) / December / 30)).count());
    const double fraction = (date.hour * 3600.0 + date.minute * 60.0 + date.second) / 86400.0;
    return days < 0 ? days - fraction : days + fraction;
}

std::optional<double> NumberOf(const Value& value) {
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? -1 : 0;
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<Text>(&value)) return ReadLong(*text);
    if (const auto* date = std::get_if<DateTime>(&value)) return DateSerial(*date);
    return std::nullopt;
}

// To the nearest whole number, halves to the even one, whatever rounding mode the thread has.
double RoundHalfToEven(double number) {
    const double below = std::floor(number);
    const double rest = number - below;
    if (rest < 0.5 || (rest == 0.5 && std::fmod(below, 2.0) == 0.0)) return below;
    return below + 1;
}

Text NumberText(double number) {
    char digits[40];
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), number == 0 ? 0.0 : number, std::chars_format::general, 15)
            .ptr;
    Text text(std::begin(digits), end);
    for (char16_t& unit : text) {
        if (unit == u'e') unit = u'E';
    }
    return text;
}

std::tm ToCalendar(const DateTime& date) {
    std::tm calendar{};
    calendar.tm_year = date.year - 1900;
    calendar.tm_mon = date.month - 1;
    calendar.tm_mday = date.day;
    calendar.tm_hour = date.hour;
    calendar.tm_min = date.minute;
    calendar.tm_sec = date.second;
    return calendar;
}

Text FromWide(const std::wstring& wide) {
    Text text;
    for (const wchar_t unit : wide) { // a character, or where it is too narrow half a one
        char16_t units[2];
        text.append(units, WriteCodePoint(static_cast<char32_t>(unit), units));
    }
    return text;
}

// yyyy-mm-dd hh:mm:ss where there is no locale: the "C" locale's own mm/dd/yy is read wrongly by most of the world.
Text PlainDateTime(const DateTime& date, bool withTime) {
    const Text whole = dax::FormatDate({date.year, date.month, date.day, date.hour, date.minute, date.second});
    return withTime ? whole : whole.substr(0, whole.find(u' '));
}

// A locale by its name, which the system may lack. Finding one reads files: it is kept where many dates are written.
class DateLocale {
public:
    explicit DateLocale(const char* name);
    Text FormatDate(const DateTime& date, bool withTime) const {
        if (!isPlain) {
            if (auto text = Format(date, withTime ? L"%x %X" : L"%x")) return *text;
        }
        return PlainDateTime(date, withTime);
    }

#ifdef _WIN32
    ~DateLocale() {
        if (locale) _free_locale(locale);
    }
    DateLocale(const DateLocale&) = delete;
    DateLocale& operator=(const DateLocale&) = delete;
#endif

private:
    std::optional<Text> Format(const DateTime& date, const wchar_t* pattern) const;

    bool isPlain = true;
#ifdef _WIN32
    // The C++ library of some compilers has only the "C" locale on Windows; the system's C library has all.
    _locale_t locale = nullptr;
#else
    std::locale locale;
#endif
};

#ifdef _WIN32

DateLocale::DateLocale(const char* name) : locale(_create_locale(LC_TIME, name)) {
    isPlain = !locale || std::strcmp(name, "C") == 0;
}

std::optional<Text> DateLocale::Format(const DateTime& date, const wchar_t* pattern) const {
    const std::tm calendar = ToCalendar(date);
    wchar_t buffer[256];
    const size_t length = _wcsftime_l(buffer, std::size(buffer), pattern, &calendar, locale);
    if (length == 0) return std::nullopt;
    return FromWide(std::wstring(buffer, length));
}

#else

DateLocale::DateLocale(const char* name) {
    try {
        locale = std::locale(name);
        const std::string full = locale.name();
        isPlain = full == "C" || full.starts_with("C.") || full.find("LC_TIME=C;") != full.npos ||
                  full.find("LC_TIME=C.") != full.npos;
    } catch (const std::runtime_error&) {
        // The system has no such locale.
    }
}

std::optional<Text> DateLocale::Format(const DateTime& date, const wchar_t* pattern) const {
    const std::tm calendar = ToCalendar(date);
    std::wostringstream out;
    out.imbue(locale);
    std::use_facet<std::time_put<wchar_t>>(locale).put(std::ostreambuf_iterator<wchar_t>(out), out, L' ', &calendar,
                                                       pattern, pattern + std::wcslen(pattern));
    return FromWide(out.str());
}

#endif

Text FormatDate(const DateTime& date, const char* localeName, bool withTime) {
    if (*localeName != '\0') return DateLocale(localeName).FormatDate(date, withTime);
    static const DateLocale userLocale("");
    return userLocale.FormatDate(date, withTime);
}

} // namespace

bool FileExists(const Text& path) noexcept {
    try {
        if (path.empty()) return false;
        const bool isFolder = path.back() == u'/' || path.back() == std::filesystem::path::preferred_separator;
        return FindEntry(isFolder ? path + u'*' : path, [](const FoundEntry& entry) { return !entry.isFolder; });
    } catch (...) {
        return false;
    }
}

bool IsFileReadOnly(const Text& path) noexcept {
    try {
        bool isReadOnly = false;
        FindEntry(path, [&](const FoundEntry& entry) {
            isReadOnly = entry.isReadOnly;
            return true; // the first entry decides
        });
        return isReadOnly;
    } catch (...) {
        return false;
    }
}

Text MakeValidFileName(Text name, const Text& replacement) {
    // One character after the other, so that a replacement that holds a later one is replaced again: deliberate.
    for (const char16_t forbidden : TextView(u"\\/:*?\"<>|")) {
        Text clean;
        for (const char16_t unit : name) {
            if (unit == forbidden) {
                clean += replacement;
            } else {
                clean.push_back(unit);
            }
        }
        name = std::move(clean);
    }
    return name;
}

Text Pluralize(const Text& word, long count) { return count == 1 ? word : word + u"s"; }

int32_t VariantToLong(const Value& value, int32_t defaultValue) {
    if (const auto* whole = std::get_if<int64_t>(&value))
        return std::in_range<int32_t>(*whole) ? static_cast<int32_t>(*whole) : defaultValue;
    const std::optional<double> number = NumberOf(value);
    if (!number || std::isnan(*number)) return defaultValue;
    const double rounded = RoundHalfToEven(*number);
    if (rounded < std::numeric_limits<int32_t>::min() || rounded > std::numeric_limits<int32_t>::max()) {
        return defaultValue;
    }
    return static_cast<int32_t>(rounded);
}

Text VariantToString(const Value& value, const Text& defaultValue) {
    if (const auto* text = std::get_if<Text>(&value)) return *text;
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? u"True" : u"False";
    if (const auto* whole = std::get_if<int64_t>(&value)) return ToText(*whole);
    if (const auto* number = std::get_if<double>(&value)) {
        return std::isfinite(*number) ? NumberText(*number) : defaultValue;
    }
    if (const auto* date = std::get_if<DateTime>(&value)) {
        // A date without a time shows none.
        return FormatDate(*date, "", date->hour != 0 || date->minute != 0 || date->second != 0);
    }
    return defaultValue;
}

void CollectionAddKey(IDCollection& collection, const Text& key) { collection.Add(key); }

void CollectionRemoveKey(IDCollection& collection, const Text& key) { collection.Remove(key); }

void CollectionAddAll(IDCollection& target, const IDCollection& source) {
    for (const Text& id : source) target.Add(id);
}

void CollectionRemoveAll(IDCollection& target, const IDCollection& source) {
    if (&target == &source) {
        target.Clear();
        return;
    }
    for (const Text& id : source) target.Remove(id);
}

bool CollectionHasKey(const IDCollection& collection, const Text& key) { return collection.Contains(key); }
bool CollectionHasKey(KeyedCollection* collection, const Text& key) { return collection && collection->HasKey(key); }

Text FormatLocalDateTime(const DateTime& date, const char* localeName) { return FormatDate(date, localeName, true); }

} // namespace dax::modGeneric
