#include "ScriptText.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <cwctype>

namespace dax {

namespace {

std::wstring Lower(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t unit) { return static_cast<wchar_t>(std::towlower(static_cast<wint_t>(unit))); });
    return text;
}

bool IsNameUnit(wchar_t unit) { return std::iswalnum(static_cast<wint_t>(unit)) != 0 || unit == L'_'; }

size_t SkipBlanks(const std::wstring& text, size_t at) {
    return std::min(text.find_first_not_of(L" \t", at), text.size());
}

} // namespace

ScriptText::ScriptText(const std::wstring& text) {
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find(L'\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
}

std::wstring ScriptText::Line(size_t number) const {
    if (number >= lines.size()) return {};
    const std::wstring& line = lines[number];
    const size_t first = line.find_first_not_of(L" \t\r");
    return first == std::wstring::npos ? std::wstring()
                                       : line.substr(first, line.find_last_not_of(L" \t\r") - first + 1);
}

std::optional<ScriptText::Procedure> ScriptText::FindProcedure(const std::wstring& name) const {
    const std::wstring requested = Lower(name);
    for (size_t number = 0; number < lines.size(); ++number) {
        const std::wstring line = Lower(Line(number));
        for (const std::wstring kind : {L"sub", L"function"}) {
            for (size_t at = 0; (at = line.find(kind, at)) != std::wstring::npos; at += kind.size()) {
                const size_t begin = SkipBlanks(line, at + kind.size());
                const bool isWord = (at == 0 || !IsNameUnit(line[at - 1])) && begin > at + kind.size();
                const size_t end = begin + requested.size();
                if (!isWord || line.compare(begin, requested.size(), requested) != 0) continue;
                if (end < line.size() && IsNameUnit(line[end])) continue;
                const size_t open = SkipBlanks(line, end), close = std::min(line.find(L')', open), line.size());
                if (open >= line.size() || line[open] != L'(') return Procedure{number, 0};
                const bool isEmpty = SkipBlanks(line, open + 1) == close;
                const auto commas = std::count(line.begin() + static_cast<std::ptrdiff_t>(open),
                                               line.begin() + static_cast<std::ptrdiff_t>(close), L',');
                return Procedure{number, isEmpty ? 0 : static_cast<size_t>(commas) + 1};
            }
        }
    }
    return {};
}

std::wstring ScriptText::ClassNameIn(size_t number) const {
    const std::wstring line = Line(number), lower = Lower(line);
    for (const std::wstring call : {L"createobject", L"activexobject"}) {
        size_t at = lower.find(call);
        if (at == std::wstring::npos) continue;
        at = SkipBlanks(line, at + call.size());
        if (at < line.size() && line[at] == L'(') at = SkipBlanks(line, at + 1);
        if (at >= line.size() || (line[at] != L'"' && line[at] != L'\'')) continue;
        const size_t end = line.find(line[at], at + 1);
        if (end != std::wstring::npos) return line.substr(at + 1, end - at - 1);
    }
    return {};
}

std::wstring DescribeMissingClass(const std::wstring& name, long result) {
    const std::wstring shown = L"'" + name + L"'";
    CLSID clsid{};
    if (FAILED(CLSIDFromProgID(name.c_str(), &clsid)))
        return L"There is no class " + shown +
               L". Check the name, or register its library (register.cmd registers the controls).";
    if (result == E_NOINTERFACE) return L"The class " + shown + L" cannot be used in scripts.";
    return L"The class " + shown +
           L" is registered, but no object of it can be made. Check that its library is where it was registered, and "
           L"has the same bitness as this program (" +
           (sizeof(void*) == 8 ? L"64" : L"32") + L"-bit).";
}

} // namespace dax
