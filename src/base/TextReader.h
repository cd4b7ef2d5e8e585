// Reads words and numbers off the front of a text. Blanks, digits and letters are those of ASCII, whatever the locale.
#pragma once

#include "base/Text.h"

namespace dax {

class TextReader {
public:
    explicit TextReader(TextView text) : text(text) {}

    static bool IsBlank(char16_t unit) { return unit == u' ' || (unit >= u'\t' && unit <= u'\r'); }
    static bool IsDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
    // A letter of any other script counts as one, too.
    static bool IsWordUnit(char16_t unit) {
        return IsDigit(unit) || unit == u'_' || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
               unit >= 0x80;
    }

    size_t Position() const { return position; }
    bool AtEnd() const { return position == text.size(); }
    void SkipBlanks() {
        while (!AtEnd() && IsBlank(text[position])) ++position;
    }
    // These return false, and read nothing, when something else follows.
    bool Unit(char16_t unit) {
        if (AtEnd() || text[position] != unit) return false;
        ++position;
        return true;
    }
    // After blanks; a longer word that only begins like it does not count.
    bool Word(TextView word) {
        SkipBlanks();
        const size_t after = position + word.size();
        if (!EqualNoCase(text.substr(position, word.size()), word)) return false;
        if (after < text.size() && IsWordUnit(text[after])) return false;
        position = after;
        return true;
    }
    TextView Digits() {
        const size_t first = position;
        while (!AtEnd() && IsDigit(text[position])) ++position;
        return text.substr(first, position - first);
    }
    // At most nine digits fit the number.
    bool Number(int& number, size_t minDigits, size_t maxDigits) {
        const TextView digits = Digits();
        if (digits.size() < minDigits || digits.size() > maxDigits) return false;
        number = 0;
        for (const char16_t digit : digits) number = number * 10 + (digit - u'0');
        return true;
    }

private:
    TextView text;
    size_t position = 0;
};

} // namespace dax
