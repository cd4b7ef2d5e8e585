#include "ocx/lessonmap/ControlLink.h"

#include "base/Error.h"
#include "ocx/latebound/HostObject.h"
#include "ocx/lessonmap/HostPictures.h"

namespace dax {

void ControlLink::OnControlDestroyed() {
    control = nullptr;
    window = nullptr;
    imageList = {};
}

int ControlLink::PictureOf(const Text& key) const {
    return window ? window->Editor()->ImageList().IndexOfType(key) : 0;
}

void ControlLink::SetImageList(const VARIANT& list, const VARIANT& keys) {
    if (!control) return;
    const ComPtr<IUnknown> kept(control); // the host's list, or a listener, may release the control
    const HostPictures pictures = ReadPictures(list, keys);
    const Variant plain = PlainOf(list);
    const auto object = pictures.images && plain.vt == VT_DISPATCH ? ObjectFrom(plain) : ComPtr<IDispatch>();
    if (!window->SetPictures(pictures.images, pictures.keys))
        throw Error(ErrorNumbers::TypeMismatch, u"There is no such image list.");
    imageList = object;
}

} // namespace dax
