// One script engine and the script it runs.
#pragma once

#include "com/ComPtr.h"

#include <activscp.h>

#include <span>
#include <string>

namespace dax {

// Throws std::runtime_error with a text for the user.
class Engine {
public:
    // `language` as the engine is registered (VBScript, JScript); `path` is only for messages.
    Engine(const std::wstring& language, std::wstring path);
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Adds an object to the script under this name. Call before Run.
    void AddObject(const wchar_t* name, IDispatch* object);
    // False when the script failed; the message has been printed.
    bool Run(const std::wstring& text);

    // Calls a procedure of the script if it has one of this name. Arguments that the caller passed by reference come
    // back changed.
    void Call(const std::wstring& procedure, std::span<const std::wstring> parameterNames, DISPPARAMS& parameters);

    bool HasFailed() const;

private:
    class Site;
    bool Takes(const std::wstring& procedure, std::span<const std::wstring> parameters);

    ComPtr<IActiveScript> script;
    const ComPtr<Site> site;
    bool isVBScript;
};

} // namespace dax
