#include "Editing.h"

#include "Command.h"
#include "Console.h"
#include "LockList.h"
#include "StoredLesson.h"
#include "Suggestion.h"
#include "content/Utility.h"
#include "tree/modTVW.h"

#include <optional>

namespace dax::cli {

namespace {

constexpr size_t LongestID = 255;

Text Name(const Node& node) { return u"'" + OneLine(Shorten(node.Caption(), 60)) + u"'"; }

LessonTypes TypeNamed(const Text& name) {
    if (name == u"group") return ltGroup;
    if (name == u"lesson") return ltLesson;
    throw UsageError(u"'" + name + u"' is not a type. Types are group and lesson.");
}

bool IsPlace(const Text& word) { return word == u"in" || word == u"before" || word == u"after"; }

// The next word of a line; `at` is after it afterwards. Nothing at the end and before a comment.
std::optional<Text> NextWord(TextView line, size_t& at, size_t number) {
    while (at < line.size() && (line[at] == u' ' || line[at] == u'\t' || line[at] == u'\r')) ++at;
    if (at == line.size() || line[at] == u'#') return {};
    Text word;
    if (line[at] != u'"') {
        const size_t end = std::min(line.find_first_of(u" \t\r", at), line.size());
        word = line.substr(at, end - at);
        at = end;
        return word;
    }
    for (++at; at < line.size() && line[at] != u'"'; ++at) {
        const bool isEscaped =
            line[at] == u'\\' && at + 1 < line.size() && (line[at + 1] == u'"' || line[at + 1] == u'\\');
        if (isEscaped) ++at;
        word += line[at];
    }
    if (at == line.size()) {
        throw UsageError(u"Line " + ToText(static_cast<long long>(number)) + u": A quotation mark is missing.");
    }
    ++at;
    return word;
}

} // namespace

const TextView EditGrammar = u"The commands, one on the command line or one per line of the file:\n"
                             u"  add group|lesson TITLE [identifier TEXT] [id ID] [in|before|after ENTRY]\n"
                             u"  update ENTRY [title TEXT] [identifier TEXT] [type group|lesson]\n"
                             u"  remove ENTRY [keep-children]\n"
                             u"  move ENTRY up|down|indent|outdent\n"
                             u"  move ENTRY in|before|after ENTRY\n"
                             u"ENTRY is a lessonID, or an identifier that only one entry has; / is the top. What is\n"
                             u"added without a place comes last at the top; \"in\" makes it the last of a group.\n"
                             u"In a file, words with blanks are put in double quotes, and # begins a comment.";

std::vector<EditLine> ReadEditLines(TextView text) {
    std::vector<EditLine> lines;
    for (size_t number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find(u'\n'), text.size());
        const TextView line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        EditLine read{number, {}};
        size_t at = 0;
        while (auto word = NextWord(line, at, number)) read.words.push_back(std::move(*word));
        if (!read.words.empty()) lines.push_back(std::move(read));
    }
    return lines;
}

// The words of one command, taken one after the other.
class Editing::Words {
public:
    explicit Words(std::span<const Text> all) : words(all) {}

    bool AtEnd() const { return at == words.size(); }
    const Text& Next(TextView what) {
        if (AtEnd()) {
            throw UsageError(u"'" + (words.empty() ? Text() : words.front()) + u"' needs " + Text(what) +
                             (at > 1 ? u" after '" + words[at - 1] + u"'." : u"."));
        }
        return words[at++];
    }
    [[noreturn]] void Reject(const Text& word) const {
        throw UsageError(u"'" + words.front() + u"' has no argument '" + word + u"'.");
    }
    void End() {
        if (!AtEnd()) Reject(words[at]);
    }

private:
    std::span<const Text> words;
    size_t at = 0;
};

