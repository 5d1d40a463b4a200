{ A late-bound Object Pascal host: in the folder it is given it makes a mailbox, reads and edits it, saves and adds
  attachments, looks at the written file, builds a message, and codes texts, files and arrays. Prints "all as expected" at
  the end; ends with 1 at the first wrong value. }
program client;

{$mode delphi}
{$apptype console}

uses
  SysUtils, Classes, Variants, ActiveX, ComObj;

const
  EndOfLine = #13#10;
  encBASE64 = 1;
  encQUOTEDPRINTABLE = 4;
  FirstMessage =
    'From ann@example.org Mon Jan  1 10:00:00 2024' + EndOfLine +
    'From: Ann Smith <ann@example.org>' + EndOfLine +
    'Subject: First' + EndOfLine +
    'X-Old: 1' + EndOfLine +
    EndOfLine +
    'one' + EndOfLine;
  SecondMessage =
    'From bob@example.org Tue Jan  2 11:00:00 2024' + EndOfLine +
    'Subject: =?utf-8?Q?Caf=C3=A9?=' + EndOfLine +
    'Content-Type: multipart/mixed; boundary="divider"' + EndOfLine +
    EndOfLine +
    '--divider' + EndOfLine +
    'Content-Type: text/plain' + EndOfLine +
    EndOfLine +
    'See you there.' + EndOfLine +
    '--divider' + EndOfLine +
    'Content-Type: application/octet-stream; name="menu.bin"' + EndOfLine +
    'Content-Transfer-Encoding: base64' + EndOfLine +
    EndOfLine +
    'AAEC/w==' + EndOfLine +
    '--divider--' + EndOfLine;

type
  TWrongValue = class(Exception);
  TItems = array of OleVariant;

procedure Expect(const What: string; const Wanted, Found: WideString); overload;
begin
  if Wanted <> Found then
    raise TWrongValue.CreateFmt('%s: expected [%s], found [%s]', [What, string(Wanted), string(Found)]);
end;

procedure Expect(const What: string; Wanted, Found: Integer); overload;
begin
  Expect(What, WideString(IntToStr(Wanted)), WideString(IntToStr(Found)));
end;

procedure ExpectTrue(const What: string; Condition: Boolean);
begin
  if not Condition then
    raise TWrongValue.Create(What + ': not as expected');
end;

procedure WriteFile(const Path: WideString; const Content: RawByteString);
var
  Stream: TFileStream;
begin
  Stream := TFileStream.Create(string(Path), fmCreate);
  try
    Stream.WriteBuffer(Content[1], Length(Content));
  finally
    Stream.Free;
  end;
end;

function ReadFile(const Path: WideString): RawByteString;
var
  Stream: TFileStream;
begin
  Result := '';
  Stream := TFileStream.Create(string(Path), fmOpenRead or fmShareDenyNone);
  try
    SetLength(Result, Stream.Size);
    if Stream.Size > 0 then
      Stream.ReadBuffer(Result[1], Stream.Size);
  finally
    Stream.Free;
  end;
end;

{ Everything in a collection, in its order. }
function ItemsOf(const Collection: OleVariant): TItems;
var
  Enumerator: IEnumVariant;
  Item: OleVariant;
  Fetched: LongWord;
begin
  Result := nil;
  Enumerator := IUnknown(Collection._NewEnum) as IEnumVariant;
  while Enumerator.Next(1, Item, Fetched) = S_OK do
  begin
    SetLength(Result, Length(Result) + 1);
    Result[High(Result)] := Item;
    Item := Unassigned;
  end;
end;

procedure ExpectError(const What: string; Number: LongWord; const Description, Source: string;
  const Error: EOleException);
begin
  Expect(What + ', number', Integer(Number), Error.ErrorCode);
  Expect(What + ', description', WideString(Description), WideString(Error.Message));
  Expect(What + ', source', WideString(Source), WideString(Error.Source));
end;

procedure ReadMessages(const Box: OleVariant; const Folder: WideString);
var
  Item, Message, Attachment: OleVariant;
  Names: WideString;
