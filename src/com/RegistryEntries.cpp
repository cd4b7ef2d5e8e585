#include "com/RegistryEntries.h"

#include "com/ComError.h"
#include "com/Library.h"
#include "com/Variant.h"

namespace dax {

namespace {

constexpr wchar_t ControlCategory[] = L"{40FC6ED4-2438-11CF-A3DB-080036F12502}";
constexpr wchar_t ProgrammableCategory[] = L"{40FC6ED5-2438-11CF-A3DB-080036F12502}";
constexpr wchar_t AutomationMarshaler[] = L"{00020424-0000-0000-C000-000000000046}";
constexpr wchar_t DispatchMarshaler[] = L"{00020420-0000-0000-C000-000000000046}";

std::wstring VersionText(unsigned short major, unsigned short minor) {
    return std::to_wstring(major) + L"." + std::to_wstring(minor);
}

void AddClass(std::vector<RegistryEntry>& entries, const ClassEntry& entry, const std::wstring& path) {
    const Library& library = ThisLibrary();
    const std::wstring guid = GuidText(*entry.clsid), key = L"CLSID\\" + guid, progID = library.ProgID(entry);
    const auto add = [&entries](const std::wstring& place, const std::wstring& value, const wchar_t* name = L"") {
        entries.push_back({place, name, value});
    };
    add(key, entry.description);
    add(key + L"\\InprocServer32", path);
    add(key + L"\\InprocServer32", L"Apartment", L"ThreadingModel");
    add(key + L"\\ProgID", progID);
    add(key + L"\\VersionIndependentProgID", progID);
    add(key + L"\\TypeLib", GuidText(*library.id));
    add(key + L"\\Version", VersionText(library.major, library.minor));
    add(key + L"\\Programmable", L"");
    add(key + L"\\Implemented Categories\\" + ProgrammableCategory, L"");
    if (entry.toolboxBitmap != 0) {
        add(key + L"\\Control", L"");
        add(key + L"\\MiscStatus", L"0");
        add(key + L"\\MiscStatus\\1", std::to_wstring(ControlStatus));
        add(key + L"\\AuxUserType\\2", entry.name); // as IOleObject::GetUserType says them
        add(key + L"\\AuxUserType\\3", library.name);
        for (const ControlVerb& verb : ControlVerbs)
            add(key + L"\\Verb\\" + std::to_wstring(verb.number),
                verb.name + (L"," + std::to_wstring(verb.menuFlags)) + L"," + std::to_wstring(verb.attributes));
        add(key + L"\\ToolboxBitmap32", path + L", " + std::to_wstring(entry.toolboxBitmap));
        add(key + L"\\Implemented Categories\\" + ControlCategory, L"");
    }
    add(progID, entry.description);
    add(progID + L"\\CLSID", guid);
}

std::wstring NameOf(const ComPtr<ITypeLib>& types, int index) {
    Bstr name;
    Check(types->GetDocumentation(index, name.Out(), nullptr, nullptr, nullptr));
    return std::wstring(name.Wide());
}

void AddInterface(std::vector<RegistryEntry>& entries, const ComPtr<ITypeLib>& types, UINT index) {
    ComPtr<ITypeInfo> info;
    TYPEATTR* attributes = nullptr;
    Check(types->GetTypeInfo(index, info.Out()));
    Check(info->GetTypeAttr(&attributes));
    const std::wstring key = L"Interface\\" + GuidText(attributes->guid);
    const bool isDispatch = attributes->typekind == TKIND_DISPATCH;
    const bool isDual = (attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0;
    const bool isMarshaled = isDispatch || (attributes->typekind == TKIND_INTERFACE &&
                                            (attributes->wTypeFlags & TYPEFLAG_FOLEAUTOMATION) != 0);
    info->ReleaseTypeAttr(attributes);
    if (!isMarshaled) return;
    const wchar_t* const marshaler = isDispatch && !isDual ? DispatchMarshaler : AutomationMarshaler;
    const Library& library = ThisLibrary();
    entries.push_back({key, L"", NameOf(types, static_cast<int>(index))});
    entries.push_back({key + L"\\ProxyStubClsid", L"", marshaler});
    entries.push_back({key + L"\\ProxyStubClsid32", L"", marshaler});
    entries.push_back({key + L"\\TypeLib", L"", GuidText(*library.id)});
    entries.push_back({key + L"\\TypeLib", L"Version", VersionText(library.major, library.minor)});
}

} // namespace

std::wstring GuidText(const GUID& guid) {
    wchar_t text[40];
    return std::wstring(text, static_cast<size_t>(StringFromGUID2(guid, text, 40) - 1));
}

std::vector<RegistryEntry> ClassEntries(const std::wstring& path) {
    std::vector<RegistryEntry> entries;
    for (const ClassEntry& entry : ThisLibrary().classes) AddClass(entries, entry, path);
    return entries;
}

std::vector<RegistryEntry> TypeEntries(const std::wstring& path) {
    const Library& library = ThisLibrary();
    ComPtr<ITypeLib> types;
    Check(LoadTypeLibEx(Module::Path().c_str(), REGKIND_NONE, types.Out()));
    Bstr description;
    Check(types->GetDocumentation(-1, nullptr, description.Out(), nullptr, nullptr));
    TLIBATTR* attributes = nullptr;
    const std::wstring text(description.Wide());
    Check(types->GetLibAttr(&attributes));
    const unsigned flags = attributes->wLibFlags;
    types->ReleaseTLibAttr(attributes);

    const std::wstring key = L"TypeLib\\" + GuidText(*library.id) + L"\\" + VersionText(library.major, library.minor);
    std::vector<RegistryEntry> entries{{key, L"", text},
                                       {key + (sizeof(void*) == 8 ? L"\\0\\win64" : L"\\0\\win32"), L"", path},
                                       {key + L"\\FLAGS", L"", std::to_wstring(flags)},
                                       {key + L"\\HELPDIR", L"", path.substr(0, path.find_last_of(L"\\/") + 1)}};
    for (UINT i = 0; i < types->GetTypeInfoCount(); ++i) AddInterface(entries, types, i);
    return entries;
}

} // namespace dax
