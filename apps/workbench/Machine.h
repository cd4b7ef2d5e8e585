// What a host records of the machine that it runs on.
#pragma once

#include <string>

namespace dax::workbench {

struct Machine {
    std::wstring name;
    std::wstring address; // the first IPv4 address; 127.0.0.1 without a network
    std::wstring system;
    std::wstring program; // this program's version
};

Machine ThisMachine();

} // namespace dax::workbench
