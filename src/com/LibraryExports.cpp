// The entry points of a COM library, and its class factory.
#include "com/ComError.h"
#include "com/ComObject.h"
#include "com/Library.h"
#include "com/Registration.h"

#include <algorithm>
#include <cwctype>
#include <new>

namespace dax {

namespace {

class ClassFactory final : public ComObject<Implements<IClassFactory, IID_IClassFactory>> {
public:
    explicit ClassFactory(const ClassEntry& entry) : entry(entry) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            IUnknown* created = entry.create(entry);
            const HRESULT result = created->QueryInterface(iid, object);
            created->Release();
            return result;
        } catch (...) {
            return ReportCurrentException(IID_IClassFactory, ThisLibrary().name);
        }
    }
    STDMETHODIMP LockServer(BOOL isLocked) override {
        if (isLocked)
            Module::Lock();
        else
            Module::Unlock();
        return S_OK;
    }

private:
    const ModuleLock lock;
    const ClassEntry& entry;
};

template <typename Action>
HRESULT Guarded(Action&& action) noexcept {
    try {
        action();
        return S_OK;
    } catch (...) {
        return ReportCurrentException(IID_NULL, ThisLibrary().name);
    }
}

} // namespace

} // namespace dax

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    const auto classes = dax::ThisLibrary().classes;
    const auto found = std::find_if(classes.begin(), classes.end(),
                                    [&clsid](const dax::ClassEntry& entry) { return *entry.clsid == clsid; });
    if (found == classes.end()) return CLASS_E_CLASSNOTAVAILABLE;
    IClassFactory* factory = new (std::nothrow) dax::ClassFactory(*found);
    if (!factory) return E_OUTOFMEMORY;
    const HRESULT result = factory->QueryInterface(iid, object);
    factory->Release();
    return result;
}

STDAPI DllCanUnloadNow() { return dax::Module::IsUsed() ? S_FALSE : S_OK; }

STDAPI DllRegisterServer() {
    return dax::Guarded([] { dax::RegisterLibrary(dax::Scope::Machine); });
}

STDAPI DllUnregisterServer() {
    return dax::Guarded([] { dax::UnregisterLibrary(dax::Scope::Machine); });
}

// `regsvr32 /n /i:user FILE` registers for the current user only; without "user", for the machine. `/i:list=TEXTFILE`
// registers nothing and lists what would be entered for a FILE in the folder "@FOLDER@", which installers put in.
STDAPI DllInstall(BOOL isInstalling, LPCWSTR arguments) {
    std::wstring words = arguments ? arguments : L"";
    if (words.starts_with(L"list=")) {
        if (!isInstalling) return E_INVALIDARG;
        return dax::Guarded([&words] {
            const std::wstring own = dax::Module::Path();
            dax::ListRegistration(words.substr(5), L"@FOLDER@" + own.substr(own.find_last_of(L"\\/")));
        });
    }
    std::transform(words.begin(), words.end(), words.begin(), std::towlower);
    const dax::Scope scope = words == L"user" ? dax::Scope::User : dax::Scope::Machine;
    if (!words.empty() && scope == dax::Scope::Machine && words != L"machine") return E_INVALIDARG;
    return dax::Guarded([&] {
        if (isInstalling)
            dax::RegisterLibrary(scope);
        else
            dax::UnregisterLibrary(scope);
    });
}
