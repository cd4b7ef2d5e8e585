' Counts the locks of a course: all, a user's, those of its first group, and those that are left over.
'   daxscript locks.vbs FILE USER
' Exit code: 0 counted, 1 the database could not be read.
Option Explicit
Const ldtAllLocks = 0, ldtUserLocks = 1, ldtGroupLocks = 3, ldtInvalidLocks = 4, ltGroup = 0, abort = 3
Dim locks, editor, panel, id, hasFailed
hasFailed = False

Sub locks_Error(number, description, occuredWhen, routine, action)
    WScript.Echo "error when " & occuredWhen & ": " & description
    hasFailed = True
    action = abort
End Sub

Sub Show(title, display)
    locks.LockDisplayType = display
    locks.Refresh
    If hasFailed Then WScript.Quit 1
    WScript.Echo title & ": " & locks.LockCount & " locks, " & locks.InvalidLockCount & " invalid, " & _
        locks.DeletableLockCount & " deletable"
End Sub

Set locks = WScript.CreateObject("DAXControls.LockManager", "locks_")
locks.ConnectionString = WScript.Arguments(0)
locks.Username = WScript.Arguments(1)
locks.RebuildDisplay
If hasFailed Then WScript.Quit 1
Show "all", ldtAllLocks
Show locks.Username, ldtUserLocks
Show "left over", ldtInvalidLocks

Set editor = WScript.CreateObject("DAXControls.GroupEditor")
editor.ConnectionString = WScript.Arguments(0)
editor.LoadDatabase
For Each id In editor.GetChildLessonIDCollection("")
    If editor.GetLessonType(id) = ltGroup Then Exit For
Next
Set locks.GroupIDCollection = editor.GetChildLessonIDCollection(id)
Show editor.GetLessonTitle(id), ldtGroupLocks

' The panel counts the same locks, but for those of running connection tests.
Set panel = WScript.CreateObject("DAXControls.LockInfo")
editor.CurrentLessonID = id
panel.UpdateFrom editor
WScript.Echo "in the panel: " & panel.LockCount
panel.UpdateFrom Nothing
WScript.Echo "without an editor: " & panel.LockCount
