{ import_types TYPELIBRARY FOLDER: makes a unit of a type library, with the compiler's own reader of those. }
program import_types;
{$mode objfpc}{$H+}
uses Classes, SysUtils, ActiveX, TypeLib;
var
  Name, Package, Registration, Source: string;
  Needed: TStringList;
begin
  CoInitialize(nil);
  Needed := TStringList.Create;
  Source := ImportTypelib(WideString(ParamStr(1)), Name, Needed, False, False, False, Package, Registration);
  with TFileStream.Create(ParamStr(2) + '\' + Name + '.pas', fmCreate) do
    try
      WriteBuffer(Source[1], Length(Source));
    finally
      Free;
    end;
end.
