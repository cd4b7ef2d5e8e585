' What GroupEditor does with each call, in the order of docs/hierarchy.md. Every line is compared with what is described.
'   daxscript behaviour-hierarchy.vbs FILE
' FILE is a course in a file, best one of "dax sample". It is saved several times; what is added to it is removed again.
' Exit code: 0 everything is as described, 1 something is not.
Option Explicit
Const ltGroup = 0, ltLesson = 1, gmtUp = 1, gmtDown = 2, gmtIndent = 3, gmtOutdent = 4, ftTitle = 1, ftID = 4
Dim editor, other, received, deviations, total, file, id, answer
file = WScript.Arguments(0)
deviations = 0

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo what & " -> " & found
    Else
        WScript.Echo what & " -> " & found & ", BUT DESCRIBED AS " & expected
        deviations = deviations + 1
    End If
End Sub

Sub editor_AfterSelectionChange(lessonID)
    received = received & "selected(" & lessonID & ") "
End Sub
Sub editor_DataChanged()
    received = received & "changed "
End Sub
Sub editor_Error(number, description, routine)
    received = received & routine & "(" & number & ") "
End Sub

' The events since the last call.
Function Events()
    Events = Trim(received)
    received = ""
End Function

' The entries of this script, in the order of the tree.
Function Own()
    Own = ""
    For Each id In editor.GetChildLessonIDCollection("")
        If Left(id, 4) = "own-" Then Own = Own & Mid(id, 5)
    Next
End Function

Sub Add(lessonID, lessonType)
    editor.AddLesson "own-" & lessonID, "Own " & lessonID, "OWN-" & lessonID, lessonType
End Sub

' As a window would: selects an entry of this script.
Sub Choose(lessonID)
    editor.CurrentLessonID = "own-" & lessonID
    Events
End Sub

' Below which entry of this script another one lies.
Function IsBelow(child, parent)
    IsBelow = False
    For Each id In editor.GetChildLessonIDCollection("own-" & parent)
        If id = "own-" & child And child <> parent Then IsBelow = True
    Next
End Function

Set editor = WScript.CreateObject("DAXControls.GroupEditor", "editor_")
WScript.Echo "-- without a tree"
Expect "NodeCount", editor.NodeCount, 0
editor.AddLesson "a", "A", "", ltLesson
Expect "events of AddLesson", Events, ""
Expect "SaveDatabase", editor.SaveDatabase, False
Expect "its events", Events, "SaveDatabase(-2147221504)"
Expect "LoadDatabase without ConnectionString", editor.LoadDatabase, True
Expect "its events", Events, "selected()"
Expect "Clear", editor.Clear, False
Expect "its events", Events, "selected()"
editor.ConnectionString = file & ".none"
Expect "LoadDatabase of a missing file", editor.LoadDatabase, False
Expect "its events", Events, "LoadDatabase(-2147467259)"
Expect "NodeCount", editor.NodeCount, 1

WScript.Echo "-- loading"
editor.ConnectionString = file
editor.DatabaseTitle = "the course"
Expect "LoadDatabase", editor.LoadDatabase, True
Expect "its events", Events, "selected()"
Expect "CanUndo", editor.CanUndo, False
total = editor.NodeCount

WScript.Echo "-- the empty lessonID is the database's"
Expect "GetLessonTitle", editor.GetLessonTitle(""), "the course"
Expect "GetLessonType", editor.GetLessonType(""), -2
Expect "GetChildLessonCount", editor.GetChildLessonCount(""), 0
Expect "entries of GetChildLessonIDCollection", editor.GetChildLessonIDCollection("").Count, total - 1
editor.RemoveLesson "", True
Expect "events of RemoveLesson", Events, ""

WScript.Echo "-- an unknown lessonID"
Expect "GetLessonTitle", editor.GetLessonTitle("none"), ""
Expect "GetLessonIdentifier", editor.GetLessonIdentifier("none"), ""
Expect "GetLessonType", editor.GetLessonType("none"), -1
Expect "GetChildLessonCount", editor.GetChildLessonCount("none"), 0
Expect "entries of GetChildLessonIDCollection", editor.GetChildLessonIDCollection("none").Count, 1
Expect "GetLessonProperties is Nothing", editor.GetLessonProperties("none") Is Nothing, True
Expect "GroupCount of GetAggregateProperties", editor.GetAggregateProperties("none").GetValue("GroupCount", -1), 1
Expect "LessonTitle of GetLessonTokens", editor.GetLessonTokens("none").GetValue("LessonTitle", "no such value"), "no such value"
editor.UpdateLesson "none", "A", "", ltLesson
editor.RemoveLesson "none", True
Expect "events of UpdateLesson and RemoveLesson", Events, ""
editor.CurrentLessonID = "none"
Expect "events of CurrentLessonID", Events, "selected()"
Expect "CanMoveCurrent", editor.CanMoveCurrent(gmtDown), False

