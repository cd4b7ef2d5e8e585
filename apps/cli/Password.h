// Passwords that are not on the command line, where other users of the machine could read them.
#pragma once

#include "Command.h"

#include <optional>

namespace dax::cli {

// The three options of every command that give the password of a connection string.
inline constexpr Option PasswordOptions[] = {
    {u"--password-env", u"NAME", u"take the connection's password from an environment variable"},
    {u"--password-file", u"FILE", u"take it from the first line of a file, - for the standard input"},
    {u"--password-prompt", u"", u"ask for it; it is not echoed"},
};

// The same for the second target of a command that has two.
inline constexpr Option SecondPasswordOptions[] = {
    {u"--to-password-env", u"NAME", u"the same for the second connection"},
    {u"--to-password-file", u"FILE", u"the same from the first line of a file"},
    {u"--to-password-prompt", u"", u"the same, typed at a prompt"},
};

// By the options that begin with `prefix` ("--password"); nothing when none is given. The password is kept out of all
// messages from then on. Throws UsageError for two of them, RefusedError when there is none where it should be.
std::optional<Text> ReadPassword(const Arguments& arguments, const Text& prefix);

// The connection string with that password. Throws UsageError for a file, and for a string that has one.
Text WithPassword(const Text& connection, bool isFile, const Text& password);

} // namespace dax::cli
