// The object that scripts know as WScript.
#pragma once

#include "ControlWindow.h"
#include "EventSink.h"

#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace dax {

class ScriptObject final : public IDispatch {
public:
    ScriptObject(Engine& engine, std::wstring path, std::vector<std::wstring> arguments);

    // Lets go of all event connections.
    void Close();

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override { return ++references; }
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP GetTypeInfoCount(UINT* count) override;
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* dispids) override;
    STDMETHODIMP Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                        EXCEPINFO* exception, UINT*) override;

private:
    ~ScriptObject() = default;

    // The arguments of a call in their written order.
    using Arguments = std::vector<VARIANT>;
    void Echo(const Arguments& arguments);
    void Quit(const Arguments& arguments);
    void Sleep(const Arguments& arguments);
    void CreateObject(const Arguments& arguments, VARIANT* result);
    void ConnectObject(const Arguments& arguments);
    void DisconnectObject(const Arguments& arguments);
    void ShowControl(const Arguments& arguments);               // ShowControl object, title
    void Press(const Arguments& arguments);                     // Press object, key
    void Argument(const Arguments& arguments, VARIANT* result); // Arguments(i)

    Engine& engine;
    std::wstring path;
    std::vector<std::wstring> scriptArguments;
    struct Connection {
        ComPtr<IUnknown> object; // its identity
        ComPtr<EventSink> sink;
    };
    std::vector<Connection> connections;
    std::vector<std::unique_ptr<ControlWindow>> windows;
    ULONG references = 1;
};

} // namespace dax
