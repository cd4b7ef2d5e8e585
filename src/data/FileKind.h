// What a path names, determined without affecting the locks of programs that have the file open.
#pragma once

#include "base/Text.h"

namespace dax {

enum class FileKind {
    Missing,
    Directory,
    Special, // a pipe, a device, a socket: reading it could wait for ever
    Empty,
    SQLite,
    Access,
    Unknown // any other file, or one that cannot be read
};

FileKind KindOfFile(const Text& path) noexcept;

} // namespace dax
