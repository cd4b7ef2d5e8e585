#include "soak/Author.h"

#include "base/Error.h"
#include "content/LessonText.h"
#include "data/modDB.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace dax::soak {

namespace {

constexpr size_t usualRows = 30, usualLocks = 6, usualPages = 8;

using modDB::QuoteSQLString;

} // namespace

Author::Author(int number, const Text& connectionString)
    : name(u"author" + ToText(number)), connectionString(connectionString), random(static_cast<unsigned>(number)) {
    editor->SetConnectionString(connectionString);
    editor->Error.AddPermanent([this](int32_t code, const Text& description, const Text& method) {
        received += method;
        if (code == 0 || description.empty()) ReportFault("an Error event that says nothing");
    });
    for (LockManager* locker : {&manager, &staleLocks}) {
        locker->connectionString = connectionString;
        locker->mdbMode = false;
        locker->username = name;
        locker->SetupColumns();
        locker->Error.AddPermanent(
            [this](int32_t code, const Text& description, const Text&, const Text& routine, int32_t&) {
                received += routine;
                if (code == 0 || description.empty()) ReportFault("an Error event that says nothing");
            });
    }
    manager.lockDisplayType = ldtUserLocks;
    staleLocks.lockDisplayType = ldtInvalidLocks;
    staleLocks.isAdministrator = true;
}

void Author::ReportFault(const std::string& what) {
    hasFailed = true;
    if (faults.size() < 20) faults.push_back(ToUtf8(name) + ": " + what);
}

// What the method answers and what its event says must agree.
bool Author::Reports(const char16_t* method, const std::function<bool()>& call) {
    received.clear();
    const bool isDone = call();
    if (received != (isDone ? u"" : method))
        ReportFault(ToUtf8(method) + (isDone ? " succeeded" : " failed") + " and raised \"" + ToUtf8(received) + "\"");
    if (!isDone) ++refused;
    return isDone;
}

// The part of the host, which talks to the database itself.
bool Author::Asks(const std::function<void()>& statements) {
    try {
        statements();
        return true;
    } catch (const Error&) {
        ++refused;
        return false;
    }
}

bool Author::Work() {
    if (!FinishPending() || !LoadTree()) return false;
    EditTree();
    if (!SaveTree() || !EditPages() || !TakeLock() || !ListLocks() || !ClearLocks()) return false;
    if (name == u"author0" && !DeleteStaleLocks()) return false;
    ++rounds;
    return true;
}

// A save that failed changed nothing, unless the server stopped during the commit: then all or nothing.
bool Author::FinishPending() {
    if (!pending) return true;
    std::map<Text, Text> stored;
    if (!Asks([&] {
            Recordset found;
            found.Open(u"SELECT lessonID, lessonTitle FROM velmoraLessons WHERE lessonID LIKE " +
                           QuoteSQLString(name + u"-%"),
                       connectionString);
            for (; !found.Eof(); found.MoveNext()) stored.emplace(found.FieldText(0), found.FieldText(1));
        }))
        return false;
    const auto isAsIn = [&](bool wasSaved) {
        const size_t count =
            rows.size() + (wasSaved ? pending->added.size() : 0) - (wasSaved ? pending->removed.size() : 0);
        return stored.size() == count && std::ranges::all_of(stored, [&](const auto& row) {
                   if (pending->added.contains(row.first)) return wasSaved;
                   return rows.contains(row.first) && !(wasSaved && pending->removed.contains(row.first));
               });
    };
    if (isAsIn(true)) {
        Saved();
        return true;
    }
    if (!isAsIn(false)) ReportFault("neither the rows from before a save that failed nor those from after it");
    for (const auto& [id, title] : stored) CheckTitle(id, title);
    if (random() % 3 != 0) return SaveTree(); // with what is pending in the editor
    pending.reset();                          // given up: the tree is loaded again
    return true;
}

Text Author::Title(int save) const { return name + u" " + ToText(save); }

void Author::CheckTitle(const Text& id, const Text& title) {
    const std::string said = ToUtf8(title);
    const size_t blank = std::min(said.find(' '), said.size() - 1);
    int save = -1;
    std::from_chars(said.data() + blank + 1, said.data() + said.size(), save);
    const auto row = rows.find(id);
    if (title != Title(save) || save > version || (row != rows.end() && save < row->second.added))
        ReportFault("the title \"" + said + "\" of " + ToUtf8(id) +
                    " was never saved (saves: " + std::to_string(version) + ")");
}

Text Author::Random(const IDCollection& ids) {
    return ids.IsEmpty() ? Text() : *std::next(ids.begin(), static_cast<long>(random() % ids.Count()));
}

