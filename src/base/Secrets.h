// Passwords in texts that people see: messages, traces, logs, fields.
#pragma once

#include "base/Text.h"

#include <span>
#include <vector>

namespace dax {

// The text that replaces a password.
inline constexpr TextView PasswordMask = u"\u2022\u2022\u2022\u2022";

// The text without its passwords: the values of all keywords that end in "password" or "pwd", whatever their case
// ("keyword=value", plain or in quotes or braces; a plain one ends at a semicolon or at the end of the line), the part
// between ':' and '@' of "scheme://user:password@…", and every occurrence of `known`. A known one of fewer than four
// units counts only as a word of its own. What might be a part of a password is masked with it. A text without any is
// returned as it is.
Text MaskPasswords(TextView text, std::span<const Text> known = {});

// The passwords that a connection string holds, without quotes and braces; empty ones are left out.
std::vector<Text> PasswordsIn(TextView connection);

} // namespace dax
