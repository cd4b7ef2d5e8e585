// Where the controls and the content objects come from: the libraries beside the program, without any registration,
// or the registered ones.
#pragma once

#include "automation/Automation.h"

#include <string>
#include <vector>

namespace dax::workbench {

class ControlLibrary {
public:
    // The libraries beside the program come first, so that what lies together is used together;
    // `registeredOnly` ignores them.
    explicit ControlLibrary(bool registeredOnly);
    ControlLibrary(const ControlLibrary&) = delete;
    ControlLibrary& operator=(const ControlLibrary&) = delete;
    ~ControlLibrary();

    // What to pass to the system's container: a class identifier in braces, or the programmatic name.
    std::wstring ClassText(const std::wstring& control) const;
    // An object without a window, by its programmatic name ("ContentObjects.Lesson"). Throws HostError with advice.
    Automation CreateObject(const std::wstring& name) const;
    // For people: which control library is in use.
    const std::wstring& Origin() const { return origin; }
    // For people: what to do when the class of that programmatic name could not be created with that result.
    std::wstring Advice(const std::wstring& name, HRESULT result) const;

private:
    struct Class {
        std::wstring name; // programmatic
        CLSID id;
        DWORD cookie;
    };

    void TakeLibrary(const std::wstring& path);
    const Class* Find(const std::wstring& name) const;

    std::vector<Class> classes;
    std::wstring origin;
    std::wstring problem; // why a library beside the program could not be used
};

} // namespace dax::workbench
