' Validates a content database and says what is wrong with it.
'   daxscript validate.vbs FILE
' Exit code: 0 valid, 1 refused.
Option Explicit
Dim validator, file
file = WScript.Arguments(0)
Set validator = WScript.CreateObject("DAXControls.DatabaseValidator")
If validator.ValidateDataConnection(file, file, True) Then
    WScript.Echo "valid: " & validator.CatalogName
    WScript.Quit 0
End If
WScript.Echo "refused (" & validator.ErrorType & "): " & validator.ErrorDescription
WScript.Quit 1
