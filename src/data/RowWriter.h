// Many rows put into one table, in the way in which the engine takes them fastest from a program.
#pragma once

#include "base/Value.h"

#include <memory>
#include <span>
#include <vector>

namespace dax {

class Session;

// A value to be written. `text` also holds a number and a date in the form in which they were read.
struct RowField {
    enum class Kind { Null, Number, Date, Text };
    Kind kind = Kind::Null;
    TextView text{};
    int64_t number = 0;
    DateTime date{};
};

class RowWriter {
public:
    virtual ~RowWriter() = default;
    // One value for each column. What it throws may be about a row that was put before.
    virtual void Put(std::span<const RowField> row) = 0;
    // Sends what is still waiting.
    virtual void Finish() = 0;
};

struct RowColumn {
    Text name;
    RowField::Kind kind; // of its values, but for NULL and what does not fit
};

// For sessions through a driver: statements of many rows, of bounded size, where the engine takes literals in any
// script; parameters otherwise.
std::unique_ptr<RowWriter> NewStatementWriter(Session& session, const Text& table,
                                              const std::vector<RowColumn>& columns);

} // namespace dax
