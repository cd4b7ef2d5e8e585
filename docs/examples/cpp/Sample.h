// What both C++ samples need: counted pointers, automation texts, errors in words, lines in UTF-8.
#pragma once

#ifndef UNICODE
#define UNICODE
#endif
#include <windows.h>

#include <initguid.h> // defines the identifiers that the next header declares

#include <DAXControls.h> // made from the type library; lies in the folder "include" of the package

#include <ocidl.h>
#include <shellapi.h>

#include <string>
#include <utility>

namespace sample {

// What went wrong, in words.
struct Failure {
    std::wstring text;
};

// A BSTR that frees itself.
class Text {
public:
    Text() = default;
    explicit Text(const std::wstring& text) : value(SysAllocString(text.c_str())) {}
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { SysFreeString(value); }
    operator BSTR() const { return value; }
    BSTR* Out() { return &value; }
    std::wstring Wide() const { return value ? std::wstring(value, SysStringLen(value)) : std::wstring(); }

private:
    BSTR value = nullptr;
};

template <typename Interface>
class Pointer {
public:
    Pointer() = default;
    Pointer(const Pointer&) = delete;
    Pointer& operator=(const Pointer&) = delete;
    Pointer(Pointer&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~Pointer() {
        if (object) object->Release();
    }
    Interface* operator->() const { return object; }
    Interface* Get() const { return object; }
    Interface** Out() { return &object; }
    void** OutAny() { return reinterpret_cast<void**>(&object); }
    void Reset() {
        if (Interface* former = std::exchange(object, nullptr)) former->Release();
    }
    explicit operator bool() const { return object != nullptr; }

private:
    Interface* object = nullptr;
};

// Throws a failure, with the description that the object has left if there is one.
inline void Check(HRESULT result, const wchar_t* what) {
    if (SUCCEEDED(result)) return;
    wchar_t number[16];
    wsprintfW(number, L"%08lX", static_cast<unsigned long>(result));
    Text description;
    Pointer<IErrorInfo> left;
    if (GetErrorInfo(0, left.Out()) == S_OK) left->GetDescription(description.Out());
    throw Failure{std::wstring(what) + L" has failed: " + number + L" " + description.Wide()};
}

inline void Print(const std::wstring& line) {
    const std::wstring text = line + L"\n";
    std::string utf8(text.size() * 3, '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), utf8.data(),
                                           static_cast<int>(utf8.size()), nullptr, nullptr);
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), utf8.data(), static_cast<DWORD>(length), &written, nullptr);
}

// The first argument of the program.
inline std::wstring FirstArgument() {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    std::wstring first = words && count > 1 ? words[1] : L"";
    LocalFree(words);
    return first;
}

} // namespace sample
