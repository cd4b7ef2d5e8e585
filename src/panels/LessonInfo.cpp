#include "panels/LessonInfo.h"

#include "base/modGeneric.h"

namespace dax {

namespace {

using modGeneric::VariantToString;

constexpr double TitleSize = 14;

using Properties = std::shared_ptr<PropertyCollection>; // null for a lesson that has none yet

Text TextOf(const Properties& properties, const Text& name, const Text& defaultText = u"") {
    return properties ? VariantToString(properties->GetValue(name, defaultText), defaultText) : defaultText;
}

int32_t CountOf(const Properties& properties, const Text& name) {
    return properties ? modGeneric::VariantToLong(properties->GetValue(name, int64_t{0}), 0) : 0;
}

void Describe(LessonInfoTexts& texts, const Text& title, const Text& identifier) {
    texts.title = title.empty() ? u"(untitled)" : title;
    texts.identifierLine = u"identifier: " + (identifier.empty() ? Text(u"(no identifier)") : identifier);
}

LessonInfoTexts DescribeLesson(GroupEditor& editor, const Text& lessonID) {
    LessonInfoTexts texts;
    texts.displayKind = ltLesson;
    Describe(texts, editor.GetLessonTitle(lessonID), editor.GetLessonIdentifier(lessonID));
    const auto properties = editor.GetLessonProperties(lessonID);
    texts.kindLine = u"lesson";
    texts.classification = TextOf(properties, u"Classification");
    texts.storyboardLine = CountPhrase(CountOf(properties, u"StoryboardCount"), u"active storyboard");
    texts.modifiedLine = u"modified " + TextOf(properties, u"ModifiedDate");
    texts.modifiedByLine = u"by " + TextOf(properties, u"ModifiedBy", u"(unknown)");
    texts.exportedLine = u"exported " + TextOf(properties, u"ExportedDate");
    texts.exportedByLine = u"by " + TextOf(properties, u"ExportedBy", u"(unknown)");
    return texts;
}

LessonInfoTexts DescribeOther(GroupEditor& editor, const Text& lessonID, int32_t type) {
    LessonInfoTexts texts;
    texts.displayKind = type;
    const auto properties = editor.GetAggregateProperties(lessonID);
    Describe(texts, TextOf(properties, u"title"), TextOf(properties, u"identifier"));
    if (type == ltGroup)
        texts.kindLine = u"group";
    else if (type == ltDatabase)
        texts.kindLine = u"content database";
    else
        texts.kindLine = u"type " + ToText(type);
    texts.classification = TextOf(properties, u"Classification");
    // The word begins with a blank here, so two blanks follow the number: deliberate.
    texts.storyboardLine = CountPhrase(CountOf(properties, u"StoryboardCount"), u" storyboard");
    texts.groupsLine = u"contains " + CountPhrase(CountOf(properties, u"GroupCount"), u"group");
    texts.lessonsLine = CountPhrase(CountOf(properties, u"LessonCount"), u"lesson");
    return texts;
}

// Collects lines; a gap is above whatever line comes next.
class LayoutBuilder {
public:
    void Add(const Text& text, double fontSize = 8, bool isBold = false) {
        layout.push_back(
            {.text = text, .fontSize = fontSize, .isBold = isBold, .hasHalfLineGap = halfLine, .gap = gap});
        gap = 0;
        halfLine = false;
    }
    void Gap(int pixels) { gap += pixels; }
    void HalfLineGap() { halfLine = true; }
    PanelLayout Take() { return std::move(layout); }

private:
    PanelLayout layout;
    int gap = 0;
    bool halfLine = false;
};

} // namespace

Text CountPhrase(int32_t count, const Text& word) {
    if (count == 0) return u"no " + word + u"s";
    return modGeneric::Pluralize(ToText(count) + u" " + word, count);
}

void LessonInfo::UpdateFrom(GroupEditor* editor) {
    if (isSample) return;
    Show({});
    if (!editor) return;
    const Text lessonID = editor->CurrentLessonID();
    const int32_t type = editor->GetLessonType(lessonID);
    if (type == ltLesson)
        Show(DescribeLesson(*editor, lessonID));
    else
        Show(DescribeOther(*editor, lessonID, type));
}

void LessonInfo::ShowDesignSample(const DateTime& now) {
    LessonInfoTexts sample;
    sample.displayKind = ltLesson;
    sample.title = u"design-time";
    sample.kindLine = u"lesson";
    sample.identifierLine = u"identifier: (design time)";
    sample.storyboardLine = CountPhrase(12, u"active storyboard");
    sample.modifiedLine = u"modified " + VariantToString(now, u"");
    sample.exportedLine = u"exported " + VariantToString(now, u"");
    sample.modifiedByLine = sample.exportedByLine = u"by tquenby";
    isSample = true;
    Show(std::move(sample));
}

void LessonInfo::Clear() {
    isSample = false;
    Show({});
}

void LessonInfo::SetShowIdentifier(bool value) {
    showIdentifier = value;
    if (Changed) Changed();
}

PanelLayout LessonInfo::Layout(int level) const {
    if (texts.displayKind == ltInvalid) return {};
    LayoutBuilder lines;
    lines.Add(texts.title, TitleSize);
    lines.Add(texts.kindLine, 8, true);
    if (texts.displayKind == ltLesson) {
        if (level < 3) {
            if (showIdentifier) lines.Add(texts.identifierLine);
            lines.Add(texts.storyboardLine);
        }
        if (level == 1)
            lines.HalfLineGap();
        else
            lines.Gap(2);
        lines.Add(texts.modifiedLine);
        if (level == 1) {
            lines.Add(texts.modifiedByLine);
            lines.Add(texts.exportedLine);
            lines.Add(texts.exportedByLine);
        }
    } else if (level < 3) {
        const bool isDatabase = texts.displayKind == ltDatabase;
        if (showIdentifier && !isDatabase) lines.Add(texts.identifierLine);
        lines.Gap(2);
        lines.Add(texts.groupsLine);
        lines.Add(texts.lessonsLine);
        if (isDatabase || level == 1) lines.Add(texts.storyboardLine);
    }
    lines.Add(texts.classification, 8, true);
    return lines.Take();
}

void LessonInfo::Paint(Surface& surface) const {
    PanelLayout layout = Layout(1);
    for (int level = 2; level <= 3 && MeasurePanel(surface, layout) > surface.Height(); ++level) layout = Layout(level);
    PaintPanel(surface, layout);
}

void LessonInfo::Show(LessonInfoTexts newTexts) {
    texts = std::move(newTexts);
    if (Changed) Changed();
}

} // namespace dax
