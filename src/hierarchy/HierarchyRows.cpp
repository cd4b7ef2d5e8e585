#include "hierarchy/HierarchyRows.h"

#include "base/modGeneric.h"
#include "data/Recordset.h"
#include "data/modDB.h"

namespace dax::HierarchyRows {

using modGeneric::VariantToLong;

namespace {

constexpr size_t batchSize = 100; // statements built at a time: few enough to stay in the cache until they are sent
constexpr int64_t progressStep = 1000;

Text NameRow(int64_t row, TextView title) {
    return u"Row " + ToText(row) + u" of velmoraLessons (title '" + Text(Shorten(title, 100)) + u"')";
}

void AppendDoubled(Text& text, TextView raw) {
    for (;;) {
        const size_t apostrophe = raw.find(u'\'');
        if (apostrophe == TextView::npos) break;
        text.append(raw.substr(0, apostrophe + 1)) += u'\'';
        raw.remove_prefix(apostrophe + 1);
    }
    text.append(raw);
}

// The identifiers are not doubled, deliberately: one with an apostrophe breaks the statement.
void WriteDelete(Text& statement, const Text& id) {
    statement.append(u"DELETE FROM velmoraLessons WHERE lessonID = '").append(id).append(u"'");
}

void WriteInsert(Text& statement, const Text& id) {
    statement.append(u"INSERT INTO velmoraLessons (lessonID, lessonTitle, lessonIdentifier, parentID, indentLevel, "
                     u"sortPosition, lessonType, lessonProperties, guideData, lessonData)  VALUES (");
    statement.append(modDB::QuoteSQLString(id)).append(u", '', '', '', -1, -1, -1, '', '', '')");
}

void WriteUpdate(Text& statement, const Node& node) {
    statement.append(u"UPDATE velmoraLessons SET lessonTitle = '");
    AppendDoubled(statement, node.Caption());
    statement.append(u"', lessonIdentifier = '");
    AppendDoubled(statement, node.Tag());
    statement.append(u"', parentID = '").append(node.Parent()->Key());
    statement.append(u"', indentLevel = ");
    AppendNumber(statement, node.Depth());
    statement.append(u", sortPosition = ");
    AppendNumber(statement, node.Position());
    statement.append(u", lessonType = ");
    AppendNumber(statement, TypeOf(node));
    statement.append(u" WHERE lessonID = '").append(node.Key()).append(u"'");
}

// Collects statements into batches; the memory of their texts is reused.
class Batch {
public:
    Batch(Connection& connection, int64_t total, const HierarchyProgress& progress)
        : connection(connection), total(total), progress(progress) {}

    Text& Next() {
        if (used == batchSize) {
            Flush();
            if (progress && done % progressStep == 0) progress(done, total);
        }
        if (used == statements.size()) statements.emplace_back();
        Text& statement = statements[used++];
        statement.clear();
        return statement;
    }
    void Finish() {
        Flush();
        if (progress) progress(done, total);
    }

private:
    void Flush() {
        connection.ExecuteAll(std::span(statements).first(used));
        done += static_cast<int64_t>(used);
        used = 0;
    }

    Connection& connection;
    std::vector<Text> statements;
    size_t used = 0;
    int64_t done = 0, total;
    const HierarchyProgress& progress;
};

void SaveInto(Connection& connection, NodeTree& tree, const IDCollection& deleted, const IDCollection& added,
              RowFingerprints& written, const HierarchyProgress& progress) {
    const size_t total = deleted.Count() + added.Count() + static_cast<size_t>(tree.Count()) - 1;
    Batch batch(connection, static_cast<int64_t>(total), progress);
    for (const Text& id : deleted) WriteDelete(batch.Next(), id);
    for (const Text& id : added) WriteInsert(batch.Next(), id);
    tree.Number();
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) {
        if (!node->Parent()) continue;
        WriteUpdate(batch.Next(), *node);
        written.Add({node->Key(), node->Caption(), node->Tag(), node->Parent()->Key(), node->Depth(), node->Position(),
                     TypeOf(*node)});
    }
    batch.Finish();
    connection.CommitTrans();
}

} // namespace

int PictureOf(int32_t lessonType) {
    return lessonType == ltGroup ? picGroup : lessonType == ltLesson ? picLesson : picOther;
}

LessonTypes TypeOf(const Node& node) {
    return node.Parent() ? static_cast<LessonTypes>(node.Image() - picGroup) : ltDatabase;
}

void Load(const Text& connectionString, NodeTree& tree, LessonPropertyStore& store, RowFingerprints& known,
          const HierarchyProgress& progress) {
    Recordset rows;
    rows.Open(u"SELECT lessonID, lessonTitle, lessonIdentifier, lessonProperties, parentID, indentLevel, "
              u"sortPosition, lessonType FROM velmoraLessons ORDER BY indentLevel, sortPosition",
              connectionString, adOpenForwardOnly, adLockReadOnly, adOptionUnspecified);
    enum Columns : size_t { colID, colTitle, colIdentifier, colProperties, colParent, colIndent, colSort, colType };
    Node* const root = tree.First();
    Node* parent = root; // mostly that of the row before too
    int64_t row = 0;
    for (; !rows.Eof(); rows.MoveNext()) {
        ++row;
        const TextView id = rows.FieldText(colID), title = rows.FieldText(colTitle);
        const TextView identifier = rows.FieldText(colIdentifier);
        if (id.empty()) throw Error(ErrorNumbers::Automation, NameRow(row, title) + u" has no lessonID.");
        const TextView parentID = rows.FieldText(colParent);
        if (!parent->HasKey(parentID)) parent = tree.Find(parentID);
        if (!parent) parent = root;
        const Value type = rows.Field(colType);
        try {
            tree.Add(parent, InsertPosition::LastChild, id, title, PictureOf(VariantToLong(type, ltInvalid)),
                     identifier);
        } catch (const Error& error) {
            throw Error(error.Number(), NameRow(row, title) + u": " + error.Description());
        }
        // The default differs from the one above, deliberately.
        store.Add(id, rows.FieldText(colProperties), title, identifier, VariantToLong(type, ltGroup));
        known.Add({id, title, identifier, parentID, VariantToLong(rows.Field(colIndent), 0),
                   VariantToLong(rows.Field(colSort), 0), VariantToLong(type, 0)});
        if (progress && row % progressStep == 0) progress(row, 0);
    }
    if (progress) progress(row, row);
}

void Save(const Text& connectionString, NodeTree& tree, const IDCollection& deleted, const IDCollection& added,
          RowFingerprints& known, bool checks, const HierarchyProgress& progress) {
    Connection connection;
    connection.Open(connectionString);
    RowFingerprints written;
    try {
        connection.BeginTrans();
        if (checks) known.Check(connection, tree);
        SaveInto(connection, tree, deleted, added, written, progress);
    } catch (...) {
        modDB::CloseConnectionObjects(nullptr, &connection, true);
        throw;
    }
    // What is committed is saved, even when closing fails.
    modDB::CloseConnectionObjects(nullptr, &connection, false);
    known = std::move(written);
}

} // namespace dax::HierarchyRows
