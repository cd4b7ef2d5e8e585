#include "content/LessonText.h"

#include "base/Error.h"
#include "base/Numbers.h"
#include "content/LayoutTree.h"

#include <array>
#include <utility>

namespace dax::LessonText {

namespace {

constexpr TextView header = u"lesson\t1";
constexpr std::array<std::pair<char16_t, char16_t>, 4> escapes{
    {{u'\\', u'\\'}, {u'\t', u't'}, {u'\n', u'n'}, {u'\r', u'r'}}};

void Write(Text& text, TextView field) {
    for (const char16_t unit : field) {
        char16_t letter = 0;
        for (const auto& [plain, escaped] : escapes) {
            if (unit == plain) letter = escaped;
        }
        if (letter) text += u'\\';
        text += letter ? letter : unit;
    }
}

void WriteRecord(Text& text, TextView keyword, std::initializer_list<TextView> fields) {
    text += keyword;
    for (const TextView field : fields) {
        text += u'\t';
        Write(text, field);
    }
    text += u'\n';
}

class Reader {
public:
    explicit Reader(TextView text) : rest(text) {}

    std::shared_ptr<ContentLesson> Read() {
        if (!NextLine() || line != header) Refuse(u"The text is not a lesson in a known format.");
        while (NextLine()) {
            if (!line.empty()) ReadRecord();
        }
        FinishMap();
        return lesson;
    }

private:
    bool NextLine() {
        if (rest.empty()) return false;
        const size_t end = rest.find(u'\n');
        line = rest.substr(0, end);
        rest = end == TextView::npos ? TextView() : rest.substr(end + 1);
        if (line.ends_with(u'\r')) line.remove_suffix(1);
        ++number;
        return true;
    }

    void ReadRecord() {
        hasField = true;
        const Text keyword = Field();
        try {
            if (keyword == u"storyboard") {
                Text sbid = Field(), type = Field(), identifier = Field(), title = Field();
                lesson->Storyboards()->Add(std::make_shared<ContentStoryboard>(std::move(sbid), std::move(title),
                                                                               std::move(identifier), std::move(type)));
            } else if (keyword == u"map") {
                ReadMap();
            } else if (keyword == u"page") {
                ReadPage();
            } else if (keyword == u"current") {
                lesson->SetCurrentSBID(Field());
            } else {
                Refuse(u"Unknown record '" + keyword + u"'.");
            }
        } catch (const Error& error) {
            if (error.Number() == ErrorNumbers::InvalidFormat) throw;
            Refuse(error.Description());
        }
        if (hasField) Refuse(u"Too many fields.");
    }

    void ReadMap() {
        FinishMap();
        mapNumber = number;
        map = std::make_shared<ContentMap>(Field());
        lesson->Maps()->Add(map);
        if (!hasField) return;
        if (Field() != u"default") Refuse(u"The second field of a map can only be 'default'.");
        if (lesson->Maps()->DefaultMap()) Refuse(u"A lesson can have only one default map.");
        lesson->Maps()->SetDefaultMap(map);
    }

    void ReadPage() {
        if (!map) Refuse(u"A page stands before the first map.");
        const Text digits = Field();
        const auto depth = ReadNumber<int32_t>(digits);
        if (!depth || *depth < 1) Refuse(u"'" + digits + u"' is not a depth.");
        layout.push_back({Field(), *depth});
    }

    void FinishMap() {
        if (!map) return;
        try {
            map->SetLayout(std::exchange(layout, {}));
        } catch (const Error& error) {
            number = mapNumber;
            Refuse(error.Description());
        }
    }

    // The next field of the line; the keyword is the first.
    Text Field() {
        if (!hasField) Refuse(u"A field is missing.");
        const size_t end = line.find(u'\t');
        const TextView field = line.substr(0, end);
        hasField = end != TextView::npos;
        line = hasField ? line.substr(end + 1) : TextView();
        Text text;
        for (size_t i = 0; i < field.size(); ++i) {
            text += field[i] == u'\\' ? Unescape(field.substr(++i, 1)) : field[i];
        }
        return text;
    }

    char16_t Unescape(TextView letter) const { // empty at the end of the field
        for (const auto& [plain, escaped] : escapes) {
            if (letter == TextView(&escaped, 1)) return plain;
        }
        Refuse(u"Invalid escape sequence.");
    }

    [[noreturn]] void Refuse(const Text& reason) const {
        throw Error(ErrorNumbers::InvalidFormat, u"Line " + ToText(number) + u": " + reason);
    }

    TextView rest, line;
    bool hasField{}; // in the rest of the line
    int32_t number = 0, mapNumber{};
    std::shared_ptr<ContentLesson> lesson = std::make_shared<ContentLesson>();
    std::shared_ptr<ContentMap> map; // the one that is being read
    std::vector<LayoutEntry> layout;
};

void SaveMap(Text& text, StoryboardMap& map, bool isDefault) {
    if (isDefault) {
        WriteRecord(text, u"map", {map.Name(), u"default"});
    } else {
        WriteRecord(text, u"map", {map.Name()});
    }
    LayoutTree tree;
    map.FillTree(tree, tree.Root());
    ContentMap layout;
    layout.ReadLayout(tree, tree.Root());
    for (const LayoutEntry& entry : layout.Layout()) {
        WriteRecord(text, u"page", {ToText(entry.depth), entry.sbid});
    }
}

} // namespace

Text Save(const Lesson& lesson) {
    Text text(header);
    text += u'\n';
    if (const auto storyboards = lesson.Storyboards()) {
        for (const auto& each : storyboards->All()) {
            if (!each) continue;
            WriteRecord(text, u"storyboard", {each->SBID(), each->StoryboardType(), each->Identifier(), each->Title()});
        }
    }
    if (const auto maps = lesson.Maps()) {
        const auto defaultMap = maps->DefaultMap();
        const int32_t count = maps->Count();
        for (int32_t i = 0; i < count; ++i) {
            const auto map = maps->Item(i);
            if (!map) break;
            SaveMap(text, *map, defaultMap && defaultMap->Identity() == map->Identity());
        }
    }
    if (const Text current = lesson.CurrentSBID(); !current.empty()) WriteRecord(text, u"current", {current});
    return text;
}

std::shared_ptr<ContentLesson> Load(TextView text) { return Reader(text).Read(); }

} // namespace dax::LessonText
