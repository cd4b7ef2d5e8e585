// Where a picture of a control is drawn: the units of device contexts, and metafiles.
#pragma once

#include <ole2.h>

#include <functional>
#include <memory>
#include <type_traits>

namespace dax {

// Restores a context's selected objects, mapping and clipping when destroyed.
class DeviceContextState {
public:
    explicit DeviceContextState(HDC dc) : dc(dc), saved(SaveDC(dc)) {}
    ~DeviceContextState() { RestoreDC(dc, saved); }
    DeviceContextState(const DeviceContextState&) = delete;
    DeviceContextState& operator=(const DeviceContextState&) = delete;

private:
    HDC dc;
    int saved;
};

// With coordinates that every context can take; a host's may be anything.
RECT Drawable(const RECTL& bounds);
// A rectangle of the context's units, its top above its bottom.
RECT InDeviceUnits(HDC dc, const RECT& bounds);
void UseDeviceUnits(HDC dc);

// The size in pixels, `dpi` to the inch, in which a control is laid out that is to fill `target`: about `own`, in the
// shape of the target. Without a size of its own it becomes as large as the target really is.
SIZE LayoutSize(SIZE own, SIZE target, int targetDpi, int dpi);

struct MetafileDeleter {
    void operator()(HENHMETAFILE file) const { DeleteEnhMetaFile(file); }
};
using Metafile = std::unique_ptr<std::remove_pointer_t<HENHMETAFILE>, MetafileDeleter>;

struct WindowsMetafileDeleter {
    void operator()(HMETAFILE file) const { DeleteMetaFile(file); }
};
using WindowsMetafile = std::unique_ptr<std::remove_pointer_t<HMETAFILE>, WindowsMetafileDeleter>;

// What is drawn in so many pixels of a screen, as texts, lines and shapes. Throws ComError.
Metafile RecordMetafile(SIZE pixels, const std::function<void(HDC, SIZE)>& drawing);
// Of the older kind. Throws ComError.
WindowsMetafile ToWindowsFormat(const Metafile& picture);
// Filling a place. Throw ComError.
void Play(HDC dc, const Metafile& picture, const RECT& place);
// Into a metafile of the older kind, which cannot be queried; `whole` is what it shows altogether, in its units
// as the place is.
void PlayWindowsFormat(HDC dc, const Metafile& picture, const RECT& place, const RECT& whole);

} // namespace dax
