#include "com/ClassObject.h"

namespace dax {

ClassObject::ClassObject(const ClassEntry& entry) : entry(entry) {}

ClassObject::~ClassObject() = default;

void* ClassObject::Find(REFIID iid) {
    using ClassInfo = Implements<IProvideClassInfo2, IID_IProvideClassInfo, IID_IProvideClassInfo2>;
    using ErrorSupport = Implements<ISupportErrorInfo, IID_ISupportErrorInfo>;
    return dax::FindInterface<ClassInfo, ErrorSupport>(this, iid);
}

HRESULT ClassObject::FindInterface(REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = Find(iid);
    if (!*object) return E_NOINTERFACE;
    AddReference();
    return S_OK;
}

ULONG ClassObject::RemoveReference() {
    const ULONG left = references.Remove();
    if (left == 0) Destroy();
    return left;
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
        *info = Module::TypeInfo(*entry.clsid).Detach();
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
