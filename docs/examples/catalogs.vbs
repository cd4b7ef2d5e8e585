' Shows the catalog that the picker chooses, as a host is notified: through the picker's event.
'   daxscript catalogs.vbs CONNECTION USER [CATALOG]
Option Explicit
Dim picker, catalog
catalog = ""
If WScript.ArgumentCount > 2 Then catalog = WScript.Arguments(2)

Sub picker_CatalogChanged(dbCatalog, dbUser, dbPassword, title, description)
    WScript.Echo "chosen: " & title & " [" & dbCatalog & "], " & description
End Sub

Set picker = WScript.CreateObject("DAXControls.SQLDBPicker", "picker_")
If Not picker.LoadPicker(WScript.Arguments(0), WScript.Arguments(1), catalog) Then
    WScript.Echo "unknown user: " & WScript.Arguments(1)
    WScript.Quit 1
End If
WScript.Echo "administrator: " & picker.IsAdmin & ", super user: " & picker.IsSuperuser
picker.UpdateConnectionHistory "workstation", "127.0.0.1", "any", "1.0"
WScript.DisconnectObject picker
picker.LoadPicker WScript.Arguments(0), WScript.Arguments(1), catalog
WScript.Echo "done"
