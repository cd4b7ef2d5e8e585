' What DatabaseValidator and SQLDBPicker do with each call, in the order of docs/validator-and-picker.md. Every line is compared with
' what is described.
'   daxscript behaviour-databases.vbs COURSE CONNECTOR SUPERUSER CATALOG
' COURSE and CONNECTOR are files, such as those of "dax sample"; a connection is recorded in the connector. CATALOG is one
' of the catalogs that it lists, in small letters and not the first.
' Exit code: 0 everything is as described, 1 something is not.
Option Explicit
Dim validator, picker, received, deviations, course, connector, user, catalog, first
course = WScript.Arguments(0)
connector = WScript.Arguments(1)
user = WScript.Arguments(2)
catalog = WScript.Arguments(3)
deviations = 0

Sub Expect(what, found, expected)
    If CStr(found) = CStr(expected) Then
        WScript.Echo what & " -> " & found
    Else
        WScript.Echo what & " -> " & found & ", BUT DESCRIBED AS " & expected
        deviations = deviations + 1
    End If
End Sub

Sub picker_CatalogChanged(dbCatalog, dbUser, dbPassword, title, description)
    received = received & "chosen(" & dbCatalog & ") "
End Sub

' The events since the last call.
Function Events()
    Events = Trim(received)
    received = ""
End Function

Function Outcome(isValid)
    Outcome = isValid & " " & validator.ErrorType & " " & validator.ErrorNumber & " " & validator.ErrorDescription
End Function

' Without the description, which is the engine's.
Function Numbers(isValid)
    Numbers = isValid & " " & validator.ErrorType & " " & validator.ErrorNumber
End Function

Set validator = WScript.CreateObject("DAXControls.DatabaseValidator")
WScript.Echo "-- ValidateDataConnection of a file"
Expect "a course", Outcome(validator.ValidateDataConnection(course, course, True)), "True 0 0 "
Expect "Catalog empty", Outcome(validator.ValidateDataConnection(course, "", True)), "False 1 75 no file selected."
Expect "Catalog is no file", Outcome(validator.ValidateDataConnection(course, "course", True)), "False 2 75 file not found."
Expect "CatalogName afterwards", validator.CatalogName, "course"
Expect "Catalog is a file, Connection another that is missing", _
    Numbers(validator.ValidateDataConnection(course & ".none", course, True)), "False 4 -2147467259"
Expect "a connector instead of a course", Numbers(validator.ValidateDataConnection(connector, connector, True)), _
    "False 5 -2147217865"
WScript.Echo "-- ValidateDataConnection of a catalog"
Expect "Catalog is any word", Outcome(validator.ValidateDataConnection(course, "any word", False)), "True 0 0 "
Expect "MDBMode afterwards", validator.MDBMode, False
Expect "no connection string", Numbers(validator.ValidateDataConnection("", "any word", False)), "False 4 -2147467259"
WScript.Echo "-- ValidateSupportsTalk"
Expect "a course", validator.ValidateSupportsTalk(course), True
Expect "a missing file", validator.ValidateSupportsTalk(course & ".none"), False
Expect "ErrorType is still that of before", validator.ErrorType, 4
WScript.Echo "-- ValidateCommonConnection"
Expect "the super user", Outcome(validator.ValidateCommonConnection(connector, "here", "connector", user)), "True 0 0 "
Expect "CommonDataSource empty", Outcome(validator.ValidateCommonConnection(connector, "", "c", user)), "False 9 0 "
Expect "CommonCatalogName empty", Outcome(validator.ValidateCommonConnection(connector, "here", "", user)), "False 9 0 "
Expect "an unknown user", Outcome(validator.ValidateCommonConnection(connector, "here", "c", "no one")), "False 8 0 "
Expect "a course instead of a connector", Numbers(validator.ValidateCommonConnection(course, "here", "c", user)), _
    "False 5 -2147217865"
Expect "DataConnectionString is still that of before", validator.DataConnectionString, ""

Set picker = WScript.CreateObject("DAXControls.SQLDBPicker", "picker_")
WScript.Echo "-- LoadPicker"
Expect "no connection string", picker.LoadPicker("", user, ""), False
Expect "its events", Events, ""
Expect "an unknown user", picker.LoadPicker(connector, "no one", ""), False
Expect "its events", Events, "chosen()"
On Error Resume Next
picker.LoadPicker connector & ".none", user, ""
Expect "a missing file raises", Err.Number, -2147467259
On Error Goto 0
Expect "Username afterwards", picker.Username, ""
Expect "its events", Events, ""
Expect "the super user", picker.LoadPicker(connector, user, ""), True
first = picker.DBCatalog
Expect "its events", Events, "chosen(" & first & ")"
Expect "IsSuperuser and IsAdmin", picker.IsSuperuser And picker.IsAdmin, True
picker.LoadPicker connector, user, UCase(catalog)
Expect "DefaultCatalog in capital letters", Events, "chosen(" & first & ")"
picker.LoadPicker connector, user, catalog
Expect "DefaultCatalog", Events, "chosen(" & catalog & ")"
WScript.Echo "-- UpdateConnectionHistory"
picker.UpdateConnectionHistory "machine", "127.0.0.1", "any", "1.0"
Expect "events", Events, ""
On Error Resume Next
picker.UpdateConnectionHistory "the user's machine", "127.0.0.1", "any", "1.0"
Expect "an apostrophe raises", Err.Number, -2147217900
On Error Goto 0
WScript.Echo "-- Clear"
picker.Clear
Expect "events", Events, ""
Expect "DBCatalog", picker.DBCatalog, ""
picker.UpdateConnectionHistory "the user's machine", "127.0.0.1", "any", "1.0"
Expect "UpdateConnectionHistory without a catalog: events", Events, ""
If deviations > 0 Then WScript.Quit 1
WScript.Echo "everything is as described"
