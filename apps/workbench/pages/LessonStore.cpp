#include "pages/LessonStore.h"

#include "automation/Automation.h"
#include "com/Variant.h"

#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"

namespace dax::workbench {

namespace {

template <class Work>
auto Try(const Work& work) {
    try {
        return work();
    } catch (const Error& error) {
        throw HostError(error.Number(), ToWide(error.Description()));
    }
}

[[noreturn]] void ThrowMissing() {
    throw HostError(E_FAIL, L"The database has no such lesson; save the hierarchy first.");
}

} // namespace

std::wstring ReadLessonData(const std::wstring& connection, const std::wstring& lessonID) {
    return Try([&] {
        Recordset rows;
        rows.Open(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = " +
                      modDB::QuoteSQLString(FromWide(lessonID)),
                  FromWide(connection));
        if (rows.Eof()) ThrowMissing();
        const std::wstring text = ToWide(Text(rows.FieldText(0)));
        rows.Close();
        return text;
    });
}

void WriteLessonData(const std::wstring& connection, const std::wstring& lessonID, const std::wstring& text) {
    Try([&] {
        Connection database;
        database.Open(FromWide(connection));
        Command command(database);
        command.SetCommandText(u"UPDATE velmoraLessons SET lessonData = ? WHERE lessonID = ?");
        command.AppendParameter(FromWide(text));
        command.AppendParameter(FromWide(lessonID));
        if (command.Execute() == 0) ThrowMissing();
    });
}

} // namespace dax::workbench