const Text* Author::RandomLesson() {
    std::vector<const Text*> lessons;
    for (const auto& [id, row] : rows) {
        if (row.type == ltLesson) lessons.push_back(&id);
    }
    return lessons.empty() ? nullptr : lessons[random() % lessons.size()];
}

bool Author::LoadTree() {
    if (!Reports(u"LoadDatabase", [this] { return editor->LoadDatabase(); })) return false;
    const IDCollection all = editor->GetChildLessonIDCollection(u"");
    size_t mine = 0;
    for (const Text& id : all) {
        if (!IsOwnEntry(id)) continue;
        ++mine;
        if (!rows.contains(id)) ReportFault(ToUtf8(id) + " was never saved, or it was removed, and it is there");
        CheckTitle(id, editor->GetLessonTitle(id));
    }
    if (mine != rows.size())
        ReportFault(std::to_string(rows.size()) + " rows were saved, and there are " + std::to_string(mine));
    return true;
}

void Author::RemoveRow(const Text& id, Edit& changes) {
    const IDCollection below = editor->GetChildLessonIDCollection(id);
    const bool isWhole = std::ranges::all_of(below, [this](const Text& child) { return IsOwnEntry(child); });
    editor->RemoveLesson(id, isWhole);
    changes.removed.insert(id);
    if (isWhole) changes.removed.insert(below.begin(), below.end());
}

void Author::EditTree() {
    Edit changes;
    for (size_t i = rows.size() > usualRows ? 4 : random() % 2; i > 0 && !rows.empty(); --i) {
        const Text& id = std::next(rows.begin(), static_cast<long>(random() % rows.size()))->first;
        if (!changes.removed.contains(id)) RemoveRow(id, changes);
    }
    for (size_t i = 1 + random() % 3; i > 0; --i) {
        editor->SetCurrentLessonID(Random(editor->GetChildLessonIDCollection(u"")));
        const Text id = name + u"-" + ToText(++lastRow);
        const LessonTypes type = random() % 4 == 0 ? ltGroup : ltLesson;
        editor->AddLesson(id, Title(version + 1), id, type);
        changes.added.emplace(id, Row{type, version + 1, {}, {}});
    }
    for (const auto& [id, row] : rows) editor->UpdateLesson(id, Title(version + 1), id, row.type);
    for (int i = 0; i < 4; ++i) {
        editor->SetCurrentLessonID(Random(editor->GetChildLessonIDCollection(u"")));
        editor->MoveCurrent(static_cast<GroupMovementTypes>(gmtUp + random() % 4));
    }
    pending = std::move(changes);
}

bool Author::SaveTree() {
    if (!Reports(u"SaveDatabase", [this] { return editor->SaveDatabase(); })) return false;
    Saved();
    return true;
}

void Author::Saved() {
    for (const Text& id : pending->removed) rows.erase(id);
    rows.merge(pending->added);
    pending.reset();
    ++version;
    ++saves;
}

bool Author::EditPages() {
    const Text* const id = RandomLesson();
    if (!id) return true;
    const Text where = u" WHERE lessonID = " + QuoteSQLString(*id);
    Row& row = rows[*id];
    return Asks([&] {
        Connection connection;
        connection.Open(connectionString);
        Recordset found;
        found.Open(u"SELECT lessonData FROM velmoraLessons" + where, connection);
        const Text stored = found.Eof() ? Text(u"(no row)") : Text(found.FieldText(0));
        found.Close();
        if (stored != row.pages && stored != row.tried)
            ReportFault("the pages of " + ToUtf8(*id) + " are not those that were saved: " + ToUtf8(stored));
        const auto lesson = stored.empty() ? std::make_shared<ContentLesson>() : LessonText::Load(stored);
        pageEditor->SetLesson(lesson);
        pageEditor->AddStoryboard(std::make_shared<ContentStoryboard>());
        pageEditor->MoveCurrent(static_cast<StoryboardMovementTypes>(smtUp + random() % 4));
        if (const auto all = lesson->Storyboards()->All(); all.size() > usualPages) {
            pageEditor->RemoveStoryboard(all.front(), false);
            lesson->Storyboards()->Remove(all.front()->SBID());
        }
        const Text text = LessonText::Save(*lesson);
        row.pages = stored;
        row.tried = text;
        if (connection.Execute(u"UPDATE velmoraLessons SET lessonData = " + QuoteSQLString(text) + where) != 1)
            ReportFault(ToUtf8(*id) + " is not there to be updated");
        row.pages = text;
        row.tried.reset();
    });
}

