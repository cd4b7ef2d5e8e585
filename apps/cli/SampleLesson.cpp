#include "SampleLesson.h"

#include "SampleCourse.h"
#include "SampleTexts.h"
#include "content/LessonText.h"
#include "content/PropertyCollection.h"

#include <iterator>

namespace dax::cli {

namespace {

Text SBID(size_t lesson, size_t page) {
    const uint64_t bits = MixBits((uint64_t{lesson} << 20) + page);
    Text sbid = u"sb";
    for (int shift = 36; shift >= 0; shift -= 4) sbid += u"0123456789abcdef"[(bits >> shift) & 0xF];
    return sbid;
}

std::shared_ptr<ContentMap> MakeMap(ContentLesson& lesson, TextView name, std::vector<LayoutEntry> layout) {
    auto map = std::make_shared<ContentMap>(Text(name));
    map->SetLayout(std::move(layout));
    lesson.Maps()->Add(map);
    return map;
}

} // namespace

uint64_t MixBits(uint64_t number) {
    number += 0x9E3779B97F4A7C15u;
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9u;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EBu;
    return number ^ (number >> 31);
}

SampleLesson MakeSampleLesson(size_t number, TextView code) {
    ContentLesson lesson;
    SampleLesson made;
    const size_t mainPages = 3 + number % 9, extraPages = number % 4, orphans = number % 7 == 0 ? 1 : 0;
    std::vector<LayoutEntry> main, extra;
    for (size_t page = 0; page < mainPages + extraPages + orphans; ++page) {
        // A lesson begins with its title and ends with what was learned.
        const bool isLast = page + 1 == mainPages;
        const SamplePage& kind = page == 0 ? SamplePages[0]
                                 : isLast  ? SamplePages[1]
                                           : SamplePages[2 + (number * 3 + page) % (std::size(SamplePages) - 2)];
        const Text sbid = SBID(number, page);
        lesson.Storyboards()->Add(std::make_shared<ContentStoryboard>(
            sbid, Text(kind.title), Text(code) + u"-" + Number(number) + u"." + Number(page + 1), Text(kind.type)));
        // An exercise is placed under the page before it.
        const bool isInside = page > 1 && !isLast && kind.type == u"exercise";
        if (page < mainPages) {
            main.push_back({sbid, isInside ? 2 : 1});
        } else if (page < mainPages + extraPages) {
            extra.push_back({sbid, 1});
        }
    }
    made.storyboards = main.size() + extra.size();
    made.firstSBID = SBID(number, 0);
    lesson.Maps()->SetDefaultMap(MakeMap(lesson, u"Main", std::move(main)));
    if (extraPages > 0 || number % 8 == 0) MakeMap(lesson, Cycle(SampleMaps, number), std::move(extra));
    lesson.SetCurrentSBID(made.firstSBID);
    made.text = LessonText::Save(lesson);
    return made;
}

Text SampleProperties(size_t number, size_t storyboards, const DateTime& now) {
    const auto age = static_cast<long long>(number % 900 + 1) * 5 * Hour;
    DefaultPropertyCollection properties;
    properties.SetValue(u"Classification", Text(Cycle(Classifications, number / 3)));
    properties.SetValue(u"StoryboardCount", static_cast<int64_t>(storyboards));
    properties.SetValue(u"ModifiedDate", Before(now, age));
    properties.SetValue(u"ModifiedBy", Text(SampleAuthor(number)));
    if (number % 3 != 0) {
        properties.SetValue(u"ExportedDate", Before(now, age / 2));
        properties.SetValue(u"ExportedBy", Text(SampleAuthor(number / 2)));
    }
    return properties.Save();
}

TextView SampleAuthor(size_t number) { return Cycle(Authors, number); }

} // namespace dax::cli
