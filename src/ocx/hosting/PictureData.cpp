#include "ocx/hosting/PictureData.h"

#include "com/ComError.h"
#include "com/Enumerator.h"
#include "com/Library.h"

#include <algorithm>
#include <cstring>

namespace dax {

namespace {

FORMATETC FormatOf(CLIPFORMAT format, DWORD medium) { return {format, nullptr, DVASPECT_CONTENT, -1, medium}; }

FORMATETC CopyFormat(const FORMATETC& held) { return held; }

using FormatEnumerator = Enumerator<IEnumFORMATETC, IID_IEnumFORMATETC, FORMATETC, FORMATETC, CopyFormat>;

// Memory that the receiver frees. Throws ComError.
HGLOBAL Shared(const void* data, size_t size) {
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    void* const place = memory ? GlobalLock(memory) : nullptr;
    if (!place) {
        GlobalFree(memory);
        throw ComError(E_OUTOFMEMORY);
    }
    std::memcpy(place, data, size);
    GlobalUnlock(memory);
    return memory;
}

class PictureData final : public ComObject<Implements<IDataObject, IID_IDataObject>> {
public:
    PictureData(Metafile shown, SIZEL extent, Text words)
        : picture(std::move(shown)), size(extent),
          text(std::move(words)), formats{FormatOf(CF_ENHMETAFILE, TYMED_ENHMF),
                                          FormatOf(CF_METAFILEPICT, TYMED_MFPICT)} {
        if (!text.empty()) formats.push_back(FormatOf(CF_UNICODETEXT, TYMED_HGLOBAL));
    }

    STDMETHODIMP GetData(FORMATETC* format, STGMEDIUM* medium) override {
        if (!format || !medium) return E_POINTER;
        *medium = {};
        const HRESULT isThere = QueryGetData(format);
        if (FAILED(isThere)) return isThere;
        try {
            switch (format->cfFormat) {
            case CF_ENHMETAFILE:
                medium->hEnhMetaFile = CopyEnhMetaFileW(picture.get(), nullptr);
                if (!medium->hEnhMetaFile) return E_OUTOFMEMORY;
                medium->tymed = TYMED_ENHMF;
                return S_OK;
            case CF_METAFILEPICT: {
                WindowsMetafile older = ToWindowsFormat(picture);
                const METAFILEPICT described{MM_ANISOTROPIC, size.cx, size.cy, older.get()};
                medium->hMetaFilePict = Shared(&described, sizeof described);
                older.release(); // NOLINT(bugprone-unused-return-value): the receiver's, with the memory
                medium->tymed = TYMED_MFPICT;
                return S_OK;
            }
            default:
                medium->hGlobal = Shared(text.c_str(), (text.size() + 1) * sizeof(char16_t));
                medium->tymed = TYMED_HGLOBAL;
                return S_OK;
            }
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }
    STDMETHODIMP GetDataHere(FORMATETC*, STGMEDIUM*) override { return DV_E_FORMATETC; }
    STDMETHODIMP QueryGetData(FORMATETC* format) override {
        if (!format) return E_POINTER;
        const auto row = std::find_if(formats.begin(), formats.end(),
                                      [format](const FORMATETC& each) { return each.cfFormat == format->cfFormat; });
        if (row == formats.end()) return DV_E_FORMATETC;
        if (format->dwAspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        return row->tymed & format->tymed ? S_OK : DV_E_TYMED;
    }
    STDMETHODIMP GetCanonicalFormatEtc(FORMATETC* format, FORMATETC* result) override {
        if (!format || !result) return E_POINTER;
        *result = *format;
        result->ptd = nullptr;
        return DATA_S_SAMEFORMATETC;
    }
    STDMETHODIMP SetData(FORMATETC*, STGMEDIUM*, BOOL) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) override {
        if (!result) return E_POINTER;
        *result = nullptr;
        if (direction != DATADIR_GET) return E_NOTIMPL;
        try {
            return FormatEnumerator::Create(formats, result);
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }
    STDMETHODIMP DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD* cookie) override {
        if (cookie) *cookie = 0;
        return OLE_E_ADVISENOTSUPPORTED; // it never changes
    }
    STDMETHODIMP DUnadvise(DWORD) override { return OLE_E_ADVISENOTSUPPORTED; }
    STDMETHODIMP EnumDAdvise(IEnumSTATDATA** result) override {
        if (result) *result = nullptr;
        return OLE_E_ADVISENOTSUPPORTED;
    }

private:
    const ModuleLock lock;
    const Metafile picture;
    const SIZEL size;
    const Text text;
    std::vector<FORMATETC> formats;
};

} // namespace

IDataObject* NewPictureData(Metafile picture, SIZEL size, Text text) {
    return new PictureData(std::move(picture), size, std::move(text));
}

} // namespace dax
