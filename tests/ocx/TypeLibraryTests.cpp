// What compilers of hosts see: the type libraries inside the files, member by member, against checked-in snapshots.
#include "OcxHost.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace dax::test {

namespace {

class TypeLibraryTest : public OcxTest {};

std::string Utf8(const Bstr& text) { return ToUtf8(FromBstr(text.Get())); }

std::string GuidText(const GUID& guid) {
    wchar_t text[40];
    StringFromGUID2(guid, text, 40);
    return ToUtf8(FromWide(std::wstring_view(text)));
}

// One line for each type, member and argument, in the library's order.
class Walker {
public:
    explicit Walker(ITypeLib* library) : library(library) {}

    std::string Walk() {
        TLIBATTR* attributes = nullptr;
        library->GetLibAttr(&attributes);
        Bstr help;
        library->GetDocumentation(MEMBERID_NIL, nullptr, help.Out(), nullptr, nullptr);
        out << "library " << GuidText(attributes->guid) << ' ' << attributes->wMajorVerNum << '.'
            << attributes->wMinorVerNum << " \"" << Utf8(help) << "\"\n";
        library->ReleaseTLibAttr(attributes);
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            ComPtr<ITypeInfo> type;
            library->GetTypeInfo(i, type.Out());
            WalkType(type.Get());
        }
        return out.str();
    }

private:
    static std::string Name(ITypeInfo* type, MEMBERID member, std::string* help = nullptr) {
        Bstr name, text;
        type->GetDocumentation(member, name.Out(), text.Out(), nullptr, nullptr);
        if (help) *help = Utf8(text);
        return Utf8(name);
    }

    // The value that a compiler puts in for an argument that is left out.
    static std::string Default(const PARAMDESC& description) {
        if (!(description.wParamFlags & PARAMFLAG_FHASDEFAULT)) return {};
        return " default " + ToUtf8(FromWide(DescribeValue(description.pparamdescex->varDefaultValue)));
    }

    static std::string TypeName(ITypeInfo* type, const TYPEDESC& description) {
        if (description.vt == VT_PTR) return TypeName(type, *description.lptdesc) + "*";
        if (description.vt != VT_USERDEFINED) return "vt" + std::to_string(description.vt);
        ComPtr<ITypeInfo> referred;
        if (FAILED(type->GetRefTypeInfo(description.hreftype, referred.Out()))) return "?";
        return Name(referred.Get(), MEMBERID_NIL);
    }

    void WalkType(ITypeInfo* type) {
        TYPEATTR* attributes = nullptr;
        type->GetTypeAttr(&attributes);
        std::string help;
        const std::string name = Name(type, MEMBERID_NIL, &help);
        out << "type " << attributes->typekind << ' ' << name << ' ' << GuidText(attributes->guid) << " flags "
            << attributes->wTypeFlags << " \"" << help << "\"\n";
        for (UINT i = 0; i < attributes->cVars; ++i) {
            VARDESC* variable = nullptr;
            type->GetVarDesc(i, &variable);
            out << "  value " << Name(type, variable->memid);
            if (variable->varkind == VAR_CONST) out << " = " << variable->lpvarValue->lVal;
            out << '\n';
            type->ReleaseVarDesc(variable);
        }
        for (UINT i = 0; i < attributes->cFuncs; ++i) WalkFunction(type, i);
        for (UINT i = 0; attributes->typekind == TKIND_COCLASS && i < attributes->cImplTypes; ++i) {
            HREFTYPE reference = 0;
            INT flags = 0;
            ComPtr<ITypeInfo> implemented;
            type->GetRefTypeOfImplType(i, &reference);
            type->GetImplTypeFlags(i, &flags);
            type->GetRefTypeInfo(reference, implemented.Out());
            out << "  implements " << Name(implemented.Get(), MEMBERID_NIL) << " flags " << flags << '\n';
        }
        type->ReleaseTypeAttr(attributes);
    }

    void WalkFunction(ITypeInfo* type, UINT index) {
        FUNCDESC* function = nullptr;
        type->GetFuncDesc(index, &function);
        // The members of IUnknown and IDispatch, where the system lists them, are not ours.
        if (function->memid >= 0x60000000 && function->memid < 0x60020000) return type->ReleaseFuncDesc(function);
        std::string help;
        Name(type, function->memid, &help);
        BSTR names[16] = {};
        UINT count = 0;
        type->GetNames(function->memid, names, 16, &count);
        std::vector<std::string> words;
        for (UINT i = 0; i < count; ++i) {
            words.push_back(ToUtf8(FromBstr(names[i])));
            SysFreeString(names[i]);
        }
        // Compiled hosts call by the place in the table of functions, whatever the size of a pointer.
        out << "  member " << function->memid << " slot " << function->oVft / static_cast<SHORT>(sizeof(void*))
            << " flags " << function->wFuncFlags << " kind " << function->invkind << ' '
            << TypeName(type, function->elemdescFunc.tdesc) << ' ' << words[0];
        for (SHORT i = 0; i < function->cParams; ++i) {
            const ELEMDESC& argument = function->lprgelemdescParam[i];
            out << (i ? ", " : "(") << TypeName(type, argument.tdesc);
            if (static_cast<size_t>(i) + 1 < words.size()) out << ' ' << words[static_cast<size_t>(i) + 1];
            out << " flags " << argument.paramdesc.wParamFlags << Default(argument.paramdesc);
        }
        out << (function->cParams ? ")" : "()") << " \"" << help << "\"\n";
        type->ReleaseFuncDesc(function);
    }

    ITypeLib* library;
    std::ostringstream out;
};

} // namespace

TEST_F(TypeLibraryTest, IsTheOneThatHostsWereCompiledAgainst) {
    for (const auto& [file, snapshot] : {std::pair{L"daxControls33.ocx", L"DAXControls.snapshot.txt"},
                                         std::pair{L"contentObjects.dll", L"ContentObjects.snapshot.txt"}}) {
        ComPtr<ITypeLib> library;
        ASSERT_HRESULT_SUCCEEDED(LoadTypeLibEx((BinFolder() + file).c_str(), REGKIND_NONE, library.Out()));
        const std::string actual = Walker(library.Get()).Walk();
        std::ifstream stream(std::filesystem::path(BinFolder() + L"ocx_data\\" + snapshot), std::ios::binary);
        const std::string expected{std::istreambuf_iterator<char>(stream), {}};
        if (actual == expected) continue;
        const auto path = std::filesystem::path(BinFolder() + L"ocx_data\\" + snapshot + L".actual");
        std::ofstream(path, std::ios::binary) << actual;
        ADD_FAILURE() << "the type library has changed; what it is now stands in " << path;
    }
}

} // namespace dax::test
