#include "DAXControls.h"

#include "com/ClassObject.h"
#include "data/ModuleConstants.h"
#include "ocx/controls/ControlClasses.h"

#include <vector>

namespace dax {

namespace {

// What the version resource of this DLL's file says; nothing when it has none.
ModuleConstants ReadModule() {
    const std::wstring path = Module::Path();
    ModuleConstants result;
    result.fileName = FromWide(path);
    DWORD ignored = 0;
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    if (block.empty() || !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()))
        return result;
    void* found = nullptr;
    UINT length = 0;
    if (VerQueryValueW(block.data(), L"\\", &found, &length) && length >= sizeof(VS_FIXEDFILEINFO)) {
        const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
        result.majorNumber = HIWORD(fixed->dwFileVersionMS);
        result.minorNumber = LOWORD(fixed->dwFileVersionMS);
        result.revision = LOWORD(fixed->dwFileVersionLS);
    }
    if (VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\Comments", &found, &length) && length > 0)
        result.comments = FromWide(std::wstring_view(static_cast<const wchar_t*>(found))); // up to its first NUL
    return result;
}

class ConstantsObject final : public DualObject<_Constants> {
public:
    explicit ConstantsObject(const ClassEntry& entry) : DualObject(entry) {}

    STDMETHODIMP get_OCXPath(BSTR* value) override {
        return Get(value, [] { return ReadModule().OCXPath(); });
    }
    STDMETHODIMP get_OCXVersion(BSTR* value) override {
        return Get(value, [] { return ReadModule().OCXVersion(); });
    }
    STDMETHODIMP get_OCXFilename(BSTR* value) override {
        return Get(value, [] { return ReadModule().OCXFilename(); });
    }
};

} // namespace

IUnknown* CreateConstants(const ClassEntry& entry) { return static_cast<_Constants*>(new ConstantsObject(entry)); }

} // namespace dax
