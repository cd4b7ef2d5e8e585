// What all targets share: bytes that decide what is done, and what every tree must be at every moment.
#pragma once

#include "base/Error.h"
#include "support/TestDatabases.h"
#include "tree/NodeTree.h"
#include "tree/modTVW.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace dax::fuzz {

using Input = std::span<const uint8_t>;

// Decisions, one byte each; 0 when none is left.
class Bytes {
public:
    explicit Bytes(Input input) : input(input) {}
    bool AtEnd() const { return input.empty(); }
    size_t Below(size_t number) {
        if (input.empty()) return 0;
        const size_t value = input.front() % number;
        input = input.subspan(1);
        return value;
    }
    template <typename Item, size_t count>
    const Item& OneOf(const Item (&items)[count]) {
        return items[Below(count)];
    }

private:
    Input input;
};

// A violated rule; what a fuzzer searches for.
struct Finding : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void Require(bool condition, const std::string& promise) {
    if (!condition) throw Finding(promise);
}
template <typename Is>
void RequireEqual(const Is& is, const std::type_identity_t<Is>& shouldBe, const std::string& what) {
    if (is == shouldBe) return;
    throw Finding(what + " is\n  " + testing::PrintToString(is) + "\nand should be\n  " +
                  testing::PrintToString(shouldBe));
}

// Links agree in both directions, keys find their nodes, the selected node is in the tree and visible, the count is
// right.
inline void CheckTree(const NodeTree& tree) {
    int32_t walked = 0, collected = 0;
    bool hasSelected = !tree.Selected();
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) {
        const Node *const next = node->Next(), *const first = node->FirstChild(), *const last = node->LastChild();
        Require(++walked <= tree.Count(), "the tree is finite");
        hasSelected = hasSelected || node == tree.Selected();
        Require(node->Key().empty() || tree.Find(node->Key()) == node, "a key finds its node");
        Require(!next || (next->Previous() == node && next->Parent() == node->Parent()), "siblings know each other");
        Require(!first == !last && (!first || (first->Parent() == node && !first->Previous())), "the first child");
        Require(!last || (last->Parent() == node && !last->Next()), "the last child");
    }
    for (const Node* node = tree.FirstInCollection(); node; node = node->NextInCollection()) ++collected;
    Require(hasSelected, "the selected node is in the tree");
    Require(walked == tree.Count() && collected == tree.Count(), "the nodes are counted right");
    for (const Node* up = tree.Selected() ? tree.Selected()->Parent() : nullptr; up; up = up->Parent())
        Require(up->IsExpanded(), "the selected node is in sight");
}

// Rounds of something that is done to a control, in which everything is checked. In some inputs, which their first byte
// chooses, the host does more inside the events, or releases the control there; then only what holds in any case is
// checked.
template <typename Control>
class ControlDriver {
public:
    void Run() {
        while (!bytes.AtEnd() && control) Round();
        if (control) Finish();
    }

protected:
    ControlDriver(Input input, std::shared_ptr<Control> made)
        : bytes(input), callsBack(bytes.Below(3) == 0), control(std::move(made)) {}
    virtual ~ControlDriver() = default;
    virtual void Do() = 0;
    virtual void Round() = 0;
    virtual void Finish() = 0;

    void Step() {
        if (!control) return;
        ++depth;
        try {
            Do();
        } catch (const Error&) {
            // A listener that calls back may be refused; a host alone never is.
            if (!callsBack) throw;
        }
        --depth;
    }
    void CallBack() {
        if (callsBack && depth < 3 && bytes.Below(3) == 0) Step();
        if (callsBack && bytes.Below(40) == 39) control.reset();
    }
    template <typename... Events>
    void CallBackIn(Events&... events) {
        (events.AddPermanent([this](const auto&...) { CallBack(); }), ...);
    }

    Bytes bytes;
    bool callsBack;
    int depth = 0;
    std::shared_ptr<Control> control;
};

// What can be driven. Each does what the input says, and throws a Finding where a rule is violated.
struct Target {
    const char* name;
    void (*drive)(Input);
    int inputs;     // at each test run, besides the seeds
    size_t longest; // of an input made up
};
std::span<const Target> Targets();

void DriveConnectionString(Input input);
void DriveStatement(Input input);
void DriveProperties(Input input);
void DriveLesson(Input input);
void DriveHierarchy(Input input);
void DriveHierarchyOn(Input input, const test::TestDatabase& database); // with the tables, whatever their rows
void DriveLessonMap(Input input);
void DriveLocks(Input input);
// The first byte chooses a course file, what follows changes it.
void DriveFile(Input input);

} // namespace dax::fuzz
