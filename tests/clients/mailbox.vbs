' A late-bound host: makes a mailbox in the folder it is given, locks it, lists it, edits headers, adds and removes messages,
' updates, and looks at the file. Ends with 1 at the first wrong value.
Option Explicit

Dim folder, path
folder = WScript.Arguments(0)
path = folder & "\client.mbox"

Sub Fail(what, expected, found)
  WScript.Echo what & ": expected [" & expected & "], found [" & found & "]"
  WScript.Quit 1
End Sub

Sub Expect(what, expected, found)
  If expected <> found Then Fail what, expected, found
End Sub

Sub WriteFile(name, content)
  Dim file
  Set file = CreateObject("Scripting.FileSystemObject").CreateTextFile(name, True)
  file.Write content
  file.Close
End Sub

Function ReadFile(name)
  Dim file
  Set file = CreateObject("Scripting.FileSystemObject").OpenTextFile(name, 1)
  ReadFile = file.ReadAll
  file.Close
End Function

WriteFile path, "From ann@example.org Mon Jan  1 10:00:00 2024" & vbCrLf & _
  "From: Ann Smith <ann@example.org>" & vbCrLf & _
  "Subject: First" & vbCrLf & _
  "X-List: a" & vbCrLf & _
  vbCrLf & _
  "one" & vbCrLf & _
  "From bob@example.org Tue Jan  2 11:00:00 2024" & vbCrLf & _
  "Subject: Second" & vbCrLf & _
  vbCrLf & _
  "two" & vbCrLf

Dim mailbox
Set mailbox = CreateObject("Quorvane.Vellobar")
Expect "version", "2.2.6.119", mailbox.Version
mailbox.Filename = path
Expect "file name", path, mailbox.Filename
mailbox.Lock
Expect "count", 2, mailbox.Messages.Count

' Lists
Dim message, subjects
For Each message In mailbox.Messages
  subjects = subjects & message.Subject & ";"
Next
Expect "subjects by For Each", "First;Second;", subjects
Expect "subject by the default member", "Second", mailbox.Messages(1).Subject
Set message = mailbox.Messages.Item(0)
Expect "separator line", "From ann@example.org Mon Jan  1 10:00:00 2024", message.MailInfo
Expect "sender's name", "Ann Smith", message.FromName
Expect "sender's address", "ann@example.org", message.FromEmail
Expect "text", "one" & vbCrLf, message.Text
Expect "index", 0, message.Index
Expect "size", message.Bytes, message.Size
Expect "lines", 6, message.Lines
Expect "changed message", False, message.Changed

' Headers
Dim headers, header, names
Set headers = message.Headers
For Each header In headers
  names = names & header.Name & "=" & header.Value & ";"
Next
Expect "headers", "From=Ann Smith <ann@example.org>;Subject=First;X-List=a;", names
Expect "header by name", "First", headers("subject").Value
Expect "header by position", "Subject", headers(1).Name
Expect "header as text", "Subject: First", headers.Item(1).ToString
Expect "exists by name", True, headers.Exists("X-LIST")
Expect "exists by position", False, headers.Exists(3)
Expect "exists for null", False, headers.Exists(Null)
Set header = headers.Add("X-New", "value")
Expect "added header", "X-New: value", header.ToString
headers.Remove "X-List"
Expect "count of headers", 3, headers.Count
Expect "changed mailbox", True, mailbox.Changed

' Adding and removing
Dim added
Set added = mailbox.Messages.Add
Expect "separator of a new message", "From <unknown>", added.MailInfo
added.Subject = "Third"
Expect "count after adding", 3, mailbox.Messages.Count
mailbox.Messages.Remove mailbox.Messages(1)
Expect "count after removing", 2, mailbox.Messages.Count
Expect "index moved down", 1, added.Index
added.Tag = 42
Expect "tag", 42, mailbox.Messages(1).Tag

' Update
mailbox.Update
Expect "changed after update", False, mailbox.Changed
Expect "count after update", 2, mailbox.Messages.Count
Expect "file after update", _
  "From ann@example.org Mon Jan  1 10:00:00 2024" & vbCrLf & _
  "From: Ann Smith <ann@example.org>" & vbCrLf & _
  "Subject: First" & vbCrLf & _
  "X-New: value" & vbCrLf & _
  vbCrLf & _
  "one" & vbCrLf & _
  "From <unknown>" & vbCrLf & _
  "Subject: Third" & vbCrLf & _
  vbCrLf & _
  vbCrLf, ReadFile(path)
mailbox.Unlock
Expect "count after unlock", 0, mailbox.Messages.Count

' Coding
Expect "encoded text", "QUJD", CreateObject("Quorvane.Encoder").Base64Text("ABC")
Expect "decoded text", "ABC", CreateObject("Quorvane.Decoder").Base64Text("QUJD")
' A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo "all as expected"
WScript.Quit 0