WScript.Echo "-- AddLesson"
Add "g", ltGroup
Expect "its events", Events, "changed selected(own-g)"
Expect "the first entry", editor.GetChildLessonIDCollection("").Item(1), "own-g"
Expect "GetLessonProperties is Nothing", editor.GetLessonProperties("own-g") Is Nothing, True
Add "a", ltLesson
Expect "with a group selected, lies in the group", IsBelow("a", "g"), False
Expect "order", Own, "ga"
Events
editor.AddLesson "own-g", "Another title", "OWN-g", ltGroup
Expect "an existing lessonID: events", Events, "changed selected(own-g)"
Expect "an existing lessonID: NodeCount", editor.NodeCount, total + 2
Expect "an existing lessonID: title", editor.GetLessonTitle("own-g"), "Another title"
editor.AddLesson "", "A", "", ltLesson
Expect "the empty lessonID: events", Events, ""
Add "x", 7
Expect "type 7 becomes", editor.GetLessonType("own-x"), 2
editor.Undo

WScript.Echo "-- MoveCurrent"
Choose "g"
Events
editor.MoveCurrent 77
Expect "77: events", Events, ""
Expect "CanMoveCurrent(77)", editor.CanMoveCurrent(77), False
On Error Resume Next
editor.MoveCurrent "up"
Expect "a word for the movement raises", Err.Number, 13
On Error Goto 0
editor.MoveCurrent gmtUp
Expect "up from the first place: events", Events, ""
Choose "a"
editor.MoveCurrent gmtIndent
Expect "indent: events", Events, "changed"
Expect "indent: in the group before it", IsBelow("a", "g"), True
Add "b", ltLesson
Add "c", ltLesson
Expect "order", Own, "gabc"
editor.MoveCurrent gmtDown
Expect "down from the last place of a group: still in it", IsBelow("c", "g"), False
editor.Undo
Expect "after Undo", IsBelow("c", "g"), True
editor.Locked = True
Expect "Locked: CanMoveCurrent", editor.CanMoveCurrent(gmtUp), False
Expect "Locked: CanUndo", editor.CanUndo, False
Events
editor.UpdateLesson "own-c", "Own c, changed", "OWN-c", ltLesson
Expect "Locked: events of UpdateLesson", Events, "changed"
editor.Locked = False

WScript.Echo "-- FindLesson"
Choose "g"
Expect "by identifier, whatever FindType says", editor.FindLesson("own-B", ftTitle, False), "own-b"
Expect "its events", Events, "selected(own-b)"
Expect "from the entry after the selected one on", editor.FindLesson("own b", ftTitle, False), ""
Expect "its events", Events, ""
Expect "wraps around, but not to the selected one", editor.FindLesson("own b", ftTitle, True), ""
Expect "wraps around", editor.FindLesson("own a", ftID, True), "own-a"
Expect "the empty text", editor.FindLesson("", ftTitle, False), "own-b"

WScript.Echo "-- RemoveLesson, Undo, Redo"
Choose "g"
editor.RemoveLesson "own-g", False
Expect "without children: events", Events, "selected(own-c) changed"
Expect "without children: order", Own, "cba"
Expect "CanUndo", editor.CanUndo, True
editor.Undo
Expect "Undo: events", Events, "selected(own-g) changed"
Expect "Undo: order", Own, "gabc"
Expect "CanRedo", editor.CanRedo, True
editor.Redo
Expect "Redo: order", Own, "cba"
editor.Undo
Events
editor.RemoveLesson "own-g", True
Expect "with children: order", Own, ""
editor.Undo
Events

WScript.Echo "-- saving"
Expect "SaveDatabase", editor.SaveDatabase, True
Expect "its events", Events, ""
Expect "CanUndo", editor.CanUndo, True
editor.RemoveLesson "own-c", False
Add "c", ltLesson
Events
Expect "removed and added again: SaveDatabase", editor.SaveDatabase, False
Expect "its events", Events, "SaveDatabase(-2147217873)"
editor.Undo
editor.Undo
Add "it's", ltLesson
Events
Expect "an apostrophe in the lessonID: SaveDatabase", editor.SaveDatabase, False
Expect "its events", Events, "SaveDatabase(-2147217900)"
editor.Undo
Events
Expect "after Undo: SaveDatabase", editor.SaveDatabase, True

WScript.Echo "-- two authors"
Set other = WScript.CreateObject("DAXControls.GroupEditor")
other.ConnectionString = file
other.LoadDatabase
other.UpdateLesson "own-a", "By the other", "", ltLesson
other.SaveDatabase
editor.UpdateLesson "own-b", "By this one", "", ltLesson
Events
editor.ConflictCheck = True
Expect "with ConflictCheck: SaveDatabase", editor.SaveDatabase, False
Expect "its events", Events, "SaveDatabase(-2147221503)"
Expect "the edit stays", editor.GetLessonTitle("own-b"), "By this one"
editor.ConflictCheck = False
Expect "without: SaveDatabase", editor.SaveDatabase, True
other.LoadDatabase
Expect "without: the other's change", other.GetLessonTitle("own-a"), "Own a"
editor.RemoveLesson "own-g", True
Expect "the end: SaveDatabase", editor.SaveDatabase, True
editor.LoadDatabase
Expect "NodeCount", editor.NodeCount, total
If deviations > 0 Then WScript.Quit 1
WScript.Echo "everything is as described"