void Editing::Do(std::span<const Text> all) {
    Words words(all);
    const Text& command = words.Next(u"a command");
    if (command == u"add") {
        Add(words);
    } else if (command == u"update") {
        Update(words);
    } else if (command == u"remove") {
        Remove(words);
    } else if (command == u"move") {
        Move(words);
    } else {
        Suggestion suggestion(command);
        for (const TextView known : {u"add", u"update", u"remove", u"move"}) suggestion.Offer(known);
        throw UsageError(u"There is no edit command '" + command + u"': add, update, remove or move." +
                         suggestion.Question());
    }
}

void Editing::Add(Words& words) {
    const LessonTypes type = TypeNamed(words.Next(u"group or lesson"));
    const Text title = words.Next(u"a title");
    Text identifier, id = Utility::NewIdentifier(), where = u"in", target(TopName);
    while (!words.AtEnd()) {
        const Text& word = words.Next(u"");
        if (word == u"identifier") {
            identifier = words.Next(u"a text");
        } else if (word == u"id") {
            id = words.Next(u"a lessonID");
        } else if (IsPlace(word)) {
            where = word;
            target = words.Next(u"an entry");
        } else {
            words.Reject(word);
        }
    }
    if (id.empty() || id == TopName || id.size() > LongestID || id.find(u'\'') != Text::npos) {
        throw RefusedError(u"'" + id + u"' cannot be a lessonID, which has 1 to 255 characters and no apostrophe.");
    }
    if (modTVW::NodeExists(course.Tree(), id)) {
        throw RefusedError(u"There is an entry with the lessonID '" + id + u"' already.");
    }
    if (removedIDs.Contains(id)) {
        throw RefusedError(u"The entry '" + id +
                           u"' was removed by an earlier command and cannot be added again in the " + u"same run.");
    }
    course.Find(target); // before anything is done
    course.Editor().AddLesson(id, title, identifier, type);
    Node& node = course.Find(id);
    course.IdentifierChanged(node);
    addedIDs.Add(id);
    ++added;
    Put(node, where, target);
}

void Editing::Update(Words& words) {
    const Node& node = FindBelowTop(words.Next(u"an entry"));
    Text title = node.Caption(), identifier = node.Tag();
    LessonTypes type = HierarchyRows::TypeOf(node);
    if (words.AtEnd()) words.Next(u"title, identifier or type");
    while (!words.AtEnd()) {
        const Text& word = words.Next(u"");
        if (word == u"title") {
            title = words.Next(u"a text");
        } else if (word == u"identifier") {
            identifier = words.Next(u"a text");
        } else if (word == u"type") {
            type = TypeNamed(words.Next(u"group or lesson"));
        } else {
            words.Reject(word);
        }
    }
    changedIDs.Add(node.Key());
    course.Editor().UpdateLesson(node.Key(), title, identifier, type);
    course.IdentifierChanged(node);
    ++updated;
}

void Editing::Remove(Words& words) {
    const Node& node = FindBelowTop(words.Next(u"an entry"));
    bool keepsChildren = false;
    if (!words.AtEnd()) {
        const Text& word = words.Next(u"");
        keepsChildren = word == u"keep-children";
        if (!keepsChildren) words.Reject(word);
    }
    words.End();
    const Text id = node.Key();
    IDCollection gone = course.Editor().GetChildLessonIDCollection(id); // with the entry itself
    if (keepsChildren) {
        for (const Text& each : gone) changedIDs.Add(each);
        gone.Clear();
        gone.Add(id);
    }
    course.Editor().RemoveLesson(id, !keepsChildren);
    for (const Text& each : gone) {
        if (!addedIDs.Remove(each)) removedIDs.Add(each);
    }
    removed += gone.Count();
}