bool Author::TakeLock() {
    const Text* const id = RandomLesson();
    if (!id || locks.size() > 2 * usualLocks) return true;
    const Text session = name + u"-" + ToText(++lastLock);
    Lock& lock = locks[session] = {*id, true};
    return Asks([&] {
        Connection connection;
        connection.Open(connectionString);
        connection.Execute(u"INSERT INTO velmoraUserLocks (lessonID, username, machineName, machineIP, sessionID, "
                           u"lockDate, lockType) VALUES (" +
                           QuoteSQLString(*id) + u", " + QuoteSQLString(name) + u", 'PC', '127.0.0.1', " +
                           QuoteSQLString(session) + u", " + modDB::FormatSQLDate(Now(), false) + u", " +
                           ToText(lltEditLesson) + u")");
        lock.isUnclear = false;
    });
}

bool Author::ListLocks() {
    if (!Reports(u"Refresh", [this] {
            manager.Refresh();
            return received.empty();
        }))
        return false;
    std::set<Text> listed;
    for (const LockRecord& record : manager.Records()) listed.insert(record.sessionID);
    if (static_cast<size_t>(manager.LockCount()) != listed.size())
        ReportFault("the list shows other locks than were read");
    size_t kept = 0, unclear = 0;
    for (auto lock = locks.begin(); lock != locks.end();) {
        auto& [session, said] = *lock;
        const bool isThere = listed.erase(session) != 0, isOnLesson = rows.contains(said.lessonID);
        const bool wasToGo = unclearDeletes.contains(session);
        if (wasToGo && isOnLesson) ++(isThere ? kept : unclear);
        if (isThere) said.isUnclear = false;
        // The sweeping author takes those on lessons that were deleted.
        if (!isThere && !said.isUnclear && !wasToGo && isOnLesson)
            ReportFault("the lock " + ToUtf8(session) + " is lost");
        lock = isThere ? std::next(lock) : locks.erase(lock);
    }
    unclearDeletes.clear();
    if (kept > 0 && unclear > 0) ReportFault("some locks of one failed delete went and some did not");
    if (!listed.empty()) ReportFault("the lock " + ToUtf8(*listed.begin()) + " was cleared, and it is there");
    return true;
}

bool Author::ClearLocks() {
    std::set<Text> chosen;
    for (size_t item = 0; item < list->Items().size(); ++item) {
        if (random() % usualLocks == 0) continue;
        list->SetSelected(item, true);
        chosen.insert(manager.Records()[static_cast<size_t>(list->Items()[item].tag)].sessionID);
    }
    received.clear();
    if (locks.size() >= usualLocks) manager.DeleteSelected();
    if (received.starts_with(u"DeleteSelected")) {
        unclearDeletes = chosen;
    } else if (locks.size() >= usualLocks) {
        for (const Text& session : chosen) locks.erase(session);
    }
    if (received.empty()) return true;
    // What follows the deletion may fail, too.
    if (received != u"DeleteSelected" && received != u"Refresh")
        ReportFault("one failure is reported as \"" + ToUtf8(received) + "\"");
    ++refused;
    return false;
}

bool Author::DeleteStaleLocks() {
    return Reports(u"Refresh",
                   [this] {
                       staleLocks.Refresh();
                       return received.empty();
                   }) &&
           Reports(u"DeleteSelected", [this] {
               for (size_t item = 0; item < staleList->Items().size(); ++item) staleList->SetSelected(item, true);
               staleLocks.DeleteSelected();
               if (received == u"Refresh") received = u"DeleteSelected"; // it was deleted, and cannot be shown
               return received.empty();
           });
}

void Author::Verify() {
    if (!LoadTree() || !ListLocks() || !DeleteStaleLocks() || !ListLocks())
        ReportFault("the server does not work at the end");
    for (const auto& [session, lock] : locks) {
        if (!rows.contains(lock.lessonID)) ReportFault("a lock on a lesson that is gone cannot be cleared");
    }
    Asks([this] {
        Recordset found;
        found.Open(u"SELECT lessonID, lessonData FROM velmoraLessons", connectionString);
        for (; !found.Eof(); found.MoveNext()) {
            const auto row = rows.find(Text(found.FieldText(0)));
            if (row == rows.end()) continue;
            const Text stored(found.FieldText(1));
            if (stored != row->second.pages && stored != row->second.tried)
                ReportFault("the pages of " + ToUtf8(row->first) + " are not those that were saved");
        }
    });
}

void Author::ReleaseAll() {
    editor->Clear();
    pageEditor->SetLesson(nullptr);
    for (const auto& shown : {list, staleList}) shown->ClearItems();
}

} // namespace dax::soak
