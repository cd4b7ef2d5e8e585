#include "pages/LessonStore.h"

#include "automation/Automation.h"

#include "data/Command.h"
#include "data/Recordset.h"
#include "data/modDB.h"

namespace dax::workbench {

namespace {

Text ToCore(const std::wstring& text) { return {text.begin(), text.end()}; }
std::wstring FromCore(const Text& text) { return {text.begin(), text.end()}; }

template <class Work>
auto Try(const Work& work) {
    try {
        return work();
    } catch (const Error& error) {
        throw HostError(error.Number(), FromCore(error.Description()));
    }
}

[[noreturn]] void ThrowMissing() {
    throw HostError(E_FAIL, L"The database has no such lesson; save the hierarchy first.");
}

} // namespace

std::wstring ReadLessonData(const std::wstring& connection, const std::wstring& lessonID) {
    return Try([&] {
        Recordset rows;
        rows.Open(u"SELECT lessonData FROM velmoraLessons WHERE lessonID = " + modDB::QuoteSQLString(ToCore(lessonID)),
                  ToCore(connection));
        if (rows.Eof()) ThrowMissing();
        const std::wstring text = FromCore(Text(rows.FieldText(0)));
        rows.Close();
        return text;
    });
}

void WriteLessonData(const std::wstring& connection, const std::wstring& lessonID, const std::wstring& text) {
    Try([&] {
        Connection database;
        database.Open(ToCore(connection));
        Command command(database);
        command.SetCommandText(u"UPDATE velmoraLessons SET lessonData = ? WHERE lessonID = ?");
        command.AppendParameter(ToCore(text));
        command.AppendParameter(ToCore(lessonID));
        if (command.Execute() == 0) ThrowMissing();
    });
}

} // namespace dax::workbench
