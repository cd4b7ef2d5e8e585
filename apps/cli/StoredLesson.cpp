#include "StoredLesson.h"

#include "Console.h"
#include "Course.h"
#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace dax::cli {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF", utf16Mark = "\xFF\xFE";

[[noreturn]] void ThrowFileError(const Text& path, const Text& what) {
    throw Error(ErrorNumbers::PathFileAccess, u"The file '" + path + u"' cannot be " + what + u".");
}

} // namespace

StoredLesson::StoredLesson(const Target& target, const Text& lessonName) : connectionString(target.connection) {
    Course course(target);
    const Node& node = course.Find(lessonName);
    if (HierarchyRows::TypeOf(node) != ltLesson) {
        throw Refusal(u"'" + lessonName + u"' is no lesson but a " + TypeName(HierarchyRows::TypeOf(node)) +
                      u". Only lessons have maps.");
    }
    lessonID = node.Key();
    Connection connection;
    connection.Open(connectionString);
    data = Read(connection);
}

Text StoredLesson::Read(Connection& connection) const {
    Recordset rows;
    rows.Open(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = " + modDB::QuoteSQLString(lessonID), connection);
    return rows.Eof() ? Text() : Text(rows.FieldText(0));
}

void StoredLesson::Replace(const Text& newData, bool isForced) {
    Connection connection;
    connection.Open(connectionString);
    connection.BeginTrans();
    if (!isForced) {
        Recordset locks;
        locks.Open(u"SELECT username FROM velmoraUserLocks WHERE lockType = " + ToText(lltEditLesson) +
                       u" AND lessonID = " + modDB::QuoteSQLString(lessonID),
                   connection);
        if (!locks.Eof()) {
            throw Refusal(u"the lesson is being edited by " + OneLine(locks.FieldText(0)) +
                          u"; what is saved now would be lost or get lost. With --force it is saved all the same.");
        }
        locks.Close();
    }
    if (Read(connection) != data) throw Refusal(u"somebody has changed the lesson in this moment. Try again.");
    dax::Command update(connection);
    update.SetCommandText(u"UPDATE velmoraLessons SET lessonData = ? WHERE lessonID = ?");
    update.AppendParameter(newData);
    update.AppendParameter(lessonID);
    update.Execute(adExecuteNoRecords);
    connection.CommitTrans();
    data = newData;
}

Text ReadTextFile(const Text& path) {
    std::ifstream stream(std::filesystem::path(path), std::ios::binary);
    if (!stream) ThrowFileError(path, u"read");
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    if (bytes.starts_with(utf8Mark)) return FromUtf8(std::string_view(bytes).substr(utf8Mark.size()));
    if (!bytes.starts_with(utf16Mark)) return FromUtf8(bytes);
    Text text;
    for (size_t i = utf16Mark.size(); i + 1 < bytes.size(); i += 2) {
        const auto low = static_cast<unsigned char>(bytes[i]), high = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(low | high << 8);
    }
    return text;
}

void WriteTextFile(const Text& path, const Text& text, bool isUtf16) {
    std::string bytes;
    if (isUtf16) {
        bytes = utf16Mark;
        for (const char16_t unit : text) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
    } else {
        bytes = ToUtf8(text);
    }
    std::ofstream stream(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) ThrowFileError(path, u"written");
}

} // namespace dax::cli
