// <windows.h> without the macros that rename our own members, and texts for it.
#pragma once

#include "base/Text.h"

#include <windows.h>

#undef DrawText // else Surface would have another member here than in the portable files

namespace dax {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* Wide(const Text& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }
// Length and pointer, without a terminating zero.
inline const wchar_t* Units(TextView text) {
    return reinterpret_cast<const wchar_t*>(text.empty() ? u"" : text.data());
}
inline Text FromWide(const wchar_t* text) { return reinterpret_cast<const char16_t*>(text); }

// The module (program or control library) that this code is part of: owner of its window classes.
HINSTANCE ThisModule();

} // namespace dax