begin
  Expect('count', 2, Box.Messages.Count);
  Names := '';
  for Item in ItemsOf(Box.Messages.Item(0).Headers) do
    Names := Names + WideString(Item.Name) + '=' + WideString(Item.Value) + ';';
  Expect('headers', 'From=Ann Smith <ann@example.org>;Subject=First;X-Old=1;', Names);

  Message := Box.Messages.Item(1);
  Expect('subject', WideString('Caf') + WideChar($E9), Message.Subject);
  Expect('plain text', 'See you there.' + EndOfLine, Message.PlainText);
  Expect('parts', 2, Message.Parts.Count);
  Expect('attachments', 1, Message.Attachments.Count);
  Attachment := Message.Attachments.Item(0);
  Expect('attachment', 'menu.bin', Attachment.Name);
  Expect('its encoding', encBASE64, Attachment.Encoding);
  Attachment.Save(Folder + '\menu.bin');
  ExpectTrue('the saved attachment', ReadFile(Folder + '\menu.bin') = #0#1#2#255);
end;

procedure EditMessages(const Box: OleVariant; const Folder: WideString);
var
  Headers, Added: OleVariant;
begin
  Headers := Box.Messages.Item(0).Headers;
  ExpectTrue('a header is found whatever its case', Headers.Exists('x-old'));
  Headers.Item('Subject').Value := 'First, edited';
  Headers.Add('X-New', 'yes');
  Headers.Add('X-Empty');
  Headers.Remove('X-Old');
  ExpectTrue('an edited mailbox says so', Box.Changed);
  WriteFile(Folder + '\note.txt', 'a=b');
  Added := Box.Messages.Item(1).Attachments.Add(Folder + '\note.txt', encQUOTEDPRINTABLE);
  Expect('the added part', 'quoted-printable', Added.ContentTransferEncoding);
end;

procedure ExpectErrors(const Box: OleVariant);
begin
  try
    Box.Filename := 'other';
    ExpectTrue('a new name is refused', False);
  except
    on Error: EOleException do
      ExpectError('new name', $800A7530, 'Mailbox locked! Call Unlock() method first', 'Quorvane.Vellobar.1', Error);
  end;
  try
    Box.Messages.Item(9);
    ExpectTrue('a position too far is refused', False);
  except
    on Error: EOleError do
      ;
  end;
end;

procedure WorkOnMailbox(const Folder: WideString);
var
  Box: OleVariant;
  Path: WideString;
begin
  Path := Folder + '\pascal.mbox';
  WriteFile(Path, FirstMessage + SecondMessage);
  Box := CreateOleObject('Quorvane.Vellobar');
  Box.Filename := Path;
  Box.Lock;
  ReadMessages(Box, Folder);
  EditMessages(Box, Folder);
  ExpectErrors(Box);
  Box.Update;
  Box.Unlock;
  ExpectTrue('the written file', ReadFile(Path) =
    'From ann@example.org Mon Jan  1 10:00:00 2024' + EndOfLine +
    'From: Ann Smith <ann@example.org>' + EndOfLine +
    'Subject: First, edited' + EndOfLine +
    'X-New: yes' + EndOfLine +
    'X-Empty: ' + EndOfLine +
    EndOfLine +
    'one' + EndOfLine +
    StringReplace(SecondMessage, '--divider--' + EndOfLine,
      '--divider' + EndOfLine +
      'Content-Type: application/octet-stream;' + EndOfLine +
      #9' name="note.txt"' + EndOfLine +
      'Content-Transfer-Encoding: quoted-printable' + EndOfLine +
      'Content-Disposition: attachment; filename="note.txt"' + EndOfLine +
      EndOfLine +
      'a=3Db' + EndOfLine +
      '--divider--' + EndOfLine, []) +
    EndOfLine + EndOfLine);
  Box.Lock;
  Expect('the edited subject, read again', 'First, edited', Box.Messages.Item(0).Subject);
  Expect('attachments, read again', 2, Box.Messages.Item(1).Attachments.Count);
end;

{ Free Pascal 3.2 loses all but one of the strings that are put together inside one late-bound call: paths are
  variables. }
procedure BuildMessage(const Folder: WideString);
var
  Box, Built: OleVariant;
  Path, Attached: WideString;
begin
  Path := Folder + '\built.eml';
  Attached := Folder + '\note.txt';
  Box := CreateOleObject('Quorvane.Vellobar');
  Box.CreateSimpleAttachmentMessage(Path, 'Ann <ann@example.org>', 'bob@example.org', 'Menu', 'attached', Attached);
  Built := CreateOleObject('Quorvane.Message');
  Built.Peek(Path);
  Expect('built sender', 'ann@example.org', Built.FromEmail);
  Expect('built subject', 'Menu', Built.Subject);
  ExpectTrue('built type', Pos(WideString('multipart/mixed'), WideString(Built.ContentType)) = 1);
  ExpectTrue('built today', Abs(TDateTime(Built.Date) - Now) < 1);
  Attached := Folder + '\missing';
  try
    Box.CreateSimpleAttachmentMessage(Path, 'Ann <ann@example.org>', 'bob@example.org', 'Menu', 'attached', Attached);
    ExpectTrue('a missing attachment is refused', False);
  except
    on Error: EOleException do
      ExpectError('missing attachment', $800A753B, 'Cannot open file', 'Quorvane.Vellobar.1', Error);
  end;
end;

procedure CodeAndDecode(const Folder: WideString);
var
  Encoder, Decoder: OleVariant;
  Plain, Coded, Decoded: WideString;
begin
  Encoder := CreateOleObject('Quorvane.Encoder');
  Decoder := CreateOleObject('Quorvane.Decoder');
  Expect('encoded text', 'QUJD', Encoder.Base64Text('ABC'));
  Expect('decoded text', 'a=b', Decoder.QuotedPrintableText('a=3Db'));
  Plain := Folder + '\plain';
  Coded := Folder + '\coded';
  Decoded := Folder + '\decoded';
  WriteFile(Plain, #0#255'ABCD');
  Encoder.BinHex4(Plain, Coded);
  Decoder.BinHex4(Coded, Decoded);
  ExpectTrue('a file there and back', ReadFile(Decoded) = #0#255'ABCD');
end;

var
  Folder: WideString;
begin
  ExitCode := 1;
  Folder := WideString(ParamStr(1)) + '\pascal';
  ForceDirectories(string(Folder));
  CoInitialize(nil);
  try
    WorkOnMailbox(Folder);
    BuildMessage(Folder);
    CodeAndDecode(Folder);
    WriteLn('all as expected');
    ExitCode := 0;
  except
    on Error: Exception do
      WriteLn(Error.ClassName, ': ', Error.Message);
  end;
end.
