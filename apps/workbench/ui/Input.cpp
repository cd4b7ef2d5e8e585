#include "ui/Input.h"

#include "base/Secrets.h"
#include "com/Variant.h"
#include "data/CatalogConnection.h"

#include <algorithm>
#include <map>
#include <windows.h>

namespace dax::workbench {

namespace {

bool SameKey(const std::wstring& a, const std::wstring& b) {
    return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

std::wstring AbsolutePath(const std::wstring& path) {
    std::wstring full(32768, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.empty() ? path : full;
}

std::wstring Stem(const std::wstring& path) {
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    const size_t dot = name.rfind(L'.');
    return dot == std::wstring::npos || dot == 0 ? name : name.substr(0, dot);
}

bool HasExtension(const std::wstring& path, const wchar_t* extension) {
    const size_t dot = path.rfind(L'.');
    return dot != std::wstring::npos && SameKey(path.substr(dot), extension);
}

// One value from `position`, which moves after the semicolon that ends it; quotes and braces hold semicolons.
std::wstring TakeValue(const std::wstring& text, size_t& position) {
    while (position < text.size() && text[position] == L' ') ++position;
    std::wstring value;
    const wchar_t first = position < text.size() ? text[position] : L'\0';
    const wchar_t closing = first == L'{' ? L'}' : first == L'"' || first == L'\'' ? first : L'\0';
    if (closing) {
        for (++position; position < text.size(); ++position) {
            if (text[position] == closing && (position + 1 >= text.size() || text[++position] != closing)) break;
            value += text[position];
        }
    } else {
        const size_t end = std::min(text.find(L';', position), text.size());
        value = Trim(text.substr(position, end - position));
    }
    position = std::min(text.find(L';', position), text.size());
    if (position < text.size()) ++position;
    return value;
}

// The complete connection strings for those with dots.
std::map<std::wstring, std::wstring>& Hidden() {
    static std::map<std::wstring, std::wstring> hidden;
    return hidden;
}

} // namespace

std::wstring Trim(const std::wstring& text) {
    const size_t first = text.find_first_not_of(L" \t\r\n");
    if (first == std::wstring::npos) return {};
    return text.substr(first, text.find_last_not_of(L" \t\r\n") - first + 1);
}

bool IsFile(const std::wstring& text) {
    if (text.empty()) return false;
    return text.find(L'=') == std::wstring::npos || GetFileAttributesW(text.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring ConnectionFor(const std::wstring& text) {
    const auto hidden = Hidden().find(text);
    const std::wstring& whole = hidden == Hidden().end() ? text : hidden->second;
    // A URL is no path; opening it fails with an error that says what to give instead.
    if (!IsFile(whole) || whole.find(L"://") != std::wstring::npos) return whole;
    const std::wstring path = AbsolutePath(whole);
    if (HasExtension(path, L".mdb") || HasExtension(path, L".accdb"))
        return L"Provider=Microsoft.ACE.OLEDB.12.0;Data Source=\"" + path + L"\"";
    return path;
}

std::wstring HidePassword(const std::wstring& connection) {
    if (connection.empty() || GetFileAttributesW(connection.c_str()) != INVALID_FILE_ATTRIBUTES) return connection;
    const Text masked = MaskPasswords(FromWide(connection));
    const std::wstring shown(masked.begin(), masked.end());
    if (shown != connection) Hidden()[shown] = connection;
    return shown;
}

std::wstring CatalogOn(const std::wstring& connector, const std::wstring& catalog, const std::wstring& login,
                       const std::wstring& password) {
    const Text made = CatalogConnection(FromWide(connector), FromWide(catalog), FromWide(login), FromWide(password));
    return {made.begin(), made.end()};
}

std::wstring ValueOf(const std::wstring& connection, const wchar_t* keys) {
    for (const wchar_t* key = keys; *key;) {
        const wchar_t* end = key;
        while (*end && *end != L'|') ++end;
        const std::wstring requested(key, end);
        for (size_t position = 0; position < connection.size();) {
            const size_t equals = connection.find(L'=', position);
            if (equals == std::wstring::npos) break;
            const std::wstring found = Trim(connection.substr(position, equals - position));
            position = equals + 1;
            const std::wstring value = TakeValue(connection, position);
            if (SameKey(found, requested)) return value;
        }
        key = *end ? end + 1 : end;
    }
    return {};
}

std::wstring FileOf(const std::wstring& text) {
    if (text.empty()) return {};
    return IsFile(text) ? AbsolutePath(text) : ValueOf(text, L"Data Source|DBQ|Database");
}

std::wstring SourceOf(const std::wstring& text) {
    if (text.empty()) return {};
    return IsFile(text) ? L"this machine" : ValueOf(text, L"Data Source|Server|Servername|Address|DSN");
}

std::wstring CatalogOf(const std::wstring& text) {
    if (text.empty()) return {};
    return IsFile(text) ? Stem(AbsolutePath(text)) : ValueOf(text, L"Initial Catalog|Database");
}

} // namespace dax::workbench
