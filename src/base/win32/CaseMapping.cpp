#include "base/CaseMapping.h"

#include <windows.h>

#include <limits>

namespace dax {

namespace {

const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

// What a function of the system makes of a text; it takes a source and a buffer, and returns the length of the result.
template <typename Function>
Text Mapped(TextView text, Function&& function) {
    if (text.empty()) return {};
    if (text.size() > static_cast<size_t>(std::numeric_limits<int>::max() / 4)) return Text(text);
    const int length = static_cast<int>(text.size());
    Text mapped(text.size() * 2 + 8, u'\0'); // nearly always enough
    for (int tries = 0; tries < 2; ++tries) {
        const int made = function(Wide(text.data()), length, reinterpret_cast<wchar_t*>(mapped.data()),
                                  static_cast<int>(mapped.size()));
        if (made > 0) {
            mapped.resize(static_cast<size_t>(made));
            return mapped;
        }
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) break;
        mapped.resize(text.size() * 4);
    }
    return Text(text); // what the system cannot read, such as half a pair, stays as it is
}

Text Folded(TextView text, DWORD flags) {
    return Mapped(text, [flags](const wchar_t* from, int length, wchar_t* to, int room) {
        return FoldStringW(flags, from, length, to, room);
    });
}

} // namespace

Text LowerLetters(TextView text) {
    return Mapped(text, [](const wchar_t* from, int length, wchar_t* to, int room) {
        return LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, from, length, to, room, nullptr, nullptr, 0);
    });
}

Text ComposeMarks(TextView text) { return Folded(text, MAP_PRECOMPOSED); }

Text ExpandLigatures(TextView text) { return Folded(text, MAP_EXPAND_LIGATURES); }

} // namespace dax
