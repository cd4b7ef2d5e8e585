#ifndef _WIN32

#include "base/CaseMapping.h"

#include <algorithm>
#include <cwctype>
#include <iterator>

#include <locale.h>

namespace dax {

namespace {

// The C library's letters, those of all scripts: this locale is always there and holds nothing of a country.
wint_t Changed(wint_t letter, wint_t (*change)(wint_t, locale_t)) {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale ? change(letter, locale) : letter;
}

char32_t Lower(char32_t letter) {
    const wint_t lower = Changed(static_cast<wint_t>(letter), towlower_l);
    return Changed(lower, towupper_l) == letter ? static_cast<char32_t>(lower) : letter;
}

struct Ligature {
    char16_t unit;
    TextView letters;
};

constexpr Ligature ligatures[] = {
    {u'Æ', u"AE"},
    {u'Þ', u"TH"},
    {u'ß', u"ss"},
    {u'æ', u"ae"},
    {u'þ', u"th"},
    {u'Ĳ', u"IJ"},
    {u'ĳ', u"ij"},
    {u'Œ', u"OE"},
    {u'œ', u"oe"},
    {u'Ǆ', u"DŽ"},
    {u'ǅ', u"Dž"},
    {u'ǆ', u"dž"},
    {u'Ǉ', u"LJ"},
    {u'ǈ', u"Lj"},
    {u'ǉ', u"lj"},
    {u'Ǌ', u"NJ"},
    {u'ǋ', u"Nj"},
    {u'ǌ', u"nj"},
    {u'Ǣ', u"ĀĒ"},
    {u'ǣ', u"āē"},
    {u'Ǳ', u"DZ"},
    {u'ǲ', u"Dz"},
    {u'ǳ', u"dz"},
    {u'Ǽ', u"ÁÉ"},
    {u'ǽ', u"áé"},
    {0x05F0, u"\u05D5\u05D5"},
    {0x05F1, u"\u05D5\u05D9"},
    {0x05F2, u"\u05D9\u05D9"},
    {0xFB00, u"ff"},
    {0xFB01, u"fi"},
    {0xFB02, u"fl"},
    {0xFB03, u"ffi"},
    {0xFB04, u"ffl"},
    {0xFB05, u"ſt"},
    {0xFB06, u"st"},
};

} // namespace

Text LowerLetters(TextView text) {
    Text lower(text);
    for (size_t i = 0; i < lower.size();) i += WriteCodePoint(Lower(CodePointAt(lower, i)), lower.data() + i);
    return lower;
}

Text ExpandLigatures(TextView text) {
    Text expanded;
    for (const char16_t unit : text) {
        const auto row = std::lower_bound(std::begin(ligatures), std::end(ligatures), unit,
                                          [](const Ligature& each, char16_t other) { return each.unit < other; });
        if (row != std::end(ligatures) && row->unit == unit)
            expanded += row->letters;
        else
            expanded.push_back(unit);
    }
    return expanded;
}

} // namespace dax

#endif
