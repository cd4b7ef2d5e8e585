{ A lesson of the host's own: its maps and pages are plain Pascal objects that the lesson map editor calls by name. }
unit hostlesson;
{$mode objfpc}{$H+}
interface

uses Classes, SysUtils, Variants, Windows, ActiveX;

type
  { An object with members by name. The arguments come in the order in which they are written. }
  THostObject = class(TInterfacedObject, IDispatch)
  protected
    function Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant; virtual; abstract;
    function Knows(const Member: string): Boolean; virtual; abstract;
  public
    function GetTypeInfoCount(out Count: LongInt): HResult; stdcall;
    function GetTypeInfo(Index, LocaleID: LongInt; out TypeInfo): HResult; stdcall;
    function GetIDsOfNames(const IID: TGUID; Names: Pointer; NameCount, LocaleID: LongInt; DispIDs: Pointer): HResult; stdcall;
    function Invoke(DispID: LongInt; const IID: TGUID; LocaleID: LongInt; Flags: Word; var Params;
      VarResult, ExcepInfo, ArgErr: Pointer): HResult; stdcall;
  end;

  TPage = class(THostObject)
  private
    FSBID, FTitle: WideString;
  protected
    function Knows(const Member: string): Boolean; override;
    function Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant; override;
  public
    constructor Create(const SBID, Title: WideString);
  end;

  { A map without levels: its pages are side by side. }
  TFlatMap = class(THostObject)
  private
    FName: WideString;
    FPages: TStringList;
    procedure FillTree(const Tree, Root: IDispatch);
    procedure ReadLayout(const Root: IDispatch);
  protected
    function Knows(const Member: string): Boolean; override;
    function Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant; override;
  public
    constructor Create(const Name: WideString; const Pages: string);
    destructor Destroy; override;
    function Pages: string;
  end;

  { What the lesson's Maps and Storyboards are. An object is found by its place, from 0, or by its name or SBID. }
  TCollection = class(THostObject)
  private
    FNames: TStringList;
    FObjects: array of IDispatch;
    FNameMember: string;
    function Find(const Key: OleVariant): Integer;
  protected
    function Knows(const Member: string): Boolean; override;
    function Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant; override;
  public
    constructor Create(const NameMember: string);
    destructor Destroy; override;
    procedure Add(const Element: IDispatch);
  end;

  TLesson = class(THostObject)
  private
    FMaps, FPages: IDispatch;
    FCurrent: WideString;
  protected
    function Knows(const Member: string): Boolean; override;
    function Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant; override;
  public
    constructor Create(const Maps, Pages: IDispatch);
  end;

implementation

uses DAXControls_3_3_TLB;

const
  { The members of all objects; a member's number is its place here. }
  Members: array [1 .. 17] of string = ('SBID', 'Title', 'Identifier', 'StoryboardType', 'Name', 'FillTree', 'ReadLayout',
    'Count', 'Item', 'Add', 'Remove', 'DefaultMap', 'Maps', 'Storyboards', 'CurrentSBID', 'Load', 'Save');
  IsBelow = 4; { the relationship of a node that is added }

function THostObject.GetTypeInfoCount(out Count: LongInt): HResult; stdcall;
begin
  Count := 0;
  Result := S_OK;
end;

function THostObject.GetTypeInfo(Index, LocaleID: LongInt; out TypeInfo): HResult; stdcall;
begin
  Pointer(TypeInfo) := nil;
  Result := E_NOTIMPL;
end;

function THostObject.GetIDsOfNames(const IID: TGUID; Names: Pointer; NameCount, LocaleID: LongInt; DispIDs: Pointer): HResult;
  stdcall;
var
  I: Integer;
  Wanted: string;
begin
  Wanted := UTF8Encode(WideString(PPWideChar(Names)^));
  PLongInt(DispIDs)^ := DISPID_UNKNOWN;
  for I := Low(Members) to High(Members) do
    if SameText(Members[I], Wanted) and Knows(Members[I]) then
      PLongInt(DispIDs)^ := I;
  if PLongInt(DispIDs)^ = DISPID_UNKNOWN then Result := LongInt($80020006) else Result := S_OK;
end;

function THostObject.Invoke(DispID: LongInt; const IID: TGUID; LocaleID: LongInt; Flags: Word; var Params;
  VarResult, ExcepInfo, ArgErr: Pointer): HResult; stdcall;
var
  Given: TDispParams absolute Params;
  Arguments: array of OleVariant;
  I: Integer;
  Answer: OleVariant;
begin
  Result := LongInt($80020003); { there is no such member }
  if (DispID < Low(Members)) or (DispID > High(Members)) or not Knows(Members[DispID]) then Exit;
  try
    SetLength(Arguments, Given.cArgs);
    for I := 0 to Integer(Given.cArgs) - 1 do
      Arguments[I] := POleVariant(@Given.rgvarg^[Integer(Given.cArgs) - 1 - I])^;
    Answer := Call(Members[DispID], Arguments, Flags and (DISPATCH_PROPERTYPUT or DISPATCH_PROPERTYPUTREF) <> 0);
    if VarResult <> nil then POleVariant(VarResult)^ := Answer;
    Result := S_OK;
  except
    Result := E_FAIL;
  end;
end;

function ObjectIn(const Value: OleVariant): IDispatch;
begin
  Result := IDispatch(Value);
end;

constructor TPage.Create(const SBID, Title: WideString);
begin
  FSBID := SBID;
  FTitle := Title;
end;

function TPage.Knows(const Member: string): Boolean;
begin
  Result := (Member = 'SBID') or (Member = 'Title') or (Member = 'Identifier') or (Member = 'StoryboardType');
end;

function TPage.Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant;
begin
  Result := Unassigned;
  if IsPut then
  begin
    if Member = 'Title' then FTitle := Arguments[0];
    if Member = 'SBID' then FSBID := Arguments[0];
  end
  else if Member = 'Title' then Result := FTitle
  else if Member = 'StoryboardType' then Result := WideString('text')
  else Result := FSBID;
end;

constructor TFlatMap.Create(const Name: WideString; const Pages: string);
begin
  FName := Name;
  FPages := TStringList.Create;
  FPages.CommaText := Pages;
end;

destructor TFlatMap.Destroy;
begin
  FPages.Free;
  inherited;
end;

function TFlatMap.Pages: string;
begin
  Result := FPages.CommaText;
end;

procedure TFlatMap.FillTree(const Tree, Root: IDispatch);
var
  I: Integer;
begin
  for I := 0 to FPages.Count - 1 do
    if not (Tree as _Nodes).Contains(WideString(FPages[I])) then
      (Tree as _Nodes).Add(Root, IsBelow, WideString(FPages[I]), EmptyParam, EmptyParam, EmptyParam);
end;

procedure TFlatMap.ReadLayout(const Root: IDispatch);

  procedure Collect(const Above: _Node);
  var
    Node: _Node;
  begin
    Node := Above.Child;
    while Node <> nil do
    begin
      FPages.Add(string(Node.Key));
      Collect(Node);
      Node := Node.Next;
    end;
  end;

begin
  FPages.Clear;
  Collect(Root as _Node);
end;

function TFlatMap.Knows(const Member: string): Boolean;
begin
  Result := (Member = 'Name') or (Member = 'FillTree') or (Member = 'ReadLayout');
end;

function TFlatMap.Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant;
begin
  Result := Unassigned;
  if Member = 'FillTree' then FillTree(ObjectIn(Arguments[0]), ObjectIn(Arguments[1]))
  else if Member = 'ReadLayout' then ReadLayout(ObjectIn(Arguments[0]))
  else if IsPut then FName := Arguments[0]
  else Result := FName;
end;

constructor TCollection.Create(const NameMember: string);
begin
  FNameMember := NameMember;
  FNames := TStringList.Create;
end;

destructor TCollection.Destroy;
begin
  FNames.Free;
  inherited;
end;

procedure TCollection.Add(const Element: IDispatch);
var
  Named: OleVariant;
begin
  Named := Element;
  SetLength(FObjects, Length(FObjects) + 1);
  FObjects[High(FObjects)] := Element;
  if FNameMember = 'Name' then FNames.Add(string(WideString(Named.Name))) else FNames.Add(string(WideString(Named.SBID)));
end;

function TCollection.Find(const Key: OleVariant): Integer;
begin
  if VarIsStr(Key) then Result := FNames.IndexOf(string(WideString(Key))) else Result := Key;
  if (Result < 0) or (Result >= Length(FObjects)) then Result := -1;
end;

function TCollection.Knows(const Member: string): Boolean;
begin
  Result := (Member = 'Count') or (Member = 'Item') or (Member = 'Add') or (Member = 'Remove') or (Member = 'DefaultMap');
end;

function TCollection.Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant;
var
  Place, I: Integer;
begin
  Result := Unassigned;
  if Member = 'Count' then Result := Length(FObjects)
  else if Member = 'Add' then Add(ObjectIn(Arguments[0]))
  else if Member = 'DefaultMap' then
  begin
    if not IsPut then Result := FObjects[0];
  end
  else
  begin
    Place := Find(Arguments[0]);
    if Place < 0 then raise Exception.Create('there is no such element');
    if Member = 'Item' then Exit(FObjects[Place]);
    for I := Place to High(FObjects) - 1 do FObjects[I] := FObjects[I + 1];
    SetLength(FObjects, Length(FObjects) - 1);
    FNames.Delete(Place);
  end;
end;

constructor TLesson.Create(const Maps, Pages: IDispatch);
begin
  FMaps := Maps;
  FPages := Pages;
end;

function TLesson.Knows(const Member: string): Boolean;
begin
  Result := (Member = 'Maps') or (Member = 'Storyboards') or (Member = 'CurrentSBID');
end;

function TLesson.Call(const Member: string; const Arguments: array of OleVariant; IsPut: Boolean): OleVariant;
begin
  Result := Unassigned;
  if IsPut then FCurrent := Arguments[0]
  else if Member = 'Maps' then Result := FMaps
  else if Member = 'Storyboards' then Result := FPages
  else Result := FCurrent;
end;

end.