void Editing::Move(Words& words) {
    static constexpr std::pair<TextView, GroupMovementTypes> Movements[] = {
        {u"up", gmtUp}, {u"down", gmtDown}, {u"indent", gmtIndent}, {u"outdent", gmtOutdent}};
    Node& node = FindBelowTop(words.Next(u"an entry"));
    const Text& where = words.Next(u"a direction or a place");
    if (IsPlace(where)) {
        const Text& target = words.Next(u"an entry");
        words.End();
        changedIDs.Add(node.Key());
        Put(node, where, target);
        ++moved;
        return;
    }
    words.End();
    for (const auto& [name, movement] : Movements) {
        if (name != where) continue;
        course.Editor().SetCurrentLessonID(node.Key());
        if (!course.Editor().CanMoveCurrent(movement)) {
            throw RefusedError(Name(node) + u" cannot move " + where + u" from its place.");
        }
        changedIDs.Add(node.Key());
        course.Editor().MoveCurrent(movement);
        ++moved;
        return;
    }
    words.Reject(where);
}

Node& Editing::FindBelowTop(const Text& name) {
    Node& node = course.Find(name);
    if (!node.Parent()) throw RefusedError(u"The top is the database itself; it cannot be changed like an entry.");
    return node;
}

void Editing::Put(Node& node, const Text& where, const Text& targetName) {
    Node& target = course.Find(targetName);
    if (modTVW::IsInBranch(&target, &node)) {
        throw RefusedError(Name(node) + u" cannot move into itself, or beside what lies in it.");
    }
    if (where == u"in") {
        if (target.Parent() && HierarchyRows::TypeOf(target) != ltGroup) {
            throw RefusedError(Name(target) + u" is not a group: nothing can be put into it.");
        }
        course.Tree().Move(node, &target, InsertPosition::LastChild);
        return;
    }
    if (!target.Parent()) throw RefusedError(u"Nothing can stand beside the top; \"in /\" puts an entry there.");
    course.Tree().Move(node, &target, where == u"before" ? InsertPosition::Before : InsertPosition::After);
}

void Editing::CheckLocks(const Target& target) {
    const auto isTouched = [this](const Text& id) {
        if (removedIDs.Contains(id)) return true;
        for (const Node* node = modTVW::GetNodeByKey(course.Tree(), id); node; node = node->Parent())
            if (changedIDs.Contains(node->Key())) return true;
        return false;
    };
    LockList list(target, {});
    list.Read({}, false);
    Text holders;
    for (const ListedLock& lock : list.Locks()) {
        const bool isEditing = lock.record.lockType == lltEditLesson || lock.record.lockType == lltEditGuide;
        if (!isEditing || lock.record.invalid || !isTouched(lock.record.lessonID)) continue;
        holders += u"\n  " + OneLine(lock.record.username) + u" on " + OneLine(lock.record.machineName) + u": " +
                   lock.type + u" '" + OneLine(Shorten(lock.title, 60)) + u"' for " + lock.age;
    }
    if (holders.empty()) return;
    throw RefusedError(u"Somebody is editing what would change; " + Text(LockedNotice) + holders);
}

void Editing::CheckSaving() {
    // The statements of a save do not take an apostrophe in a lessonID, and every entry is written.
    for (const Node* node = &course.Root(); node; node = modTVW::GetNextNode(node)) {
        if (node->Key().find(u'\'') == Text::npos) continue;
        throw RefusedError(u"The entry " + Name(*node) + u" has a lessonID with an apostrophe (" + node->Key() +
                           u"), with which a hierarchy cannot be saved.");
    }
    for (const Text& id : removedIDs) {
        if (id.find(u'\'') != Text::npos) {
            throw RefusedError(u"The lessonID '" + id + u"' has an apostrophe; such an entry cannot be removed.");
        }
    }
}

Text Editing::Summary() const {
    Text text;
    const auto add = [&text](size_t count, TextView what) {
        if (count == 0) return;
        text += (text.empty() ? u"" : u", ") + ToText(static_cast<long long>(count)) + u" " + Text(what);
    };
    add(added, u"added");
    add(updated, u"updated");
    add(removed, u"removed");
    add(moved, u"moved");
    return text.empty() ? u"nothing to do" : text;
}

} // namespace dax::cli
