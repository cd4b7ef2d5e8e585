// The sample of the lesson map editor, in which a map is the script's own.
#include "Scripts.h"

namespace dax::test {

namespace {

class LessonMapScriptTest : public OcxTest {};

} // namespace

TEST_F(LessonMapScriptTest, TheSampleEditsALesson) {
    const auto outcome = RunScript(Sample(L"lesson-map.vbs"));
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "selected: A tour\n"
                              "the maps have changed: 1\nselected: Where are we?\n"
                              "the maps have changed: 2\nselected: Welcome\n"
                              "the maps have changed: 2\n"
                              "Main (2)\n  A tour\n    Where are we?\nExtras (2)\n  Welcome\n  What to remember\n"
                              "the script's map: s1 s3\n"
                              "checked: s4\n"
                              "lesson\t1\nstoryboard\ts4\tquestion\t\tWhere are we?\n"
                              "map\tMain\tdefault\npage\t1\ts4\n\n"
                              "done\n");
    EXPECT_EQ(outcome.code, 0u);
}

} // namespace dax::test
