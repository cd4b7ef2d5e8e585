// Where the controls come from: the library beside the program, without any registration, or the registered one.
#pragma once

#include "Com.h"

#include <string>
#include <vector>

namespace dax::workbench {

class ControlLibrary {
public:
    // The library beside the program comes first, so that what lies together is used together;
    // `registeredOnly` leaves it aside.
    explicit ControlLibrary(bool registeredOnly);
    ControlLibrary(const ControlLibrary&) = delete;
    ControlLibrary& operator=(const ControlLibrary&) = delete;
    ~ControlLibrary();

    // What the system's container is to be asked for: a class identifier in braces, or the programmatic name.
    std::wstring ClassText(const std::wstring& control) const;
    // For people: which library is in use.
    const std::wstring& Origin() const { return origin; }
    // For people: what to do when a control could not be created with that result.
    std::wstring Advice(const std::wstring& control, HRESULT result) const;

private:
    void TakeLibrary(const std::wstring& path);

    struct Class {
        std::wstring name;
        CLSID id;
        DWORD cookie;
    };
    std::vector<Class> classes;
    std::wstring origin;
    std::wstring problem; // why the library beside the program could not be used
};

} // namespace dax::workbench
