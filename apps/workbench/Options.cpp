#include "Options.h"

#include "ui/Input.h"

#include <windows.h>

namespace dax::workbench {

Options ParseArguments(const std::vector<std::wstring>& arguments) {
    Options options;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring& argument = arguments[i];
        std::wstring number;
        std::wstring* value = argument == L"--connector"                         ? &options.connector
                              : argument == L"--user"                            ? &options.user
                              : argument == L"--shots"                           ? &options.shots
                              : argument == L"--start"                           ? &options.start
                              : argument == L"--report"                          ? &options.report
                              : argument == L"--only"                            ? &options.only
                              : argument == L"--group"                           ? &options.group
                              : argument == L"--record"                          ? &options.record
                              : argument == L"--limit" || argument == L"--first" ? &number
                              : argument == L"--connection"                      ? &options.connections.emplace_back()
                                                                                 : nullptr;
        if (value) {
            if (i + 1 >= arguments.size()) {
                options.problem = argument + L" needs a value.";
                return options;
            }
            *value = arguments[++i];
            if (value != &number) continue;
            int& target = argument == L"--limit" ? options.limit : options.firstCheck;
            target = static_cast<int>(std::wcstol(number.c_str(), nullptr, 10));
        } else if (argument == L"--registered") {
            options.registered = true;
        } else if (argument == L"--selftest") {
            options.selfTest = true;
        } else if (argument == L"--help" || argument == L"-h" || argument == L"/?") {
            options.help = true;
        } else if (argument.starts_with(L"--")) {
            options.problem = L"There is no option " + argument.substr(0, argument.find(L'=')) + L".";
            return options;
        } else if (options.file.empty()) {
            options.file = argument;
        } else {
            // What follows a connection string may be the rest of its password.
            options.problem =
                L"Only one file can be opened" + (HidePassword(options.file) == options.file
                                                      ? L"; there is also " + argument + L"."
                                                      : L". A connection string with blanks needs quotes.");
            return options;
        }
    }
    return options;
}

std::wstring Usage() {
    return L"DAXWorkbench [FILE] [OPTIONS]\n"
           L"Shows the DAXControls at work. FILE (a path or a connection string) is opened and validated.\n"
           L"  --connector CONNECTION  fills the connector page with a file or a connection string\n"
           L"  --user USER             the user whose catalogs are listed there\n"
           L"  --shots DIR             takes a picture of each page in its main states and quits\n"
           L"  --start DIR             runs from the connector to the record of the connection, a picture of each "
           L"step\n"
           L"                          (it changes a lesson, and deletes the locks that were left over), and quits\n"
           L"  --selftest              checks that the controls work on this machine, and writes a report\n"
           L"    --report FILE         its place; without it, it is among your documents, and is shown\n"
           L"    --connection STRING   tests the database, too, in an empty catalog of its own; may be repeated\n"
           L"    --only GROUP          one group of checks: machine, registration, creation, start, editing, input,\n"
           L"                          pictures, accessibility, cycles, drivers, connection\n"
           L"    --limit SECONDS       how long a check may take\n"
           L"  --registered            uses the registered controls, not the library beside this program\n"
           L"  --help                  this text\n";
}

void PrintText(const std::wstring& text, bool asError) {
    HANDLE target = GetStdHandle(asError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    if ((!target || target == INVALID_HANDLE_VALUE) && AttachConsole(ATTACH_PARENT_PROCESS))
        target = GetStdHandle(asError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    if (!target || target == INVALID_HANDLE_VALUE) return;
    DWORD mode = 0;
    DWORD done = 0;
    if (GetConsoleMode(target, &mode)) {
        WriteConsoleW(target, text.c_str(), static_cast<DWORD>(text.size()), &done, nullptr);
        return;
    }
    std::string utf8(text.size() * 3, '\0');
    utf8.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()),
                                                        utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr)));
    WriteFile(target, utf8.data(), static_cast<DWORD>(utf8.size()), &done, nullptr);
}

} // namespace dax::workbench
