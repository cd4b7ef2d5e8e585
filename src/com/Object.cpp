#include "com/Object.h"

namespace dax {

namespace {

// While an object is taken apart it may be counted up and down again; that must not destroy it twice.
constexpr ULONG BeingDestroyed = 0x40000000;

} // namespace

ClassObject::ClassObject(const ClassEntry& entry) : entry(entry) { Module::Lock(); }

ClassObject::~ClassObject() { Module::Unlock(); }

void* ClassObject::Find(REFIID iid) {
    if (iid == IID_IProvideClassInfo || iid == IID_IProvideClassInfo2) return static_cast<IProvideClassInfo2*>(this);
    if (iid == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
    return nullptr;
}

HRESULT ClassObject::FindInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = Find(iid);
    if (!*object) return E_NOINTERFACE;
    AddReference();
    return S_OK;
}

ULONG ClassObject::RemoveReference() {
    if (--references > 0) return references;
    references = BeingDestroyed;
    Destroy();
    return 0;
}

HRESULT ClassObject::Report() noexcept {
    try {
        return ReportCurrentException(*entry.defaultInterface, ThisLibrary().ProgID(entry).c_str());
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT ClassObject::GetClassInfo(ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    try {
        ComPtr<ITypeInfo> result = Module::TypeInfo(*entry.clsid);
        *info = result.Get();
        (*info)->AddRef();
        return S_OK;
    } catch (...) {
        return Report();
    }
}

HRESULT ClassObject::GetGUID(DWORD kind, GUID* guid) {
    if (!guid) return E_POINTER;
    *guid = GUID{};
    if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID || !entry.events) return E_INVALIDARG;
    *guid = *entry.events;
    return S_OK;
}

HRESULT ClassObject::InterfaceSupportsErrorInfo(REFIID iid) { return iid == *entry.defaultInterface ? S_OK : S_FALSE; }

} // namespace dax
