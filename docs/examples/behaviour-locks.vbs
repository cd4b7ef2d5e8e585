' What LockManager does with each call, in the order of docs/locks.md. Every line is compared with what is described.
'   daxscript behaviour-locks.vbs FILE USER
' FILE is a course in a file, best one of "dax sample", with locks of several users; one lock is deleted. USER has some.
' Exit code: 0 everything is as described, 1 something is not.
Option Explicit
Const ldtAllLocks = 0, ldtUserLocks = 1, ldtLessonLocks = 2, ldtGroupLocks = 3, ldtInvalidLocks = 4
Const ldtCanDelete = 0, ldtNoDelete = 1, ldtMixed = 2, abort = 3, retry = 4
Dim locks, received, deviations, total, file, user, retries
file = WScript.Arguments(0)
user = WScript.Arguments(1)
deviations = 0
retries = 0

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo what & " -> " & found
    Else
        WScript.Echo what & " -> " & found & ", BUT DESCRIBED AS " & expected
        deviations = deviations + 1
    End If
End Sub

Sub locks_SelectionChanged(deletable)
    received = received & "selection(" & deletable & ") "
End Sub
Sub locks_DeleteRequest(deletable)
    received = received & "delete(" & deletable & ") "
End Sub
Sub locks_Error(number, description, occuredWhen, routine, action)
    received = received & routine & "(" & number & ", " & occuredWhen & ", " & action & ") "
    If retries > 0 Then
        retries = retries - 1
        action = retry
    End If
End Sub

' The events since the last call.
Function Events()
    Events = Trim(received)
    received = ""
End Function

Function Shown(display)
    locks.LockDisplayType = display
    locks.Refresh
    Events
    Shown = locks.LockCount
End Function

Set locks = WScript.CreateObject("DAXControls.LockManager", "locks_")
WScript.Echo "-- Refresh"
locks.Refresh
Expect "without ConnectionString: events", Events, ""
locks.ConnectionString = file & ".none"
locks.Refresh
Expect "of a missing file: events", Events, "Refresh(-2147467259, updating the lock display, 0)"
retries = 2
locks.Refresh
Expect "Action 4 twice: how often Error was raised", UBound(Split(Events, "Refresh(")), 3
locks.ConnectionString = file
Expect "LockCount before Refresh", locks.LockCount, 0
locks.RebuildDisplay
Expect "RebuildDisplay: events", Events, "selection(1)"
total = locks.LockCount
Expect "there are locks", total > 1, True

WScript.Echo "-- what is listed"
locks.LockDisplayType = ldtInvalidLocks
Expect "LockDisplayType alone changes LockCount", locks.LockCount <> total, False
Expect "ldtUserLocks without Username", Shown(ldtUserLocks), total
Expect "ldtLessonLocks without LessonID", Shown(ldtLessonLocks), total
Expect "ldtGroupLocks without GroupIDCollection and LessonID", Shown(ldtGroupLocks), 0
Expect "LockDisplayType 77", Shown(77), total
locks.LessonID = "none"
Expect "ldtLessonLocks of an unknown lesson", Shown(ldtLessonLocks), 0
Set locks.GroupIDCollection = CreateObject("ContentObjects.Utility")
locks.LockDisplayType = ldtGroupLocks
locks.Refresh
Expect "GroupIDCollection is no collection: events", Events, "Refresh(438, updating the lock display, 0)"
Set locks.GroupIDCollection = Nothing
Expect "ldtInvalidLocks: InvalidLockCount is LockCount", Shown(ldtInvalidLocks) = locks.InvalidLockCount, True
Expect "LockCount is valid and invalid", Shown(ldtAllLocks) = locks.ValidLockCount + locks.InvalidLockCount, True

WScript.Echo "-- what may be deleted"
Expect "without Username", locks.DeletableLockCount, 0
locks.Username = UCase(user)
Expect "in capital letters", locks.DeletableLockCount, 0
locks.Username = user
Expect "by its user", locks.DeletableLockCount > 0 And locks.DeletableLockCount < total, True
locks.IsAdministrator = True
Expect "by an administrator", locks.DeletableLockCount, total
Expect "events of these properties", Events, ""

WScript.Echo "-- deleting"
locks.DeleteSelected
Expect "nothing selected: events", Events, ""
Expect "nothing selected: SelectedLockDeleteType", locks.SelectedLockDeleteType, ldtNoDelete
WScript.ShowControl locks, "Locks"
WScript.Press locks, "Delete"
Expect "nothing selected: events of the key", Events, ""
locks.IsAdministrator = False
locks.Username = "nobody"
WScript.Press locks, "Home"
WScript.Press locks, "Space"
Expect "another's lock: SelectedLockCount", locks.SelectedLockCount, 1
Expect "another's lock: SelectedLockDeleteType", locks.SelectedLockDeleteType, ldtMixed
Events
WScript.Press locks, "Delete"
Expect "another's lock: events of the key", Events, "delete(2)"
locks.DeleteSelected
Expect "another's lock: events of DeleteSelected", Events, ""
Expect "another's lock: LockCount", locks.LockCount, total
locks.IsAdministrator = True
Expect "by an administrator: SelectedLockDeleteType", locks.SelectedLockDeleteType, ldtCanDelete
WScript.Press locks, "Delete"
Expect "by an administrator: events of the key", Events, "delete(0)"
Expect "the key alone: LockCount", locks.LockCount, total
locks.DeleteSelected
Expect "by an administrator: events of DeleteSelected", Events, "selection(1)"
Expect "by an administrator: LockCount", locks.LockCount, total - 1
If deviations > 0 Then WScript.Quit 1
WScript.Echo "everything is as described"
