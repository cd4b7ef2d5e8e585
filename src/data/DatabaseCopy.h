// All rows of a content or connector database put into another database, on whatever engine each of them is.
#pragma once

#include "data/Connection.h"
#include "data/Schema.h"

#include <functional>
#include <optional>

namespace dax {

class TableDigest;
struct CopyRules;

struct CopiedTable {
    const Schema::Table* table;
    bool isMade = false; // it is not there yet
    int64_t rows = 0;    // of the source
};

// The rows go in one transaction, together with the tables where the engine can do that; where making a table ends a
// transaction, tables are made under other names and renamed at once after the commit. So until Finish nobody sees
// anything of the copy, and whatever ends it before leaves the target as it was. The source is read within one
// transaction that can change nothing; a row that another program writes meanwhile is not copied.
class DatabaseCopy {
public:
    struct Place {
        Text connectionString;
        Text shown; // for messages
    };
    // Opens both and looks what there is. Throws Error, here and later, with the place in front.
    DatabaseCopy(Place from, Place to);
    // Undoes what was not finished.
    ~DatabaseCopy();
    DatabaseCopy(const DatabaseCopy&) = delete;
    DatabaseCopy& operator=(const DatabaseCopy&) = delete;

    bool HasContent() const;   // the source is a content database
    bool HasConnector() const; // or a connector database, or both in one
    const std::vector<CopiedTable>& Tables() const { return tables; }
    size_t RowsInAll() const;
    // The first table of the target that has rows, which Write deletes; empty when nothing would be lost.
    const Text& TakenTable() const { return taken; }
    // Tables, and columns as "table.column", that are none of ours and stay as they are.
    const std::vector<Text>& BeyondSource() const { return beyondSource; }
    const std::vector<Text>& BeyondTarget() const { return beyondTarget; }

    // Writes everything, reads it again and compares every value. `progress` hears the rows written and compared so
    // far, of twice RowsInAll in the end.
    void Write(const std::function<void(size_t done)>& progress);
    // Makes it last.
    void Finish();

private:
    void ReadSource();
    void ReadTarget();
    void MakeTables();
    TableDigest WriteRows(CopiedTable& copied, const std::function<void()>& next);
    void Compare(const CopiedTable& copied, const TableDigest& expected, const std::function<void()>& next);
    void GoOnDrawing(const CopiedTable& copied);
    void Undo() noexcept;
    Text NameInTarget(const CopiedTable& copied) const;

    Place from, to;
    Connection source, target;
    const CopyRules* sourceRules = nullptr;
    const CopyRules* targetRules = nullptr;
    std::vector<CopiedTable> tables;
    std::vector<const Schema::Table*> present; // of ours in the target
    std::vector<Text> beyondSource, beyondTarget, staged;
    std::optional<int64_t> lastDrawn;
    Text taken;
    bool isFinished = false;
};

} // namespace dax
