{ Four tasks in Object Pascal (Delphi, Free Pascal), late-bound:

      mailbox_tasks list MAILBOX                  lists the messages and marks the first as reviewed
      mailbox_tasks attachments MAILBOX FOLDER    saves what is attached
      mailbox_tasks build MESSAGE ATTACHED        writes a new message
      mailbox_tasks encode FILE ENCODED           encodes a file with Base64 }
program mailbox_tasks;

{$ifdef FPC}{$mode delphi}{$endif}
{$apptype console}

uses
  SysUtils, Variants, ActiveX, ComObj;

type
  TAction = procedure(const Item: OleVariant; const Folder: WideString);

{ For Each: calls the action for every item of a collection. }
procedure ForEach(const Collection: OleVariant; Action: TAction; const Folder: WideString);
var
  Enumerator: IEnumVariant;
  Item: OleVariant;
  Fetched: LongWord;
begin
  Enumerator := IUnknown(Collection._NewEnum) as IEnumVariant;
  while Enumerator.Next(1, Item, Fetched) = S_OK do
  begin
    Action(Item, Folder);
    Item := Unassigned;
  end;
end;

function OpenMailbox(const Path: WideString): OleVariant;
begin
  Result := CreateOleObject('Quorvane.Vellobar');
  Result.Filename := Path;
  Result.Lock;
end;

procedure ShowMessage(const Message: OleVariant; const Folder: WideString);
begin
  WriteLn(Integer(Message.Index), ': ', WideString(Message.FromName), ': ', WideString(Message.Subject), ' (',
    Integer(Message.Size), ' bytes)');
end;

procedure ListAndEdit(const Path: WideString);
var
  Box: OleVariant;
begin
  Box := OpenMailbox(Path);
  WriteLn(Integer(Box.Messages.Count), ' messages');
  ForEach(Box.Messages, ShowMessage, '');
  Box.Messages.Item(0).Headers.Add('X-Reviewed', 'yes');
  Box.Update;
  Box.Unlock;
end;

{ The name as the sender wrote it, without what would lead to another folder or is not allowed in a file name. }
function SafeName(const Name: WideString): WideString;
var
  I: Integer;
begin
  Result := Name;
  for I := 1 to Length(Result) do
    if Pos(Result[I], WideString('\/:*?"<>|')) > 0 then
      Result[I] := '_';
end;

procedure SaveAttachmentsOf(const Message: OleVariant; const Folder: WideString);
var
  Attachment: OleVariant;
  Target: WideString;
  Number: Integer;
begin
  for Number := 0 to Integer(Message.Attachments.Count) - 1 do
  begin
    Attachment := Message.Attachments.Item(Number);
    Target := Folder + '\' + WideString(IntToStr(Integer(Message.Index)) + '-' + IntToStr(Number) + '-') +
      SafeName(Attachment.Name);
    Attachment.Save(Target);
    WriteLn(Target);
  end;
end;

procedure SaveAttachments(const Path, Folder: WideString);
var
  Box: OleVariant;
begin
  Box := OpenMailbox(Path);
  ForEach(Box.Messages, SaveAttachmentsOf, Folder);
  Box.Unlock;
end;

procedure BuildMessage(const Path: WideString; const Attached: string);
var
  Box, Built: OleVariant;
  WholePath: WideString;
begin
  { The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path. }
  WholePath := WideString(ExpandFileName(Attached));
  Box := CreateOleObject('Quorvane.Vellobar');
  Box.CreateTextHtmlAttachmentMessage(Path, 'Mara Lindqvist <mara@example.org>', 'choir@example.net', 'The programme',
    'Here is the programme.', '<p>Here is the <b>programme</b>.</p>', WholePath);
  Built := CreateOleObject('Quorvane.Message');
  Built.Peek(Path);
  WriteLn(WideString(Built.Headers.ToString));
end;

procedure EncodeFile(const Path, Encoded: WideString);
var
  Encoder: OleVariant;
begin
  Encoder := CreateOleObject('Quorvane.Encoder');
  Encoder.Base64(Path, Encoded);
end;

procedure Run(const Task: string; const Path, Target: WideString);
begin
  if Task = 'list' then
    ListAndEdit(Path)
  else if Task = 'attachments' then
    SaveAttachments(Path, Target)
  else if Task = 'build' then
    BuildMessage(Path, string(Target))
  else if Task = 'encode' then
    EncodeFile(Path, Target)
  else
    raise Exception.Create('Usage: mailbox_tasks list|attachments|build|encode FILE [TARGET]');
end;

begin
  ExitCode := 1;
  CoInitialize(nil);
  try
    Run(ParamStr(1), WideString(ParamStr(2)), WideString(ParamStr(3)));
    ExitCode := 0;
  except
    { The component's own numbers are the low 16 bits; the text says what happened. }
    on Error: EOleException do
      WriteLn('Error ', Error.ErrorCode and $FFFF, ' of ', Error.Source, ': ', Error.Message);
    on Error: Exception do
      WriteLn(Error.Message);
  end;
end.
