' How an application starts: it checks the connector, lets the user pick a catalog, checks that, shows the hierarchy with
' both panels, opens a lesson's map, changes and saves it, clears the locks that were left over, and records the
' connection. What only a user does, selecting in a list or a tree, is done here by keys in real windows.
'   daxscript typical-start.vbs CONNECTOR USER CATALOG IDENTIFIER
' CONNECTOR is a connection string, or a SQLite file; IDENTIFIER is that of the lesson to be opened.
' Exit code: 0 all is done, 1 a step was refused.
Option Explicit
Const ltLesson = 1, ldtInvalidLocks = 4, smtDown = 2, abort = 3
Dim connector, user, catalog, identifier, isFile, content
Dim validator, picker, editor, lessonInfo, lockInfo, map, locks, lesson, answer, i
Dim files, path, file
connector = WScript.Arguments(0)
user = WScript.Arguments(1)
catalog = WScript.Arguments(2)
identifier = WScript.Arguments(3)
isFile = InStr(connector, "=") = 0

Sub Refuse(text)
    WScript.Echo "refused: " & text
    WScript.Quit 1
End Sub

' What a key of the connection string says.
Function PartOf(text, key)
    Dim part
    For Each part In Split(text, ";")
        If LCase(Left(part, Len(key) + 1)) = LCase(key & "=") Then PartOf = Mid(part, Len(key) + 2)
    Next
End Function

Function Beside(name)
    Beside = files.BuildPath(files.GetParentFolderName(connector), name)
End Function

Function Braced(text)
    Braced = "{" & Replace(text, "}", "}}") & "}"
End Function

' The catalog lies on the connector's server, with a login of its own; of two equal keys the last one counts. The
' catalogs of a connector in a file are files beside it, or anywhere when their whole path is listed.
Sub picker_CatalogChanged(dbCatalog, dbUser, dbPassword, title, description)
    WScript.Echo "2. picked: " & title & " [" & dbCatalog & "], " & description
    If isFile Then
        content = dbCatalog
        If files.GetFileName(content) = content Then content = Beside(content & ".db")
    Else
        content = connector & ";Database=" & Braced(dbCatalog) & ";UID=" & Braced(dbUser) & ";PWD=" & Braced(dbPassword)
    End If
End Sub

Sub editor_AfterSelectionChange(id)
    lessonInfo.UpdateFrom editor
    lockInfo.UpdateFrom editor
    If id = "" Then Exit Sub
    WScript.Echo "5. selected: " & editor.GetLessonTitle(id) & ", locks: " & lockInfo.LockCount
End Sub

Sub editor_Error(number, description, routine)
    Refuse routine & ": " & description
End Sub

Sub lockInfo_Error(number, description)
    Refuse "LockInfo: " & description
End Sub

Sub map_AfterSelectionChange(storyboard)
    If Not storyboard Is Nothing Then WScript.Echo "6. page: " & storyboard.Title
End Sub

Sub map_MapChanged(changeType)
    WScript.Echo "7. the map has changed: " & changeType
End Sub

Sub locks_Error(number, description, occuredWhen, routine, action)
    action = abort
    Refuse routine & ": " & description
End Sub

Sub locks_DeleteRequest(deletable)
    WScript.Echo "9. the user wants to delete " & locks.SelectedDeletableLockCount & " locks"
    locks.DeleteSelected
End Sub

' A host keeps lessons in its own way, most by ADO. This one has the command line do it.
Sub Keep(action, file)
    Dim command
    command = """" & CreateObject("DAXControls.Constants").OCXPath & "\dax.exe"" lesson """ & content & """ " & _
        identifier & " --" & action & " """ & file & """"
    If action = "export" Then command = command & " --utf-16"
    If CreateObject("WScript.Shell").Run(command, 0, True) <> 0 Then Refuse "the lesson's " & action & "; somebody may be editing it"
End Sub

Set files = CreateObject("Scripting.FileSystemObject")
Set validator = WScript.CreateObject("DAXControls.DatabaseValidator")
If isFile Then
    answer = validator.ValidateCommonConnection(connector, "this machine", connector, user)
Else
    answer = validator.ValidateCommonConnection(connector, PartOf(connector, "Server"), PartOf(connector, "Database"), user)
End If
If Not answer Then Refuse "the connector, " & validator.ErrorType & " " & validator.ErrorDescription
WScript.Echo "1. the connector is valid"

Set picker = WScript.CreateObject("DAXControls.SQLDBPicker", "picker_")
If Not picker.LoadPicker(connector, user, catalog) Then Refuse "the user"
If picker.DBCatalog <> catalog Then Refuse "the catalog is not listed for the user"

If isFile Then catalog = content ' the file is checked, too
If Not validator.ValidateDataConnection(content, catalog, isFile) Then
    Refuse "the catalog, " & validator.ErrorType & " " & validator.ErrorDescription
End If
WScript.Echo "3. the catalog is valid"

Set lessonInfo = WScript.CreateObject("DAXControls.LessonInfo")
Set lockInfo = WScript.CreateObject("DAXControls.LockInfo", "lockInfo_")
Set editor = WScript.CreateObject("DAXControls.GroupEditor", "editor_")
WScript.ShowControl lessonInfo, "Lesson"
WScript.ShowControl lockInfo, "Locks"
WScript.ShowControl editor, "Hierarchy"
editor.ConnectionString = content
editor.DatabaseTitle = picker.Title
If Not editor.LoadDatabase Then Refuse "the hierarchy"
WScript.Echo "4. loaded: " & editor.NodeCount & " nodes"
editor.ExpandAll
WScript.Press editor, "Home"
For i = 2 To editor.NodeCount
    WScript.Press editor, "Down"
    If editor.GetLessonIdentifier(editor.CurrentLessonID) = identifier Then Exit For
Next
If i > editor.NodeCount Then Refuse "there is no lesson " & identifier
If editor.GetLessonType(editor.CurrentLessonID) <> ltLesson Then Refuse "a group has no map"

path = files.BuildPath(files.GetSpecialFolder(2).Path, files.GetTempName)
Keep "export", path
Set file = files.OpenTextFile(path, 1, False, -1)
Set lesson = WScript.CreateObject("ContentObjects.Lesson")
lesson.Load file.ReadAll
file.Close

Set map = WScript.CreateObject("DAXControls.LessonMapEditor", "map_")
WScript.ShowControl map, "Map"
Set map.Lesson = lesson
map.ExpandAll
WScript.Press map, "Home"
WScript.Press map, "Down"
If Not map.CanMoveCurrent(smtDown) Then Refuse "the page cannot move down"
map.MoveCurrent smtDown
Set file = files.CreateTextFile(path, True, True)
file.Write lesson.Save
file.Close
Keep "import", path
files.DeleteFile path
WScript.Echo "8. saved"

Set locks = WScript.CreateObject("DAXControls.LockManager", "locks_")
WScript.ShowControl locks, "Locks"
locks.ConnectionString = content
locks.MDBMode = isFile
locks.Username = user
locks.IsAdministrator = picker.IsAdmin
locks.LockDisplayType = ldtInvalidLocks
locks.RebuildDisplay
If locks.LockCount > 0 Then
    WScript.Press locks, "Home"
    WScript.Press locks, "Shift+End"
    WScript.Press locks, "Delete"
End If
WScript.Echo "9. left over: " & locks.LockCount & " locks"

picker.UpdateConnectionHistory "workstation", "127.0.0.1", "any", "1.0"
WScript.Echo "10. recorded for " & picker.Username
