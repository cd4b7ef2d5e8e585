// The object WScript of scripts.
#pragma once

#include "ControlWindow.h"
#include "Engine.h"

#include "com/EventSink.h"

#include <memory>
#include <string>
#include <vector>

namespace dax {

class ScriptObject final : public DispatchObject<> {
public:
    ScriptObject(Engine& engine, std::wstring path, std::vector<std::wstring> arguments);

    // Ends all event connections.
    void Close();

    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* dispids) override;
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override;

private:
    // The arguments of a call in their written order, without references; a member that is not a property returns
    // nothing.
    using Arguments = std::vector<Variant>;
    Variant Echo(const Arguments& arguments);
    Variant Quit(const Arguments& arguments);
    Variant Sleep(const Arguments& arguments);
    Variant CreateObject(const Arguments& arguments);
    Variant ConnectObject(const Arguments& arguments);
    Variant DisconnectObject(const Arguments& arguments);
    Variant ShowControl(const Arguments& arguments); // ShowControl object, title
    Variant Press(const Arguments& arguments);       // Press object, key
    Variant Argument(const Arguments& arguments);    // Arguments(i)
    Variant ArgumentCount(const Arguments& arguments);
    Variant ScriptFullName(const Arguments& arguments);

    struct Member {
        const wchar_t* name;
        Variant (ScriptObject::*call)(const Arguments& arguments);
    };
    static const Member Members[]; // a member's DISPID is its place, from 1

    Engine& engine;
    std::wstring path;
    std::vector<std::wstring> scriptArguments;
    struct Connection {
        ComPtr<IUnknown> object; // its identity
        EventConnection events;
    };
    std::vector<Connection> connections;
    std::vector<std::unique_ptr<ControlWindow>> windows;
};

} // namespace dax
