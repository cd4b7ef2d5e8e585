#include "base/TextComparison.h"

#include "base/CaseMapping.h"

#include <algorithm>

namespace dax {

namespace {

bool IsAscii(TextView text) {
    return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

// Half-width kana from U+FF66 on, in the order of their numbers.
constexpr char16_t firstNarrow = 0xFF66, lastNarrow = 0xFF9D;
constexpr TextView wide =
    u"をぁぃぅぇぉゃゅょっーあいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめも"
    u"やゆよらりるれろわん";
static_assert(wide.size() == lastNarrow - firstNarrow + 1);

// Width and kind of kana do not count, and the sigma at the end of a word is one like the others.
char16_t Canonical(char16_t unit) {
    if (unit < 0x3C2) return unit;
    if (unit == u'ς') return u'σ';
    if (unit == 0x3000) return u' ';
    if (unit >= 0x30A1 && unit <= 0x30F6) return static_cast<char16_t>(unit - 0x60);
    if (unit >= 0xFF01 && unit <= 0xFF5E) return static_cast<char16_t>(unit - 0xFEE0);
    return unit >= firstNarrow && unit <= lastNarrow ? wide[unit - firstNarrow] : unit;
}

} // namespace

Text LowerCase(TextView text) { return IsAscii(text) ? LowerAscii(text) : LowerLetters(text); }

// Not the system's own search: it ignores characters that are not in its tables, and
// under Wine its time grows with the square of the text.
Text FoldCase(TextView text) {
    if (IsAscii(text)) return LowerAscii(text);
    const Text lower = LowerLetters(ExpandLigatures(ComposeMarks(text)));
    Text folded;
    for (const char16_t unit : lower) {
        if (unit == u'ẞ') // has no small letter that leads back to it
            folded += u"ss";
        else if (unit == u'İ') // likewise
            folded += u"i\u0307";
        else
            folded.push_back(Canonical(unit));
    }
    return folded;
}

} // namespace dax
