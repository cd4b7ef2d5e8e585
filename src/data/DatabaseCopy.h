// All rows of a content or connector database put into another database, on whatever engine each of them is.
#pragma once

#include "data/Connection.h"
#include "data/Schema.h"
#include "data/TablePublication.h"

#include <chrono>
#include <functional>

namespace dax {

struct CopyRules;
class TableReader;

struct CopiedTable {
    const Schema::Table* table;
    bool isMade = false; // it is not there yet
    int64_t rows = 0;    // of the source
};

// The rows go in one transaction, together with the tables where the engine can do that; where making a table ends a
// transaction, TablePublication makes what is missing. So until Finish other connections see nothing of the copy, and
// whatever ends it before leaves the target as it was. The source is read within one transaction that can change
// nothing; a row that another program writes meanwhile is not copied.
class DatabaseCopy {
public:
    struct Place {
        Text connectionString;
        Text shown; // for messages
    };
    // Opens both and looks what there is. Throws Error, here and later, with the place in front.
    DatabaseCopy(Place from, Place to);
    // Gives up what was not finished.
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

    // Writes everything, then reads source and target side by side and compares every value. `progress` receives the
    // rows written and compared so far, of twice RowsInAll in the end.
    void Write(const std::function<void(size_t done)>& progress);
    // Makes it last.
    void Finish();
    // After Finish has thrown: the server was lost, and may have done all or nothing.
    bool IsInDoubt() const { return isInDoubt; }

private:
    void ReadSource();
    void ReadTarget();
    void MakePlaces();
    void WriteRows(CopiedTable& copied, const std::function<void()>& next);
    void Compare(const CopiedTable& copied, const std::function<void()>& next);
    TableReader ReaderOfSource(const CopiedTable& copied);
    void AdvanceGenerator(const CopiedTable& copied);
    bool IsTargetConnected() noexcept;
    std::vector<TablePublication::Part> PartsToPublish() const;
    Text NameInTarget(const CopiedTable& copied) const;

    Place from, to;
    Connection source, target;
    const CopyRules* sourceRules = nullptr;
    const CopyRules* targetRules = nullptr;
    std::vector<CopiedTable> tables;
    std::vector<const Schema::Table*> present; // of ours in the target
    std::vector<Text> beyondSource, beyondTarget;
    int64_t lastGenerated = 0, highestNumber = 0; // of velmoraAutonumbers; of its rows
    Text taken;
    bool isPublished = false; // by TablePublication, since tables are missing
    bool isInDoubt = false;
    std::chrono::seconds timeOfWriting{};
};

} // namespace dax
