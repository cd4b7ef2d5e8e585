' Builds a lesson, edits its maps in the lesson map editor, and prints what comes of it. One map is an object of this
' script's own, to show what a host's map needs: Name, FillTree and ReadLayout.
'   daxscript lesson-map.vbs
Option Explicit
Const movesRight = 3, movesToNextMap = 5, below = 4

' A map without levels: all its pages are siblings.
Class FlatMap
    Public Name
    Public Pages ' the SBIDs, with blanks between them

    Public Sub FillTree(nodes, mapRoot)
        Dim sbid
        For Each sbid In Split(Pages)
            If sbid <> "" And Not nodes.Contains(sbid) Then nodes.Add mapRoot, below, sbid
        Next
    End Sub

    Public Sub ReadLayout(mapRoot)
        Pages = ""
        Collect mapRoot
    End Sub

    Private Sub Collect(above)
        Dim node
        Set node = above.Child
        Do Until node Is Nothing
            Pages = Trim(Pages & " " & node.Key)
            Collect node
            Set node = node.Next
        Loop
    End Sub
End Class

Function NewStoryboard(sbid, storyboardType, title)
    Set NewStoryboard = CreateObject("ContentObjects.Storyboard")
    NewStoryboard.SBID = sbid
    NewStoryboard.StoryboardType = storyboardType
    NewStoryboard.Title = title
End Function

Sub PrintNodes(ByVal node, indent)
    Do Until node Is Nothing
        WScript.Echo indent & node.Text
        PrintNodes node.Child, indent & "  "
        Set node = node.Next
    Loop
End Sub

Sub editor_MapChanged(changeType)
    WScript.Echo "the maps have changed: " & changeType
End Sub

Sub editor_AfterSelectionChange(storyboard)
    If storyboard Is Nothing Then
        WScript.Echo "no page is selected"
    Else
        WScript.Echo "selected: " & storyboard.Title
    End If
End Sub

Dim lesson, extras, editor, storyboard
Set lesson = CreateObject("ContentObjects.Lesson")
lesson.Load "lesson" & vbTab & "1" & vbLf & _
    "storyboard" & vbTab & "s1" & vbTab & "text" & vbTab & "INTRO" & vbTab & "Welcome" & vbLf & _
    "storyboard" & vbTab & "s2" & vbTab & "video" & vbTab & "TOUR" & vbTab & "A tour" & vbLf & _
    "map" & vbTab & "Main" & vbTab & "default" & vbLf & _
    "page" & vbTab & "1" & vbTab & "s1" & vbLf & "page" & vbTab & "1" & vbTab & "s2" & vbLf & _
    "current" & vbTab & "s2" & vbLf
lesson.Storyboards.Add NewStoryboard("s3", "summary", "What to remember")
Set extras = New FlatMap
extras.Name = "Extras"
extras.Pages = "s3"
lesson.Maps.Add extras

Set editor = WScript.CreateObject("DAXControls.LessonMapEditor", "editor_")
Set editor.Lesson = lesson
editor.AddStoryboard NewStoryboard("s4", "question", "Where are we?")
editor.MoveCurrent movesRight
editor.CurrentSBID = editor.FindNextSBID("welcome", 1, True, True)
editor.MoveCurrent movesToNextMap
PrintNodes editor.tvwObject.Nodes(1), ""
WScript.Echo "the script's map: " & extras.Pages

editor.Checkboxes = True
editor.tvwObject.Nodes("s4").Checked = True
For Each storyboard In editor.CheckedStoryboards
    WScript.Echo "checked: " & storyboard.SBID
Next
WScript.Echo editor.GetCheckedLesson.Save
WScript.DisconnectObject editor
Set editor.Lesson = Nothing
WScript.Echo "done"
