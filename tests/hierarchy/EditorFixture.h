// A GroupEditor on a content database of its own, with a log of its events.
#pragma once

#include "support/CourseRows.h"

#include "data/Recordset.h"
#include "data/Schema.h"
#include "data/modDB.h"
#include "hierarchy/GroupEditor.h"

#include <map>

namespace dax::test {

struct EmptyCourse : TestDatabase {
    EmptyCourse() : TestDatabase(Engine::SQLite) { CreateTables(*this); }
};

inline Text RowStatement(const Text& id, const Text& title, const Text& parent, int indent, int position, int type,
                         const Text& properties = {}) {
    return LessonRow(id, title, u"id " + id, parent, indent, position, type, properties);
}

// All rows, each column followed by a bar, sorted by identifier: what a save must leave.
inline std::map<Text, Text> ReadRows(const Text& connectionString) {
    Recordset rows;
    rows.Open(u"SELECT lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, sortPosition, lessonType, "
              u"lessonData FROM velmoraLessons",
              connectionString);
    std::map<Text, Text> all;
    for (; !rows.Eof(); rows.MoveNext()) {
        Text& row = all[Text(rows.FieldText(0))];
        for (size_t column = 1; column < 8; ++column) row += Text(rows.FieldText(column)) + u"|";
    }
    return all;
}

// A node and its next siblings as text: key(children).
inline Text ShapeFrom(const Node* node) {
    Text shape;
    for (; node; node = node->Next()) {
        shape += node->Key();
        if (node->FirstChild()) shape += u"(" + ShapeFrom(node->FirstChild()) + u")";
        if (node->Next()) shape += u" ";
    }
    return shape;
}

// An editor that records every event.
struct RecordingEditor {
    RecordingEditor() {
        editor->AfterSelectionChange.AddPermanent([this](const Text& id) { received += u"S" + id + u" "; });
        editor->DataChanged.AddPermanent([this] { received += u"D "; });
        editor->DeleteRequest.AddPermanent([this] { received += u"X "; });
        editor->DblClick.AddPermanent([this] { received += u"2 "; });
        editor->Error.AddPermanent([this](int32_t number, const Text& description, const Text& method) {
            received += u"E" + method + u" ";
            errorNumber = number;
            error = description;
        });
    }
    Text Take() { return std::exchange(received, {}); }
    Text Shape() const { return ShapeFrom(editor->Tree().First()); }

    std::shared_ptr<GroupEditor> editor = GroupEditor::Create();
    Text received, error;
    int32_t errorNumber = 0;
};

// g(a b s(c d)) h: two groups, a subgroup, four lessons.
inline std::vector<Text> SampleRows() {
    return {RowStatement(u"h", u"H", u"", 1, 2, 0),
            RowStatement(u"g", u"G:1", u"", 1, 1, 0),
            RowStatement(u"b", u"O'Neil", u"g", 2, 2, 1, u"StoryboardCount=4\nClassification=secret"),
            RowStatement(u"a", u"A", u"g", 2, 1, 1, u"StoryboardCount=3\nClassification=secret\nTitle=stored"),
            RowStatement(u"s", u"S", u"g", 2, 3, 0),
            RowStatement(u"d", u"D", u"s", 3, 2, 7),
            RowStatement(u"c", u"C", u"s", 3, 1, 1, u"StoryboardCount=2\nClassification=public")};
}

} // namespace dax::test
