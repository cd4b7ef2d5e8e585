#include "ocx/hosting/Control.h"

#include "ocx/hosting/PropertyBags.h"

#include <olectl.h>

#include <vector>

namespace dax {

Control::Control(const ClassEntry& entry, std::unique_ptr<WindowBase> created)
    : ClassObject(entry), window(std::move(created)),
      events(*this, entry.events ? *entry.events : IID_NULL, ConnectionPoint::Kind::Events),
      propertySinks(*this, IID_IPropertyNotifySink, ConnectionPoint::Kind::Interface) {
    window->FocusChanged = [this](bool isInside) { FocusMoved(isInside); };
    window->SystemLookChanged = [this] { OnAmbientPropertyChange(DISPID_UNKNOWN); };
    window->PropertyChanged = [this](const Text& name) { PropertyChanged(name); };
    window->DpiChanged = [this] { OnAmbientPropertyChange(DISPID_UNKNOWN); };
}

Control::~Control() = default;

void* Control::Find(REFIID iid) {
    void* const found = dax::FindInterface<
        Implements<IOleObject, IID_IOleObject>, Implements<IOleControl, IID_IOleControl>,
        Implements<IOleInPlaceObject, IID_IOleInPlaceObject, IID_IOleWindow>,
        Implements<IOleInPlaceActiveObject, IID_IOleInPlaceActiveObject>,
        Implements<IViewObject2, IID_IViewObject2, IID_IViewObject>, Implements<IDataObject, IID_IDataObject>,
        // The older IPersistStream has the members of the newer one but the last, in this order.
        Implements<IPersistStreamInit, IID_IPersistStreamInit, IID_IPersistStream, IID_IPersist>,
        Implements<IPersistStorage, IID_IPersistStorage>, Implements<IPersistPropertyBag, IID_IPersistPropertyBag>,
        Implements<IConnectionPointContainer, IID_IConnectionPointContainer>>(this, iid);
    return found ? found : ClassObject::Find(iid);
}

// Hosts release a control in any order; the steps that they have left out are done here.
void Control::Destroy() {
    window->FocusChanged = nullptr;
    window->SystemLookChanged = nullptr;
    window->PropertyChanged = nullptr;
    window->DpiChanged = nullptr;
    InPlaceDeactivate();
    site.Set(nullptr);
    events.DisconnectAll();
    propertySinks.DisconnectAll();
    delete this;
}

void Control::EnsureReady() {
    if (!isReady) Initialize(nullptr);
    if (site || window->Handle()) return;
    const SIZE size = window->PreferredSize(dpi);
    window->Create(nullptr, {0, 0, size.cx, size.cy});
}

// Called as late as possible, when the mode of the control is known: hosts create, place and load in
// different orders.
void Control::Initialize(PropertyBag* bag) {
    isReady = true;
    ReadAmbient();
    if (bag)
        window->ReadProperties(*bag);
    else
        window->InitProperties();
}

void Control::ReadAmbient() {
    const Ambient ambient = site.ReadAmbient();
    dpi = ambient.dpi;
    window->SetAmbient(ambient);
}

void Control::Fire(DISPID event, std::initializer_list<Variant> arguments) {
    if (frozen > 0) return;
    const SelfReference self(*this);
    std::vector<Variant> list(arguments);
    FireEvent(events, event, list);
}

void Control::PropertyChanged(const Text& name) {
    const SelfReference self(*this);
    isDirty = true;
    const auto connections = propertySinks.Connections();
    const DISPID dispid = connections.empty() ? DISPID_UNKNOWN : DispidOf(name);
    for (const auto& connection : connections)
        if (propertySinks.IsConnected(connection.cookie))
            static_cast<IPropertyNotifySink*>(connection.sink.Get())->OnChanged(dispid);
    ViewChanged();
}

DISPID Control::DispidOf(const Text& property) {
    DISPID dispid = DISPID_UNKNOWN;
    ComPtr<IDispatch> self;
    std::wstring name = ToWide(property);
    LPOLESTR names[] = {name.data()};
    if (FAILED(FindInterface(IID_IDispatch, self.OutVoid())) ||
        FAILED(self->GetIDsOfNames(IID_NULL, names, 1, LOCALE_NEUTRAL, &dispid)))
        return DISPID_UNKNOWN;
    return dispid;
}

HRESULT Control::EnumConnectionPoints(IEnumConnectionPoints** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return Guard([&] {
        std::vector<ComPtr<IConnectionPoint>> points;
        for (ConnectionPoint* point : {&events, &propertySinks}) points.emplace_back(point);
        Check(EnumeratePoints(std::move(points), result));
    });
}

HRESULT Control::FindConnectionPoint(REFIID iid, IConnectionPoint** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    for (ConnectionPoint* point : {&events, &propertySinks}) {
        if (point->SinkInterface() != iid) continue;
        point->AddRef();
        *result = point;
        return S_OK;
    }
    return CONNECT_E_NOCONNECTION;
}

} // namespace dax
