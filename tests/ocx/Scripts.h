// Runs scripts and other programs of the build to their end.
#pragma once

#include "OcxHost.h"

#include <filesystem>

namespace dax::test {

struct Outcome {
    DWORD code = 0xFFFF;
    std::string output, errors;
};

// A program beside this one, or wherever its full path says; fails when it does not end within two minutes.
Outcome RunProgram(const wchar_t* program, const std::wstring& arguments);
Outcome RunScript(const std::filesystem::path& script, const std::wstring& arguments = L"");

std::filesystem::path DataFile(const std::wstring& name); // a sample or a snapshot
std::wstring Quoted(const Text& text);

} // namespace dax::test
