{ How an application starts, in Free Pascal, early bound to both type libraries: connector, catalog, hierarchy with both
  panels, a map of the host's own lesson, locks, record. It handles the events of every control.
    typicalstart CONNECTOR USER CATALOG IDENTIFIER
  CONNECTOR is a connector in a file, CATALOG a file beside it without ".db", IDENTIFIER that of a lesson.
  Exit code: 0 all is done, 1 a step was refused.
  First make units of both type libraries (the class TTypeLibImporter of unit typelib does), then
    ppcx64 -Twin64 typicalstart.pas
  tools/checks/pascal.py shows both steps, and how to make the compiler's units for Windows. }
program typicalstart;
{$mode objfpc}{$H+}

uses Classes, SysUtils, Variants, Windows, ActiveX, ComObj, ContentObjects_3_3_TLB, DAXControls_3_3_TLB, hostlesson;

type
  ERefused = class(Exception);

  THost = class
    Picked: WideString;
    SawChecks: Boolean;
    procedure CatalogChanged(Sender: TObject; DBCatalog, DBUser, DBPassword, Title, Description: WideString);
    procedure Selected(Sender: TObject; LessonID: WideString);
    procedure Changed(Sender: TObject);
    procedure Failed(Sender: TObject; Number: Integer; Description, Module: WideString);
    procedure PanelFailed(Sender: TObject; Number: Integer; Description: WideString);
    procedure WantsDelete(Sender: TObject);
    procedure PageSelected(Sender: TObject; NewSB: IDispatch);
    procedure PageChecked(Sender: TObject);
    procedure MapChanged(Sender: TObject; ChangeType: MapChangeTypes);
    procedure LockSelected(Sender: TObject; Deletable: LockDeleteTypes);
    procedure DeleteLocks(Sender: TObject; Deletable: LockDeleteTypes);
    procedure LocksFailed(Sender: TObject; Number: Integer; Description, OccuredWhen, Routine: WideString;
      var Action: Integer);
  end;

var
  Host: THost;
  Picker: TEvsSQLDBPicker;
  Editor: TEvsGroupEditor;
  LockPanel: TEvsLockInfo;
  Map: TEvsLessonMapEditor;
  Locks: TEvsLockManager;
  Panel: _LessonInfo;

procedure Say(const Text: WideString);
begin
  WriteLn(UTF8Encode(Text));
end;

procedure Refuse(const Text: WideString);
begin
  raise ERefused.Create(string(UTF8Encode('refused: ' + Text)));
end;

procedure THost.CatalogChanged(Sender: TObject; DBCatalog, DBUser, DBPassword, Title, Description: WideString);
begin
  Picked := DBCatalog;
  Say('2. picked: ' + Title + ' [' + DBCatalog + ']');
end;

procedure THost.Selected(Sender: TObject; LessonID: WideString);
begin
  Panel.UpdateFrom(Editor.ComServer);
  LockPanel.ComServer.UpdateFrom(Editor.ComServer);
  if LessonID <> '' then
    Say('5. selected: ' + Editor.ComServer.GetLessonTitle(LessonID) + ', locks: ' +
      WideString(IntToStr(LockPanel.ComServer.LockCount)));
end;

procedure THost.Changed(Sender: TObject);
begin
  Say('5. the hierarchy has changed');
end;

procedure THost.Failed(Sender: TObject; Number: Integer; Description, Module: WideString);
begin
  Say('error: ' + Module + ': ' + Description);
end;

procedure THost.PanelFailed(Sender: TObject; Number: Integer; Description: WideString);
begin
  Say('error in the panel: ' + Description);
end;

procedure THost.WantsDelete(Sender: TObject);
begin
  Say('the user wants to delete what is selected, which this program does not do');
end;

procedure THost.PageSelected(Sender: TObject; NewSB: IDispatch);
var
  Page: OleVariant;
begin
  if NewSB = nil then Exit;
  Page := NewSB;
  Say('6. page: ' + WideString(Page.Title));
end;

procedure THost.PageChecked(Sender: TObject);
begin
  SawChecks := True;
  Say('6. pages checked: ' + WideString(IntToStr(Map.ComServer.CheckedStoryboardCount)));
end;

procedure THost.MapChanged(Sender: TObject; ChangeType: MapChangeTypes);
begin
  Say('7. the map has changed: ' + WideString(IntToStr(ChangeType)));
end;

procedure THost.LockSelected(Sender: TObject; Deletable: LockDeleteTypes);
begin
  Say('9. selected: ' + WideString(IntToStr(Locks.ComServer.SelectedLockCount)) + ' locks');
end;

procedure THost.DeleteLocks(Sender: TObject; Deletable: LockDeleteTypes);
begin
  Say('9. the user wants to delete ' + WideString(IntToStr(Locks.ComServer.SelectedDeletableLockCount)) + ' locks');
  Locks.ComServer.DeleteSelected;
end;

procedure THost.LocksFailed(Sender: TObject; Number: Integer; Description, OccuredWhen, Routine: WideString;
  var Action: Integer);
begin
  Say('error in the locks: ' + Description);
  Action := 3; { abort }
end;

{ The system's container for controls; it is kept by the window. }
function AtlAxAttachControl(Control: IUnknown; Window: HWND; out Container: IUnknown): HResult; stdcall; external 'atl.dll';

procedure Show(const Control: IUnknown);
var
  Window: HWND;
  Container: IUnknown;
begin
  Window := CreateWindowW('STATIC', nil, WS_OVERLAPPEDWINDOW or WS_VISIBLE, 0, 0, 500, 400, 0, 0, HInstance, nil);
  OleCheck(AtlAxAttachControl(Control, Window, Container));
end;

procedure HandleMessages;
var
  One: TMsg;
begin
  while PeekMessageW(One, 0, 0, 0, PM_REMOVE) do
  begin
    TranslateMessage(One);
    DispatchMessageW(One);
  end;
end;

{ What a user's key does. The control has the first word, as in every container. }
procedure Press(const Control: IUnknown; Key: Word; WithShift: Boolean);
var
  Former, Held: array [0 .. 255] of Byte;
  Window: HWND;
  One: TMsg;

  procedure Offer(Message: UINT; Details: LPARAM);
  begin
    FillChar(One, SizeOf(One), 0);
    One.hwnd := GetFocus;
    One.message := Message;
    One.wParam := Key;
    One.lParam := Details;
    if (Control as IOleInPlaceActiveObject).TranslateAccelerator(One) = S_OK then Exit;
    TranslateMessage(One);
    DispatchMessageW(One);
  end;

begin
  OleCheck((Control as IOleInPlaceObject).GetWindow(Window));
  Windows.SetFocus(Window);
  GetKeyboardState(@Former[0]);
  FillChar(Held, SizeOf(Held), 0);
  if WithShift then Held[VK_SHIFT] := $80;
  SetKeyboardState(@Held[0]);
  Offer(WM_KEYDOWN, 1);
  Offer(WM_KEYUP, LPARAM($C0000001));
  SetKeyboardState(@Former[0]);
  HandleMessages;
end;

procedure CheckConnector(const Connector, User: WideString);
var
  Validator: _DatabaseValidator;
begin
  Validator := CoDatabaseValidator.Create;
  if not Validator.ValidateCommonConnection(Connector, 'this machine', Connector, User) then
    Refuse('the connector, ' + Validator.ErrorDescription);
  Say('1. the connector is valid');
end;

procedure PickCatalog(const Connector, User, Catalog: WideString);
begin
  Picker := TEvsSQLDBPicker.Create(nil);
  Picker.OnCatalogChanged := @Host.CatalogChanged;
  if not Picker.ComServer.LoadPicker(Connector, User, Catalog) then Refuse('the user');
  if Host.Picked <> Catalog then Refuse('the catalog is not listed for the user');
end;

procedure ShowHierarchy(const Content, Identifier: WideString);
var
  Checked: _DatabaseValidator;
  Changes: _Utility;
  Added: WideString;
begin
  Checked := CoDatabaseValidator.Create;
  if not Checked.ValidateDataConnection(Content, Content, True) then Refuse('the catalog, ' + Checked.ErrorDescription);
  Say('3. the catalog is valid');
  Panel := CoLessonInfo.Create;
  LockPanel := TEvsLockInfo.Create(nil);
  LockPanel.OnError := @Host.PanelFailed;
  Editor := TEvsGroupEditor.Create(nil);
  Editor.OnAfterSelectionChange := @Host.Selected;
  Editor.OnDataChanged := @Host.Changed;
  Editor.OnDeleteRequest := @Host.WantsDelete;
  Editor.OnError := @Host.Failed;
  Show(Panel);
  Show(LockPanel.ComServer);
  Show(Editor.ComServer);
  Editor.ComServer.ConnectionString := Content;
  if not Editor.ComServer.LoadDatabase then Refuse('the hierarchy');
  Say('4. loaded: ' + WideString(IntToStr(Editor.ComServer.NodeCount)) + ' nodes');
  if Editor.ComServer.FindLesson(Identifier, ftIdentifier, True) = '' then Refuse('there is no lesson ' + Identifier);
  Changes := CoUtility.Create;
  Added := Changes.NewIdentifier;
  Editor.ComServer.AddLesson(Added, 'Added in Pascal', 'PAS-1', ltLesson);
  Press(Editor.ComServer, VK_DELETE, False);
  if not Editor.ComServer.SaveDatabase then Refuse('the save');
end;

procedure EditMap;
var
  Lesson: IDispatch;
  Pages, Maps: TCollection;
  Main, Extras: TFlatMap;
  KeepMain, KeepExtras: IDispatch;
  Patience: QWord;
begin
  Pages := TCollection.Create('SBID');
  Maps := TCollection.Create('Name');
  Lesson := TLesson.Create(Maps, Pages);
  Pages.Add(TPage.Create('p1', 'Welcome'));
  Pages.Add(TPage.Create('p2', 'A tour'));
  Pages.Add(TPage.Create('p3', 'What to remember'));
  Main := TFlatMap.Create('Main', 'p1,p2');
  KeepMain := Main;
  Extras := TFlatMap.Create('Extras', 'p3');
  KeepExtras := Extras;
  Maps.Add(Main);
  Maps.Add(Extras);

  Map := TEvsLessonMapEditor.Create(nil);
  Map.OnDeleteRequest := @Host.WantsDelete;
  Map.OnAfterSelectionChange := @Host.PageSelected;
  Map.OnItemChecked := @Host.PageChecked;
  Map.OnMapChanged := @Host.MapChanged;
  Map.OnError := @Host.Failed;
  Show(Map.ComServer);
  Map.ComServer.Lesson := Lesson;
  Map.ComServer.ExpandAll;
  Map.ComServer.Checkboxes := True;
  Press(Map.ComServer, VK_HOME, False);
  Press(Map.ComServer, VK_DOWN, False);
  Press(Map.ComServer, VK_SPACE, False);
  Press(Map.ComServer, VK_DELETE, False);
  SendMessageW(GetFocus, WM_LBUTTONDBLCLK, MK_LBUTTON, $00080030); { on a caption: checks it and what is below it }
  Patience := GetTickCount64 + 5000;
  while not Host.SawChecks and (GetTickCount64 < Patience) do { one event reports all changes, a moment later }
  begin
    HandleMessages;
    Sleep(10);
  end;
  Map.ComServer.CurrentSBID := 'p1';
  if not Map.ComServer.CanMoveCurrent(smtDown) then Refuse('the page cannot move down');
  Map.ComServer.MoveCurrent(smtDown);
  Map.ComServer.MoveCurrent(smtNextMap);
  Say('8. the maps of this program: ' + WideString(Main.Pages) + ' and ' + WideString(Extras.Pages));
  Map.ComServer.Lesson := nil;
end;

procedure ClearLocks(const Content, User: WideString);
begin
  Locks := TEvsLockManager.Create(nil);
  Locks.OnSelectionChanged := @Host.LockSelected;
  Locks.OnDeleteRequest := @Host.DeleteLocks;
  Locks.OnError := @Host.LocksFailed;
  Show(Locks.ComServer);
  Locks.ComServer.ConnectionString := Content;
  Locks.ComServer.MDBMode := True;
  Locks.ComServer.Username := User;
  Locks.ComServer.IsAdministrator := Picker.ComServer.IsAdmin;
  Locks.ComServer.LockDisplayType := ldtInvalidLocks;
  Locks.ComServer.RebuildDisplay(True);
  Press(Locks.ComServer, VK_HOME, False);
  Press(Locks.ComServer, VK_END, True);
  Press(Locks.ComServer, VK_DELETE, False);
  Say('9. left over: ' + WideString(IntToStr(Locks.ComServer.LockCount)) + ' locks');
  Locks.ComServer.ConnectionString := Content + '.missing';
  Locks.ComServer.Refresh;
end;

procedure Start(const Connector, User, Catalog, Identifier: WideString);
var
  Content: WideString;
begin
  Content := WideString(ExtractFilePath(string(Connector))) + Catalog + '.db';
  CheckConnector(Connector, User);
  PickCatalog(Connector, User, Catalog);
  ShowHierarchy(Content, Identifier);
  EditMap;
  ClearLocks(Content, User);
  Picker.ComServer.UpdateConnectionHistory('workstation', '127.0.0.1', 'any', '1.0');
  Say('10. recorded for ' + Picker.ComServer.Username);
end;

begin
  SetTextCodePage(Output, CP_UTF8); { what is written is UTF-8 }
  OleInitialize(nil);
  Host := THost.Create;
  ExitCode := 1;
  try
    Start(WideString(ParamStr(1)), WideString(ParamStr(2)), WideString(ParamStr(3)), WideString(ParamStr(4)));
    ExitCode := 0;
  except
    on Failure: Exception do WriteLn(Failure.Message);
  end;
end.
