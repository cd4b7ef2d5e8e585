// Texts that come from files and go into files; "-" is the standard input or output.
#pragma once

#include "base/Text.h"

namespace dax::cli {

inline constexpr TextView StandardStream = u"-";

// Bytes in UTF-8, or in UTF-16 with a byte-order mark. `source` names them in the message of the RefusedError that
// bytes in another encoding cause; it gives the line.
Text Decode(std::string_view bytes, const Text& source);

// Throws RefusedError when the file cannot be read, too.
Text ReadTextFile(const Text& path);

enum class Encoding { Utf8, Utf16 }; // the latter with a byte-order mark

// Throws RefusedError when there is such a file that may not be replaced, Error when it cannot be written; then a
// former file is as it was.
void WriteTextFile(const Text& path, const Text& text, Encoding encoding, bool mayReplace);

} // namespace dax::cli
