// The control's design-time properties in a host's stream, storage or property bag.
#include "ocx/hosting/Control.h"
#include "ocx/hosting/PropertyBags.h"

namespace dax {

namespace {

constexpr wchar_t StreamName[] = L"Contents";

} // namespace

HRESULT Control::GetClassID(CLSID* clsid) {
    if (!clsid) return E_POINTER;
    *clsid = *Entry().clsid;
    return S_OK;
}

// The defaults come when they are needed (see Initialize): the host may place the control first.
HRESULT Control::InitNew() { return S_OK; }

HRESULT Control::Load(IStream* stream) {
    if (!stream) return E_POINTER;
    if (isReady) return CO_E_ALREADYINITIALIZED;
    return Guard([&] {
        StreamBag bag = StreamBag::Load(*stream);
        Initialize(&bag);
        isDirty = false;
    });
}

HRESULT Control::Save(IStream* stream, BOOL isClearing) {
    if (!stream) return E_POINTER;
    return Call([&] {
        StreamBag bag;
        window->WriteProperties(bag);
        bag.Save(*stream);
        if (isClearing) isDirty = false;
    });
}

HRESULT Control::GetSizeMax(ULARGE_INTEGER* size) {
    if (!size) return E_POINTER;
    *size = {};
    return Call([&] {
        ComPtr<IStream> memory;
        Check(CreateStreamOnHGlobal(nullptr, TRUE, memory.Out()));
        StreamBag bag;
        window->WriteProperties(bag);
        bag.Save(*memory.Get());
        STATSTG state{};
        Check(memory->Stat(&state, STATFLAG_NONAME));
        *size = state.cbSize;
    });
}

HRESULT Control::Load(IStorage* storage) {
    if (!storage) return E_POINTER;
    ComPtr<IStream> stream;
    const HRESULT result = storage->OpenStream(StreamName, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Out());
    return FAILED(result) ? result : Load(stream.Get());
}

HRESULT Control::Save(IStorage* storage, BOOL) {
    if (!storage) return E_POINTER;
    ComPtr<IStream> stream;
    HRESULT result = WriteClassStg(storage, *Entry().clsid);
    if (SUCCEEDED(result))
        result = storage->CreateStream(StreamName, STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE, 0, 0, stream.Out());
    return FAILED(result) ? result : Save(stream.Get(), FALSE);
}

HRESULT Control::SaveCompleted(IStorage*) {
    isDirty = false;
    return S_OK;
}

HRESULT Control::Load(IPropertyBag* hostBag, IErrorLog* log) {
    if (!hostBag) return E_POINTER;
    if (isReady) return CO_E_ALREADYINITIALIZED;
    return Guard([&] {
        HostBag bag(*hostBag, log);
        Initialize(&bag);
        isDirty = false;
    });
}

HRESULT Control::Save(IPropertyBag* hostBag, BOOL isClearing, BOOL) {
    if (!hostBag) return E_POINTER;
    return Call([&] {
        HostBag bag(*hostBag, nullptr);
        window->WriteProperties(bag);
        if (isClearing) isDirty = false;
    });
}

} // namespace dax
