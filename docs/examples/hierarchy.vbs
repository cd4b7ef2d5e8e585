' Shows the groups of a course, adds a group with a lesson, saves, and reads all of it back.
'   daxscript hierarchy.vbs FILE
' Exit code: 0 saved, 1 the database could not be read or written.
Option Explicit
Const ltGroup = 0, ltLesson = 1, gmtDown = 2, gmtIndent = 3
Dim editor, utility, id, figures, tokens, groupID, lessonID, changes
changes = 0

Sub editor_DataChanged()
    changes = changes + 1
End Sub

Sub editor_Error(number, description, routine)
    WScript.Echo routine & " has failed: " & description
End Sub

Set editor = WScript.CreateObject("DAXControls.GroupEditor", "editor_")
editor.ConnectionString = WScript.Arguments(0)
editor.DatabaseTitle = "the course"
If Not editor.LoadDatabase Then WScript.Quit 1
WScript.Echo editor.GetLessonTitle("") & ": " & editor.NodeCount & " entries"
For Each id In editor.GetChildLessonIDCollection("")
    If editor.GetLessonType(id) = ltGroup Then
        Set figures = editor.GetAggregateProperties(id)
        WScript.Echo "  " & editor.GetLessonTitle(id) & ": " & figures.GetValue("LessonCount", 0) & " lessons, " & _
            figures.GetValue("StoryboardCount", 0) & " storyboards"
    End If
Next

' What is added comes after the selected entry: first in the course, then after the new group, and from there into it.
Set utility = WScript.CreateObject("ContentObjects.Utility")
groupID = utility.NewIdentifier
lessonID = utility.NewIdentifier
editor.CurrentLessonID = ""
editor.AddLesson groupID, "What's new", "NEW", ltGroup
editor.AddLesson lessonID, "The first one", "NEW-1", ltLesson
If editor.CanMoveCurrent(gmtIndent) Then editor.MoveCurrent gmtIndent
Set tokens = editor.GetLessonTokens(lessonID)
WScript.Echo "added: " & tokens.GetValue("LessonTitlePath", "")
WScript.Echo changes & " changes"
If Not editor.SaveDatabase Then WScript.Quit 1
WScript.DisconnectObject editor
editor.LoadDatabase
WScript.Echo "read back: " & editor.GetLessonProperties(lessonID).GetValue("Title", "") & " [" & _
    editor.GetLessonIdentifier(lessonID) & "], " & editor.NodeCount & " entries"
