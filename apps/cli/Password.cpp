#include "Password.h"

#include "Console.h"
#include "System.h"
#include "TextFile.h"
#include "base/Secrets.h"
#include "data/ConnectionString.h"

#include <cstdlib>

namespace dax::cli {

namespace {

Text FromEnvironment(const Text& name) {
#ifdef _WIN32
    const wchar_t* const value = _wgetenv(std::wstring(name.begin(), name.end()).c_str());
    const std::wstring_view found = value ? value : L"";
    const Text password(found.begin(), found.end());
#else
    const char* const value = std::getenv(ToUtf8(name).c_str());
    const Text password = value ? Decode(value, u"The environment variable '" + name + u"'") : Text();
#endif
    if (password.empty()) throw RefusedError(u"The environment variable '" + name + u"' holds no password.");
    return password;
}

Text FirstLine(const Text& text) { return text.substr(0, text.find_first_of(u"\r\n")); }

Text FromFile(const Text& path) {
    Text password = FirstLine(ReadTextFile(path));
    if (password.empty()) throw RefusedError(u"The first line of '" + path + u"' holds no password.");
    return password;
}

Text FromPrompt() {
    const std::optional<std::string> line = ReadHiddenLine(u"Password:");
    const Text password = line ? FirstLine(Decode(*line, u"The password")) : Text();
    if (password.empty()) throw RefusedError(u"No password was given.");
    return password;
}

} // namespace

std::optional<Text> ReadPassword(const Arguments& arguments, const Text& prefix) {
    const Text environment = prefix + u"-env", file = prefix + u"-file", prompt = prefix + u"-prompt";
    if (arguments.Has(environment) + arguments.Has(file) + arguments.Has(prompt) > 1)
        throw UsageError(u"Give only one of " + environment + u", " + file + u" and " + prompt + u".");
    std::optional<Text> password;
    if (arguments.Has(environment)) password = FromEnvironment(arguments.Value(environment));
    if (arguments.Has(file)) password = FromFile(arguments.Value(file));
    if (arguments.Has(prompt)) password = FromPrompt();
    if (password) AddSecret(*password);
    return password;
}

Text WithPassword(const Text& connection, bool isFile, const Text& password) {
    if (isFile) throw UsageError(u"A file that is named by its path takes no password; give a connection string.");
    if (!PasswordsIn(connection).empty()) throw UsageError(u"The connection string holds a password already.");
    const Text provider = LowerAscii(ConnectionKeywords(connection).First({u"Provider"}));
    const bool isAccess = provider.starts_with(u"microsoft.jet.") || provider.starts_with(u"microsoft.ace.");
    Text text = connection + (connection.ends_with(u';') ? u"" : u";") +
                (isAccess           ? u"Jet OLEDB:Database Password={"
                 : provider.empty() ? u"PWD={"
                                    : u"Password={");
    for (const char16_t unit : password) text.append(unit == u'}' ? 2 : 1, unit);
    return text + u"}";
}

} // namespace dax::cli
