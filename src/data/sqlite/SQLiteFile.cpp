#include "data/sqlite/SQLiteFile.h"

#include "base/Error.h"
#include "data/Dialect.h"
#include "data/sqlite/SQLite.h"
#include "data/sqlite/SQLiteWait.h"

#include <array>
#include <filesystem>
#include <string_view>
#include <vector>

namespace dax {

namespace {

namespace fs = std::filesystem;

// The first bytes, read by SQLite's own means: on Unix a program that closes a file, wherever it has opened it, gives
// back all its locks on that file, and only SQLite keeps track of them.
FileKind KindByContent(const Text& path) {
    sqlite3_vfs* const system = sqlite3_vfs_find(SQLiteFileSystem());
    if (!system) return FileKind::Unknown;
    // SQLite's own names are between zeros, which some file systems read.
    const std::string name = std::string(4, '\0') + SQLiteName(path) + std::string(4, '\0');
    std::vector<std::max_align_t> memory(static_cast<size_t>(system->szOsFile) / sizeof(std::max_align_t) + 1);
    auto* const file = reinterpret_cast<sqlite3_file*>(memory.data());
    file->pMethods = nullptr;
    FileKind kind = FileKind::Unknown;
    int flags = 0;
    sqlite3_int64 size = 0;
    std::array<char, 20> head{};
    if (system->xOpen(system, name.c_str() + 4, file, SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, &flags) ==
            SQLITE_OK &&
        file->pMethods->xFileSize(file, &size) == SQLITE_OK) {
        if (size == 0) kind = FileKind::Empty;
        const int result = file->pMethods->xRead(file, head.data(), int{head.size()}, 0);
        const std::string_view text(head.data(), head.size());
        if ((result & 0xFF) == SQLITE_OK || result == SQLITE_IOERR_SHORT_READ) {
            if (text.starts_with("SQLite format 3")) kind = FileKind::SQLite;
            if (text.starts_with(std::string_view("\0\1\0\0Standard ", 13))) kind = FileKind::Access;
        }
    }
    if (file->pMethods) file->pMethods->xClose(file);
    return kind;
}

} // namespace

FileKind KindOfFile(const Text& path) noexcept {
    try {
        if (path.find(u'\0') != Text::npos) return FileKind::Missing; // no system has such names
        std::error_code failure;
        const fs::file_status status = fs::status(fs::path(path), failure);
        switch (status.type()) {
        case fs::file_type::not_found:
            return FileKind::Missing;
        case fs::file_type::none:
            // Longer than any name, as a connection string may be; or not allowed to look.
            return failure == std::errc::filename_too_long ? FileKind::Missing : FileKind::Unknown;
        case fs::file_type::directory:
            return FileKind::Directory;
        case fs::file_type::regular:
            return KindByContent(path);
        default:
            return FileKind::Special;
        }
    } catch (...) {
        return FileKind::Unknown;
    }
}

void RequireDatabaseFile(const Text& path) {
    const Text name = u"'" + path + u"'";
    switch (KindOfFile(path)) {
    case FileKind::Missing:
        throw Error(u"The database file " + name + u" does not exist.");
    case FileKind::Directory:
        throw Error(name + u" is a folder, not a database file.");
    case FileKind::Special:
        throw Error(name + u" is a device, a pipe or a socket, not a database file.");
    case FileKind::Access:
        throw Error(name + u" is a Microsoft Access file, not a SQLite file. " +
                    Text(DialectOf(Engine::Access).howToGetDriver));
    default:
        break;
    }
}

std::string SQLiteName(const Text& path) {
    const std::string name = ToUtf8(path);
    const bool hasRoot = fs::path(std::u8string(name.begin(), name.end())).has_root_path();
    return hasRoot ? name : "./" + name;
}

} // namespace dax
