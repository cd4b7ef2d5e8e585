#include "panels/LockInfo.h"

#include "base/modGeneric.h"
#include "data/Recordset.h"

namespace dax {

namespace {

using modGeneric::VariantToString;

Text Users(int32_t count) { return u"(" + modGeneric::Pluralize(ToText(count) + u" user", count) + u")"; }

void AddPlain(PanelLayout& layout, const Text& text) {
    if (!text.empty()) layout.push_back({.text = text});
}

void AddPair(PanelLayout& layout, const Text& first, const Text& suffix, bool isBold) {
    if (!first.empty()) layout.push_back({.text = first, .suffix = suffix, .isBold = isBold});
}

void AddHalf(PanelLayout& layout, const Text& editText, const Text& detailText, int32_t readCount, const Text& what) {
    AddPair(layout, editText, u": editing " + what, true);
    if (readCount < 1)
        AddPlain(layout, detailText);
    else
        AddPair(layout, detailText, u": reading " + what, false);
}

} // namespace

void LockSummary::CountLock(const Value& username, const Value& lockDate, const Value& lockType) {
    ++lockCount;
    const auto edits = [&](int32_t& count, Text& text, int32_t reading, Text& detail) {
        ++count;
        text = VariantToString(username, u"(unknown)");
        if (reading == 0) detail = u"since " + VariantToString(lockDate, u"(unknown)");
    };
    switch (modGeneric::VariantToLong(lockType, lltNone)) {
    case lltEditLesson:
        edits(editLessonCount, editLessonText, readLessonCount, lessonDetailText);
        break;
    case lltReadLesson:
        ++readLessonCount; // their texts come from the counts
        break;
    case lltEditGuide:
        edits(editGuideCount, editGuideText, readGuideCount, guideDetailText);
        break;
    case lltReadGuide:
        ++readGuideCount;
        break;
    default:
        break;
    }
}

void LockSummary::FinishLesson() {
    if (editLessonCount > 1) editLessonText = u"(" + ToText(editLessonCount) + u" users)";
    if (readLessonCount > 0) lessonDetailText = Users(readLessonCount);
    if (editGuideCount > 1) editGuideText = u"(" + ToText(editGuideCount) + u" users)";
    if (readGuideCount > 0) guideDetailText = Users(readGuideCount);
}

void LockSummary::FinishGroup() {
    if (editLessonCount > 0) editLessonText = Users(editLessonCount);
    if (readLessonCount > 0) lessonDetailText = Users(readLessonCount);
    if (editGuideCount > 1) editGuideText = Users(editGuideCount);
    if (readGuideCount > 0) guideDetailText = Users(readGuideCount);
}

PanelLayout LockSummary::Layout() const {
    PanelLayout layout;
    if (!isAvailable) {
        AddPlain(layout, u"lock data not available");
        return layout;
    }
    if (editLessonCount + readLessonCount + editGuideCount + readGuideCount < 1) {
        AddPlain(layout, u"no locks");
        return layout;
    }
    AddHalf(layout, editLessonText, lessonDetailText, readLessonCount, u"lesson");
    const size_t lessonLines = layout.size();
    AddHalf(layout, editGuideText, guideDetailText, readGuideCount, u"guide");
    const bool hasLessonTexts = !editLessonText.empty() || !lessonDetailText.empty();
    if (hasLessonTexts && layout.size() > lessonLines) layout[lessonLines].hasHalfLineGap = true;
    return layout;
}

void LockInfo::UpdateFrom(GroupEditor* editor) {
    if (isSample) return;
    summary.lockCount = 0;
    if (!editor) {
        summary.isAvailable = false;
        if (Changed) Changed();
        return;
    }
    const Text lessonID = editor->CurrentLessonID();
    const bool isLesson = editor->GetLessonType(lessonID) == ltLesson;
    IDCollection children;
    if (!isLesson) children = editor->GetChildLessonIDCollection(lessonID);
    connectionString = editor->ConnectionString();
    if (connectionString.empty()) return; // the display stays as it is
    summary = {};
    try {
        Recordset recordset;
        recordset.Open(u"SELECT lessonID, username, lockDate, lockType FROM velmoraUserLocks WHERE lockType <> -2",
                       connectionString);
        for (; !recordset.Eof(); recordset.MoveNext()) {
            const Text id = VariantToString(recordset.Field(size_t{0}), u"");
            if (isLesson ? id != lessonID : !children.Contains(id)) continue;
            summary.CountLock(recordset.Field(1), recordset.Field(2), recordset.Field(3));
        }
        isLesson ? summary.FinishLesson() : summary.FinishGroup();
    } catch (...) {
        const dax::Error error = CurrentError();
        summary.isAvailable = false;
        const RevisionCheck before(revision);
        Error.Raise(error.Number(), error.Description());
        if (!before.Exists()) return;
    }
    if (Changed) Changed();
}

void LockInfo::ShowDesignSample(const DateTime& now) {
    isSample = true;
    summary = {};
    summary.readGuideCount = 4;
    summary.editLessonText = u"designtime";
    summary.lessonDetailText = u"since " + VariantToString(now, u"");
    summary.editGuideText = u"tquenby";
    summary.guideDetailText = u"(4 users)";
    if (Changed) Changed();
}

void LockInfo::Clear() {
    isSample = false;
    summary = {};
    if (Changed) Changed();
}

void LockInfo::Paint(Surface& surface) const { PaintPanel(surface, summary.Layout()); }

} // namespace dax
