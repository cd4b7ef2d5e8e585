#include "Course.h"

#include "Command.h"
#include "Console.h"
#include "Suggestion.h"
#include "base/modGeneric.h"
#include "tree/modTVW.h"

#include <algorithm>

namespace dax::cli {

namespace {

constexpr size_t MaxNamed = 5;

} // namespace

Course::Course(const Target& target) : editor(GroupEditor::Create()) {
    editor->Error.AddPermanent([this](int32_t number, const Text& description, const Text&) {
        failure = {number, description};
    });
    editor->SetDatabaseTitle(target.shown);
    editor->SetConnectionString(target.connection);
    const auto progress = std::make_shared<Progress>(u"reading the hierarchy", 0);
    editor->SetProgress([progress](int64_t done, int64_t) { progress->Report(static_cast<size_t>(done)); });
    if (!editor->LoadDatabase() || Tree().IsEmpty()) Fail();
}

void Course::Fail() {
    CheckInterrupt(); // which the editor reports as any other failure
    Text hint;
    if (failure.Number() == ErrorNumbers::NoTable || failure.Number() == ErrorNumbers::SyntaxOrColumn) {
        hint = u"\n'dax validate' checks whether it is a content database.";
    }
    throw Error(failure.Number(), failure.Description() + hint);
}

Node* Course::TryFind(const Text& name) {
    if (name == TopName) return &Root();
    if (Node* const node = modTVW::GetNodeByKey(Tree(), name)) return node;
    const std::vector<Node*> found = WithIdentifier(name);
    return found.size() == 1 ? found.front() : nullptr;
}

Node& Course::Find(const Text& name) {
    if (Node* const node = TryFind(name)) return *node;
    const std::vector<Node*> found = WithIdentifier(name);
    if (found.empty()) {
        Suggestion suggestion(name);
        for (const Node* node = modTVW::GetNextNode(&Root()); node; node = modTVW::GetNextNode(node)) {
            suggestion.Offer(node->Tag());
            suggestion.Offer(node->Key());
        }
        const Text question = suggestion.Question();
        throw RefusedError(u"There is no entry '" + name + u"'." +
                           (question.empty()
                                ? u" Give a lessonID, or an identifier that only one entry has; 'dax find' "
                                  u"looks for a text."
                                : question));
    }
    Text message = CountText(static_cast<int64_t>(found.size()), u"entry") + u" have the identifier '" + name +
                   u"'. Give the lessonID of the one that you mean:";
    for (size_t i = 0; i < std::min(found.size(), MaxNamed); ++i) {
        message += u"\n  " + found[i]->Key() + u"  " + OneLine(Shorten(found[i]->Caption(), 60));
    }
    throw RefusedError(found.size() > MaxNamed ? message + u"\n  …" : message);
}

std::vector<Node*> Course::WithIdentifier(const Text& identifier) {
    if (identifier.empty()) return {};
    if (!hasIdentifiers) {
        hasIdentifiers = true;
        for (const Node* node = &Root(); node; node = modTVW::GetNextNode(node)) IdentifierChanged(*node);
    }
    std::vector<Node*> nodes;
    const auto [first, last] = identifiers.equal_range(identifier);
    for (auto entry = first; entry != last; ++entry) {
        Node* const node = modTVW::GetNodeByKey(Tree(), entry->second);
        const bool isNew = node && std::find(nodes.begin(), nodes.end(), node) == nodes.end();
        if (isNew && node->Tag() == identifier) nodes.push_back(node);
        if (nodes.size() > MaxNamed) break;
    }
    return nodes;
}

void Course::IdentifierChanged(const Node& node) {
    if (hasIdentifiers && !node.Tag().empty()) identifiers.emplace(node.Tag(), node.Key());
}

void Course::Save() {
    InterruptScope saving(u"Nothing was saved.");
    const auto progress = std::make_shared<Progress>(u"saving the hierarchy", static_cast<size_t>(Tree().Count()));
    editor->SetProgress([progress, &saving](int64_t done, int64_t total) {
        progress->Report(static_cast<size_t>(done));
        if (done >= total) saving.Finish(); // only the commit is left
    });
    const bool isSaved = editor->SaveDatabase();
    editor->SetProgress({});
    if (!isSaved) Fail();
}

Text TypeName(LessonTypes type) {
    switch (type) {
    case ltDatabase:
        return u"database";
    case ltGroup:
        return u"group";
    case ltLesson:
        return u"lesson";
    default:
        return u"other";
    }
}

void Contents::Add(LessonTypes type) { ++(type == ltGroup ? groups : type == ltLesson ? lessons : others); }

void Contents::Add(const Contents& more) {
    groups += more.groups;
    lessons += more.lessons;
    others += more.others;
}

std::unordered_map<const Node*, Contents> CountContents(const NodeTree& tree) {
    std::unordered_map<const Node*, Contents> counts;
    std::vector<const Node*> order;
    for (const Node* node = tree.First(); node; node = modTVW::GetNextNode(node)) order.push_back(node);
    // Backwards: each entry is complete before it is added to the one that holds it.
    for (size_t i = order.size(); i-- > 0;) {
        const Node* const node = order[i];
        if (!node->Parent()) continue;
        Contents& above = counts[node->Parent()];
        above.Add(HierarchyRows::TypeOf(*node));
        if (node->FirstChild()) above.Add(counts[node]);
    }
    return counts;
}

Text ContentsText(const Contents& contents) {
    Text text;
    const auto add = [&text](int32_t count, const Text& word) {
        if (count > 0) text += (text.empty() ? u"" : u", ") + CountText(count, word);
    };
    add(contents.groups, u"group");
    add(contents.lessons, u"lesson");
    add(contents.others, u"other");
    return text.empty() ? u"empty" : text;
}

Text CountText(int64_t count, const Text& word) {
    if (count == 1) return u"1 " + word;
    return ToText(count) + u" " + (word.ends_with(u'y') ? word.substr(0, word.size() - 1) + u"ie" : word) + u"s";
}

} // namespace dax::cli
