// The titles and names of the sample course.
#pragma once

#include "base/Text.h"

#include <iterator>

namespace dax::cli {

struct SampleTopic {
    TextView title, code;
};

inline constexpr SampleTopic Topics[] = {
    {u"Safety at work", u"SAF"},
    {u"Qualité et méthodes", u"QUA"},
    {u"Безопасность данных", u"БЕЗ"},
    {u"データ保護の基礎", u"DAT"},
    {u"السلامة المهنية", u"SLM"},
    {u"Kundengespräche für Einsteiger", u"KND"},
    {u"项目管理", u"PRJ"},
    {u"Ελληνικά για αρχάριους", u"ΕΛΛ"},
    {u"안전 교육", u"ANJ"},
    {u"בטיחות במעבדה", u"BTH"},
    {u"हिन्दी में लेखन", u"HIN"},
    {u"Música e emoções 🎼", u"MUS"},
};

inline constexpr TextView GroupTitles[] = {
    u"Foundations", u"Théorie", u"Практика", u"演習", u"Fallbeispiele", u"الملاحق", u"Tests & reviews", u"更多资料",
};

inline constexpr TextView LessonTitles[] = {
    u"What you will learn",
    u"O'Neil's \"golden\" rules",
    u"Übung macht den Meister",
    u"Введение в курс",
    u"はじめに：吉野家の例",
    u"Étude de cas n° 7; suite",
    u"مقدمة قصيرة",
    u"第一课：你好",
    u"Check list #1 [draft]",
    u"Σύνοψη και ερωτήσεις",
    u"연습 문제",
    u"Cafés & crèmes – 50 % off?",
    u"שיעור ראשון",
    u"A path such as C:\\Temp\\new",
    u"पहला पाठ",
    u"Party time ♫",
    u"A title that is so long that no tree and no panel can show all of it in one line without cutting it somewhere",
};

// Of later lessons, in the places of others: with characters beyond the first 65,536, which not every system draws.
struct SupplementaryTitle {
    size_t place;
    TextView title;
};
inline constexpr SupplementaryTitle SupplementaryTitles[] = {{4, u"はじめに：𠮷野家の例"},
                                                             {15, u"Party time 🎉👩‍🏫"}};

struct SamplePage {
    TextView title, type;
};

// The first opens a lesson, the second ends it.
inline constexpr SamplePage SamplePages[] = {
    {u"Welcome", u"title"},
    {u"What you have learned", u"summary"},
    {u"Why it matters", u"text"},
    {u"Ein Blick in die Werkstatt", u"picture"},
    {u"Try it yourself", u"exercise"},
    {u"Вопрос: что здесь не так?", u"question"},
    {u"実演ビデオ", u"video"},
    {u"Écoutez l'entretien", u"audio"},
    {u"Step by step", u"animation"},
    {u"تمرين قصير", u"exercise"},
    {u"练习：选择正确的答案", u"question"},
    {u"The control room", u"simulation"},
    {u"Check yourself: 10 questions", u"test"},
    {u"Where to go next", u"menu"},
    {u"Γλωσσάριο & \"terms\"", u"text"},
    {u"Party time ♫", u"fireworks"}, // a type without a picture of its own
};
inline constexpr TextView SampleMaps[] = {u"Extras", u"Дополнительно", u"補足", u"For teachers"};

inline constexpr TextView Authors[] = {u"anna", u"j.o'neil", u"юлия", u"山田太郎", u"müller"};
inline constexpr TextView Machines[] = {u"STUDIO-01", u"STUDIO-02", u"LAPTOP-ANNA", u"КАБИНЕТ-7"};
inline constexpr TextView Classifications[] = {u"public", u"internal", u"confidential"};

// The element of a list at an index, from the first again after the last.
template <typename List>
const auto& Cycle(const List& list, size_t index) {
    return list[index % std::size(list)];
}

inline Text Number(size_t number) { return ToText(static_cast<long long>(number)); }

} // namespace dax::cli
