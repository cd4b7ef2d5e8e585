// The lesson map editor in scripts: the sample, and a lesson of which every object is a script's own.
#include "Scripts.h"

#include "support/TestDatabases.h"

namespace dax::test {

namespace {

class LessonMapScriptTest : public OcxTest {};

constexpr char ownLesson[] = R"(Class Page
    Public SBID
    Public Title
    Public Identifier
    Public StoryboardType
End Class
Class Map
    Public Name
    Public Pages
    Public IsFaulty
    Public Sub FillTree(nodes, mapRoot)
        Dim sbid
        If IsFaulty Then Err.Raise 1001, "the map", "no pages today"
        For Each sbid In Split(Pages)
            If sbid <> "" Then nodes.Add mapRoot, 4, sbid, sbid
        Next
    End Sub
    Public Sub ReadLayout(mapRoot)
        Dim node
        Pages = ""
        Set node = mapRoot.Child
        Do Until node Is Nothing
            Pages = Pages & " " & node.Key
            Set node = node.Next
        Loop
    End Sub
End Class
Class List
    Public Count
    Public First
    Public Second
    Public DefaultMap
    Public Function Item(which)
        Set Item = Nothing
        If VarType(which) <> vbString Then
            If which = 0 Then Set Item = First
            If which = 1 Then Set Item = Second
        ElseIf which = "a" Then
            Set Item = First
        ElseIf which = "b" Then
            Set Item = Second
        End If
    End Function
End Class
Class Course
    Public Maps
    Public Storyboards
    Public CurrentSBID
End Class
Function NewPage(sbid)
    Set NewPage = New Page
    NewPage.SBID = sbid
    NewPage.Title = "title " & sbid
End Function
Function NewMap(name, pages)
    Set NewMap = New Map
    NewMap.Name = name
    NewMap.Pages = pages
End Function

Dim lesson, editor, node, isFailed
Set lesson = New Course
Set lesson.Storyboards = New List
Set lesson.Maps = New List
lesson.Storyboards.Count = 2
Set lesson.Storyboards.First = NewPage("a")
Set lesson.Storyboards.Second = NewPage("b")
lesson.Maps.Count = 2
Set lesson.Maps.First = NewMap("M", "a b")
Set lesson.Maps.Second = NewMap("N", "")
Set editor = CreateObject("DAXControls.LessonMapEditor")

lesson.Maps.First.IsFaulty = True
On Error Resume Next
Set editor.Lesson = lesson
isFailed = Err.Number <> 0
WScript.Echo isFailed & ", " & editor.tvwObject.Nodes.Count & " nodes"
On Error GoTo 0
lesson.Maps.First.IsFaulty = False

Set editor.Lesson = lesson
WScript.Echo "default map: " & lesson.Maps.DefaultMap.Name
For Each node In editor.tvwObject.Nodes
    WScript.Echo node.Text
Next
editor.CurrentSBID = "b"
editor.MoveCurrent 5
WScript.Echo lesson.CurrentSBID & ":" & lesson.Maps.First.Pages & ";" & lesson.Maps.Second.Pages
WScript.Echo editor.CurrentStoryboard Is lesson.Storyboards.Second
Set editor.Lesson = Nothing
WScript.Echo "done"
)";

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

TEST_F(LessonMapScriptTest, ALessonMayBeAScriptsOwn) {
    const TempFolder folder;
    const auto outcome = RunScript(ToWide(folder.Write(u"own.vbs", ownLesson)));
    // The engine tells its host of an error in a member that others call, even though the caller goes on.
    EXPECT_NE(outcome.errors.find("no pages today"), std::string::npos) << outcome.errors;
    EXPECT_EQ(outcome.output, "True, 0 nodes\n"
                              "default map: M\n"
                              "M (2)\ntitle a\ntitle b\nN (0)\n"
                              "b: a; b\n"
                              "True\n"
                              "done\n");
}

} // namespace dax::test
