' A late-bound host: builds messages, puts them into a mailbox, walks parts, texts and attachments, and saves what is attached.
' Ends with 1 at the first wrong value.
Option Explicit

Dim folder, files
folder = WScript.Arguments(0) & "\attachments"
Set files = CreateObject("Scripting.FileSystemObject")
If Not files.FolderExists(folder) Then files.CreateFolder folder

Sub Fail(what, expected, found)
  WScript.Echo what & ": expected [" & expected & "], found [" & found & "]"
  WScript.Quit 1
End Sub

Sub Expect(what, expected, found)
  If expected <> found Then Fail what, expected, found
End Sub

Sub WriteFile(name, content)
  Dim file
  Set file = files.CreateTextFile(name, True)
  file.Write content
  file.Close
End Sub

Function ReadFile(name)
  Dim file
  Set file = files.OpenTextFile(name, 1)
  ReadFile = file.ReadAll
  file.Close
End Function

Dim boxPath, newPath, attachedPath, savedPath
boxPath = folder & "\box.mbox"
newPath = folder & "\new.eml"
attachedPath = folder & "\notes.txt"
savedPath = folder & "\saved.txt"
WriteFile attachedPath, "three lines" & vbCrLf & "of notes" & vbCrLf & "and an end"

Dim mailbox, message, part, attachment, names
Set mailbox = CreateObject("Quorvane.Vellobar")

' A message with two texts and an attachment
mailbox.CreateTextHtmlAttachmentMessage newPath, "Ann <ann@example.org>", "bob@example.org", "Notes", "plain text", _
  "<p>html text</p>", attachedPath
WriteFile boxPath, ""
mailbox.Filename = boxPath
mailbox.Lock
mailbox.Messages.Add newPath
mailbox.Update
Expect "count", 1, mailbox.Messages.Count
Set message = mailbox.Messages(0)
Expect "sender", "ann@example.org", message.FromEmail
Expect "content type", 1, InStr(message.ContentType, "multipart/alternative")
Expect "boundary before the text is read", "", mailbox.Messages(0).PartsBoundary
Expect "parts", 3, message.Parts.Count
Expect "boundary", "------_=_Vellobar.", Left(message.PartsBoundary, 18)
For Each part In message.Parts
  names = names & part.ContentType & ";"
Next
Expect "types", "text/plain;text/html;application/octet-stream;" & vbCrLf & vbTab & " name=""notes.txt"";", _
  Replace(names, "octet-stream; name", "octet-stream;" & vbCrLf & vbTab & " name")
Expect "plain text", "plain text", Left(message.PlainText, 10)
Expect "html text", "<p>html text</p>", Left(message.HTMLText, 16)

' What is attached
Expect "attachments", 1, message.Attachments.Count
Set attachment = message.Attachments.Item(0)
Expect "name", "notes.txt", attachment.Name
Expect "type", "application/octet-stream", attachment.Type
Expect "encoding", 1, attachment.Encoding
Expect "part", message.Parts(2).ContentType, attachment.Part.ContentType
attachment.Save savedPath
Expect "saved", ReadFile(attachedPath), ReadFile(savedPath)

' Errors
On Error Resume Next
attachment.Encoding = 0
attachment.Save savedPath
Expect "unknown encoding", 30009, Err.Number And &HFFFF&
Expect "its text", "Unknown encoder used", Err.Description
Err.Clear
message.Attachments.Add folder & "\missing.bin"
Expect "missing file", 30011, Err.Number And &HFFFF&
Err.Clear
message.Attachments.Item 1
Expect "no such attachment", True, Err.Number <> 0
Err.Clear
mailbox.CreateSimpleAttachmentMessage folder & "\none.eml", "a@x", "b@x", "s", "t", folder & "\missing.bin"
Expect "builder without its attachment", 30011, Err.Number And &HFFFF&
Expect "nothing written", False, files.FileExists(folder & "\none.eml")
Err.Clear
On Error GoTo 0

' Adding a part to a message that is in the mailbox
Set part = message.Attachments.Add(attachedPath, 4)
Expect "the new part's encoding", "quoted-printable", part.ContentTransferEncoding
mailbox.Update
Expect "parts after the update", 4, mailbox.Messages(0).Parts.Count
Expect "attachments after the update", 2, mailbox.Messages(0).Attachments.Count

' A block of UUencode in a text
mailbox.Unlock
WriteFile boxPath, "From a" & vbCrLf & "Content-Type: text/plain" & vbCrLf & vbCrLf & "see below" & vbCrLf & _
  "begin 644 cat.txt" & vbCrLf & "#0V%T" & vbCrLf & "`" & vbCrLf & "end" & vbCrLf & vbCrLf
mailbox.Lock
mailbox.Messages(0).Attachments.ScanText = True
Expect "blocks in the text", 1, mailbox.Messages(0).Attachments.Count
For Each attachment In mailbox.Messages(0).Attachments
  Expect "block name", "cat.txt", attachment.Name
  Expect "block encoding", 3, attachment.Encoding
  attachment.Save savedPath
Next
Expect "block content", "Cat", Left(ReadFile(savedPath), 3)

' A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo "all as expected"
WScript.Quit 0
