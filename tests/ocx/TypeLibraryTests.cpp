// What compilers of hosts see: the type libraries inside the files, member by member, against checked-in snapshots.
#include "OcxHost.h"

#include "support/TestDatabases.h"

#include <fstream>
#include <sstream>

namespace dax::test {

namespace {

class TypeLibraryTest : public OcxTest {};

// The name and the help of a type or one of its members; or of a library or one of its types.
template <typename Described, typename Number>
std::pair<std::string, std::string> NameOf(Described* described, Number number) {
    Bstr name, help;
    described->GetDocumentation(number, name.Out(), help.Out(), nullptr, nullptr);
    return {ToUtf8(FromBstr(name.Get())), ToUtf8(FromBstr(help.Get()))};
}

std::string GuidText(const GUID& guid) {
    wchar_t text[40];
    StringFromGUID2(guid, text, 40);
    return ToUtf8(FromWide(text));
}

std::string TypeName(ITypeInfo* type, const TYPEDESC& description) {
    if (description.vt == VT_PTR) return TypeName(type, *description.lptdesc) + "*";
    if (description.vt != VT_USERDEFINED) return "vt" + std::to_string(description.vt);
    ComPtr<ITypeInfo> referred;
    if (FAILED(type->GetRefTypeInfo(description.hreftype, referred.Out()))) return "?";
    return NameOf(referred.Get(), MEMBERID_NIL).first;
}

void WriteFunction(std::ostream& out, ITypeInfo* type, const FUNCDESC& function) {
    // The members of IUnknown and IDispatch, where the system lists them, are not ours.
    if (function.memid >= 0x60000000 && function.memid < 0x60020000) return;
    Bstr names[16];
    BSTR received[16] = {};
    UINT count = 0;
    type->GetNames(function.memid, received, 16, &count);
    for (UINT i = 0; i < count; ++i) *names[i].Out() = received[i];
    // Compiled hosts call by the place in the table of functions, whatever the size of a pointer.
    out << "  member " << function.memid << " slot " << function.oVft / static_cast<SHORT>(sizeof(void*)) << " flags "
        << function.wFuncFlags << " kind " << function.invkind << ' ' << TypeName(type, function.elemdescFunc.tdesc)
        << ' ' << ToUtf8(FromBstr(names[0].Get())) << '(';
    for (UINT i = 0; i < static_cast<UINT>(function.cParams); ++i) {
        const ELEMDESC& argument = function.lprgelemdescParam[i];
        const PARAMDESC& description = argument.paramdesc;
        out << (i ? ", " : "") << TypeName(type, argument.tdesc);
        if (i + 1 < count) out << ' ' << ToUtf8(FromBstr(names[i + 1].Get()));
        out << " flags " << description.wParamFlags;
        if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) // what a compiler puts in for an argument that is left out
            out << " default " << ToUtf8(FromWide(DescribeValue(description.pparamdescex->varDefaultValue)));
    }
    out << ") \"" << NameOf(type, function.memid).second << "\"\n";
}

void WriteType(std::ostream& out, ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    type->GetTypeAttr(&attributes);
    const auto [name, help] = NameOf(type, MEMBERID_NIL);
    out << "type " << attributes->typekind << ' ' << name << ' ' << GuidText(attributes->guid) << " flags "
        << attributes->wTypeFlags << " \"" << help << "\"\n";
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* variable = nullptr;
        type->GetVarDesc(i, &variable);
        out << "  value " << NameOf(type, variable->memid).first;
        if (variable->varkind == VAR_CONST) out << " = " << variable->lpvarValue->lVal;
        out << '\n';
        type->ReleaseVarDesc(variable);
    }
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        type->GetFuncDesc(i, &function);
        WriteFunction(out, type, *function);
        type->ReleaseFuncDesc(function);
    }
    for (UINT i = 0; attributes->typekind == TKIND_COCLASS && i < attributes->cImplTypes; ++i) {
        HREFTYPE reference = 0;
        INT flags = 0;
        ComPtr<ITypeInfo> implemented;
        type->GetRefTypeOfImplType(i, &reference);
        type->GetImplTypeFlags(i, &flags);
        type->GetRefTypeInfo(reference, implemented.Out());
        out << "  implements " << NameOf(implemented.Get(), MEMBERID_NIL).first << " flags " << flags << '\n';
    }
    type->ReleaseTypeAttr(attributes);
}

// One line for each type, member and argument, in the library's order.
std::string Written(ITypeLib* library) {
    std::ostringstream out;
    TLIBATTR* attributes = nullptr;
    library->GetLibAttr(&attributes);
    out << "library " << GuidText(attributes->guid) << ' ' << attributes->wMajorVerNum << '.'
        << attributes->wMinorVerNum << " \"" << NameOf(library, -1).second << "\"\n";
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> type;
        library->GetTypeInfo(i, type.Out());
        WriteType(out, type.Get());
    }
    return out.str();
}

} // namespace

TEST_F(TypeLibraryTest, IsTheOneThatHostsWereCompiledAgainst) {
    for (const auto& [file, snapshot] : {std::pair{L"daxControls33.ocx", L"DAXControls.snapshot.txt"},
                                         std::pair{L"contentObjects.dll", L"ContentObjects.snapshot.txt"}}) {
        ComPtr<ITypeLib> library;
        ASSERT_HRESULT_SUCCEEDED(LoadTypeLibEx((BinFolder() + file).c_str(), REGKIND_NONE, library.Out()));
        const std::string actual = Written(library.Get());
        if (actual == ReadFile(DataFile(snapshot))) continue;
        const auto path = DataFile(std::wstring(snapshot) + L".actual");
        std::ofstream(path, std::ios::binary) << actual;
        ADD_FAILURE() << "the type library has changed; what it is now stands in " << path;
    }
}

} // namespace dax::test
