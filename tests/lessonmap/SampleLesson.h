// Lessons for the tests, written short: "Main: a b( c d ) | Extra: e", and trees printed in the same way.
#pragma once

#include "content/ContentLesson.h"
#include "tree/NodeTree.h"
#include "tree/modTVW.h"

#include <sstream>

namespace dax::test {

// A storyboard per word, titled "Title of WORD" with the identifier "ID-WORD"; no map is the default one.
inline std::shared_ptr<ContentLesson> MakeLesson(const std::string& text) {
    const auto lesson = std::make_shared<ContentLesson>();
    std::istringstream maps(text);
    for (std::string part, word; std::getline(maps, part, '|');) {
        std::istringstream words(part);
        words >> word;
        const auto map = std::make_shared<ContentMap>(FromUtf8(word.substr(0, word.find(':'))));
        lesson->Maps()->Add(map);
        std::vector<LayoutEntry> layout;
        for (int32_t depth = 1; words >> word;) {
            if (word == ")") {
                --depth;
                continue;
            }
            const Text sbid = FromUtf8(word.substr(0, word.find('(')));
            if (!lesson->Storyboards()->Item(sbid)) {
                lesson->Storyboards()->Add(
                    std::make_shared<ContentStoryboard>(sbid, u"Title of " + sbid, u"ID-" + sbid, u"text"));
            }
            layout.push_back({sbid, depth});
            depth += word.ends_with('(');
        }
        map->SetLayout(std::move(layout));
    }
    return lesson;
}

inline std::string Print(const std::string& name, const std::vector<LayoutEntry>& layout) {
    std::string text = name + ":";
    for (size_t i = 0; i < layout.size(); ++i) {
        const int32_t next = i + 1 < layout.size() ? layout[i + 1].depth : 1;
        text += " " + ToUtf8(layout[i].sbid) + (next > layout[i].depth ? "(" : "");
        for (int32_t depth = layout[i].depth; depth > next; --depth) text += " )";
    }
    return text;
}

// Of nodes beside each other, from the first one on.
inline std::string Print(const Node* top) {
    std::string text;
    for (; top; top = top->Next()) {
        std::vector<LayoutEntry> layout;
        for (const Node* node = modTVW::GetNextNode(top, top); node; node = modTVW::GetNextNode(node, top)) {
            layout.push_back({node->Key(), modTVW::GetIndentLevel(node) - modTVW::GetIndentLevel(top)});
        }
        text += (text.empty() ? "" : " | ") + Print(ToUtf8(top->Key()), layout);
    }
    return text;
}

inline std::string Print(const NodeTree& tree) { return Print(tree.First()); }

// The maps of the lesson as they are stored, in its own order.
inline std::string Print(const Lesson& lesson) {
    std::string text;
    for (int32_t i = 0; i < lesson.Maps()->Count(); ++i) {
        const auto map = std::dynamic_pointer_cast<ContentMap>(lesson.Maps()->Item(i));
        text += (text.empty() ? "" : " | ") + Print(ToUtf8(map->Name()), map->Layout());
    }
    return text;
}

} // namespace dax::test
