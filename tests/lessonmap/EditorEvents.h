#pragma once

#include "lessonmap/LessonMapEditor.h"

#include <string>

namespace dax::test {

// What a host hears of the user's actions, by a short name each.
template <typename Function>
void RecordEvents(LessonMapEditor& editor, Function record) {
    editor.BeforeSelectionChange.AddPermanent([record](const auto&, const auto&, bool&) { record("before"); });
    editor.AfterSelectionChange.AddPermanent(
        [record](const auto& page) { record("selected " + (page ? ToUtf8(page->SBID()) : "-")); });
    editor.ItemChecked.AddPermanent([record] { record("checked"); });
    editor.MapChanged.AddPermanent([record](MapChangeTypes type) { record("changed " + std::to_string(type)); });
    editor.DeleteRequest.AddPermanent([record] { record("delete"); });
    editor.ContextMenuRequest.AddPermanent([record] { record("menu"); });
}

} // namespace dax::test
