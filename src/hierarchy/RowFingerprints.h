// Hashes of the rows of velmoraLessons as they were last read or written, a few bytes for each: enough to detect
// what another author has changed since.
#pragma once

#include "base/IDCollection.h"
#include "data/Connection.h"
#include "tree/NodeTree.h"

#include <vector>

namespace dax {

class RowFingerprints {
public:
    struct Row {
        TextView id, title, identifier, parentID;
        int64_t indentLevel = 0, sortPosition = 0, type = 0;
    };

    // In any order.
    void Add(const Row& row);
    size_t Count() const { return rows.size(); }

    // Inside a transaction: blocks other writers until its end, reads the rows and compares. Throws Error with
    // ErrorNumbers::Conflict, which names up to ten entries and what happened to each, when they are not the same.
    // Titles of deleted entries come from the tree.
    void Check(Connection& connection, const NodeTree& tree);

private:
    struct Fingerprint {
        uint64_t id;
        uint32_t texts; // title, identifier and type
        uint32_t place; // parent, depth and position
    };
    static Fingerprint Of(const Row& row);

    std::vector<Fingerprint> rows;
};

} // namespace dax
