// The control as a source of data: its picture, and the texts of those that show nothing else.
#include "com/ComError.h"
#include "ocx/hosting/Control.h"
#include "ocx/hosting/PictureData.h"

namespace dax {

ComPtr<IDataObject> Control::Snapshot() {
    const SIZE size = LayoutFor({}, 0);
    ComPtr<IDataObject> data;
    *data.Out() = NewPictureData(Record(size), PixelsToHimetric(size, dpi), window->PlainText());
    return data;
}

HRESULT Control::GetClipboardData(DWORD, IDataObject** data) {
    if (!data) return E_POINTER;
    *data = nullptr;
    return Call([&] {
        const ComPtr<IDataObject> snapshot = Snapshot();
        *data = snapshot.Get();
        (*data)->AddRef();
    });
}

HRESULT Control::GetData(FORMATETC* format, STGMEDIUM* medium) {
    if (!format || !medium) return E_POINTER;
    *medium = {};
    return Call([&] { Check(Snapshot()->GetData(format, medium)); });
}

HRESULT Control::GetDataHere(FORMATETC*, STGMEDIUM*) { return DV_E_FORMATETC; }

HRESULT Control::QueryGetData(FORMATETC* format) {
    HRESULT result = S_OK;
    const HRESULT outcome = Call([&] { result = Snapshot()->QueryGetData(format); });
    return FAILED(outcome) ? outcome : result;
}

HRESULT Control::GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* result) {
    if (!format || !result) return E_POINTER;
    *result = *format;
    result->ptd = nullptr;
    return DATA_S_SAMEFORMATETC;
}

HRESULT Control::EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Call([&] { Check(Snapshot()->EnumFormatEtc(direction, result)); });
}

HRESULT Control::DAdvise(FORMATETC* format, DWORD flags, IAdviseSink* sink, DWORD* cookie) {
    if (cookie) *cookie = 0;
    if (!format || !sink || !cookie) return E_POINTER;
    if (!dataHolder) {
        const HRESULT made = CreateDataAdviseHolder(dataHolder.Out());
        if (FAILED(made)) return made;
    }
    return dataHolder->Advise(this, format, flags, sink, cookie);
}

HRESULT Control::DUnadvise(DWORD cookie) { return dataHolder ? dataHolder->Unadvise(cookie) : OLE_E_NOCONNECTION; }

HRESULT Control::EnumDAdvise(IEnumSTATDATA** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return dataHolder ? dataHolder->EnumAdvise(result) : S_OK;
}

} // namespace dax
