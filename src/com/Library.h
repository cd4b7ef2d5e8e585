// What one COM library (a DLL) consists of: its classes, its type library, its lifetime.
#pragma once

#include "com/ComPtr.h"

#include <span>
#include <string>

namespace dax {

struct ClassEntry {
    const CLSID* clsid;
    const IID* defaultInterface;
    const IID* events; // null: the class raises none
    const wchar_t* name;
    const wchar_t* description;
    IUnknown* (*create)(const ClassEntry& entry); // returns one reference; may throw
    int toolboxBitmap;                            // number of a resource; 0: no visible control
};

struct Library {
    const GUID* id;
    const wchar_t* name; // ProgIDs are NAME.CLASS
    unsigned short major, minor;
    std::span<const ClassEntry> classes;
    long (*liveWindows)(); // windows that still need the DLL's code; null: it has none

    std::wstring ProgID(const ClassEntry& entry) const { return std::wstring(name) + L"." + entry.name; }
};

// Each DLL defines its own.
const Library& ThisLibrary();

// The status bits of a visible control: it draws again on resize, is active whenever visible, needs its site first.
inline constexpr DWORD ControlStatus = OLEMISC_RECOMPOSEONRESIZE | OLEMISC_CANTLINKINSIDE | OLEMISC_INSIDEOUT |
                                       OLEMISC_ACTIVATEWHENVISIBLE | OLEMISC_SETCLIENTSITEFIRST;

// The verbs of a visible control, by number.
struct ControlVerb {
    LONG number;
    const wchar_t* name;
    DWORD menuFlags, attributes;
};
inline constexpr ControlVerb ControlVerbs[] = {{OLEIVERB_PRIMARY, L"&Activate", 0, OLEVERBATTRIB_ONCONTAINERMENU}};

namespace Module {

HINSTANCE Instance();
std::wstring Path(); // of the DLL, whatever process it runs in

// Counts objects and locks of class factories; while there is one, the DLL stays loaded.
void Lock();
void Unlock();
bool IsUsed();

// From the type libraries inside the DLL, registered or not: its own, and that of the objects of another library which
// it returns. Throws ComError.
ComPtr<ITypeInfo> TypeInfo(const GUID& guid);

} // namespace Module

// Keeps the DLL loaded as long as the object that has it as a member.
class ModuleLock {
public:
    ModuleLock() { Module::Lock(); }
    ~ModuleLock() { Module::Unlock(); }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

} // namespace dax
