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
    bool isNew = false; // the target does not have it yet
    int64_t rows = 0;   // of the source
};

// The rows go in one transaction, together with the tables where the engine can do that; where creating a table ends a
// transaction, TablePublication creates what is missing. So until Finish other connections see nothing of the copy, and
// whatever ends it before leaves the target as it was. The source is read within one transaction that can change
// nothing; rows that other programs write meanwhile are not copied.
class DatabaseCopy {
public:
    struct Endpoint {
        Text connectionString;
        Text shown; // for messages
    };
    // Opens both and reads their tables. Throws Error, here and later, with the name of the endpoint at its beginning.
    DatabaseCopy(Endpoint from, Endpoint to);
    // Rolls back unless finished.
    ~DatabaseCopy();
    DatabaseCopy(const DatabaseCopy&) = delete;
    DatabaseCopy& operator=(const DatabaseCopy&) = delete;

    bool HasContent() const;   // the source is a content database
    bool HasConnector() const; // or a connector database, or both in one
    const std::vector<CopiedTable>& Tables() const { return tables; }
    size_t RowsInAll() const;
    // The first table of the target that has rows, which Write deletes; empty when nothing would be lost.
    const Text& TableWithRows() const { return tableWithRows; }
    // Tables, and columns as "table.column", that are not in the schema and stay as they are.
    const std::vector<Text>& UnknownInSource() const { return unknownInSource; }
    const std::vector<Text>& UnknownInTarget() const { return unknownInTarget; }

    // Writes everything, then reads source and target side by side and compares every value. `progress` receives the
    // rows written and compared so far, of twice RowsInAll in the end.
    void Write(const std::function<void(size_t done)>& progress);
    // Commits.
    void Finish();
    // After Finish has thrown: the connection was lost, and the server may have stored all or nothing.
    bool IsInDoubt() const { return isInDoubt; }

private:
    void ReadSource();
    void ReadTarget();
    void CreateTargetTables();
    void WriteRows(CopiedTable& copied, const std::function<void()>& next);
    void Compare(const CopiedTable& copied, const std::function<void()>& next);
    TableReader ReaderOfSource(const CopiedTable& copied);
    void AdvanceGenerator(const CopiedTable& copied);
    bool IsTargetConnected() noexcept;
    std::vector<TablePublication::Part> PartsToPublish() const;
    Text NameInTarget(const CopiedTable& copied) const;

    Endpoint from, to;
    Connection source, target;
    const CopyRules* sourceRules = nullptr;
    const CopyRules* targetRules = nullptr;
    std::vector<CopiedTable> tables;
    std::vector<const Schema::Table*> present; // of ours in the target
    std::vector<Text> unknownInSource, unknownInTarget;
    int64_t lastGenerated = 0, highestNumber = 0; // of velmoraAutonumbers; of its rows
    Text tableWithRows;
    bool isPublished = false; // by TablePublication, since tables are missing
    bool isInDoubt = false;
    std::chrono::seconds timeOfWriting{};
};

} // namespace dax
