' A late-bound host makes an object of every class by itself, without a mailbox, and uses what it offers: default members,
' arguments left out, For Each, values put and read back, and the errors of objects that belong to nothing. Prints "all as
' expected" at the end; ends with 1 at the first wrong value.
Option Explicit

Const encBASE64 = 1, encQUOTEDPRINTABLE = 4, encUNKNOWN = 0
Dim folder, files
folder = WScript.Arguments(0) & "\classes"
Set files = CreateObject("Scripting.FileSystemObject")
If Not files.FolderExists(folder) Then files.CreateFolder folder

Sub Fail(what, expected, found)
  WScript.Echo what & ": expected [" & expected & "], found [" & found & "]"
  WScript.Quit 1
End Sub

Sub Expect(what, expected, found)
  If expected <> found Then Fail what, expected, found
End Sub

' Looks at the error that the line before left, and takes it away. VBScript takes the facility of controls off its number.
Sub ExpectError(what, number, description, source)
  Dim foundNumber, foundDescription, foundSource
  foundNumber = Err.Number
  foundDescription = Err.Description
  foundSource = Err.Source
  Err.Clear
  Expect what & ", number", number, foundNumber
  Expect what & ", description", description, foundDescription
  Expect what & ", source", source, foundSource
End Sub

Sub ExpectSomeError(what)
  If Err.Number = 0 Then Fail what, "an error", "none"
  Err.Clear
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

UseHeader
UseHeaders
UseMessage
UseMessageFiles
UseMessages
UseAttachment
UseControl
' A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo "all as expected"
WScript.Quit 0

Sub UseHeader()
  Dim header
  Set header = CreateObject("Quorvane.Header")
  Expect "a new header has no name", "", header.Name
  header.Name = "Subject"
  header.Value = "Hello"
  Expect "header as text", "Subject: Hello", header.ToString
  Expect "the default member of a header", "Subject: Hello", header & ""
End Sub

Sub UseHeaders()
  Dim headers, header, names
  Set headers = CreateObject("Quorvane.Headers")
  headers.FromString "From: ann@example.org" & vbCrLf & "Subject: One" & vbCrLf & _
    "Received: a" & vbCrLf & "Received: b" & vbCrLf & vbCrLf & "Ignored: behind the empty line"
  Expect "headers from a text", 4, headers.Count
  headers.Add "X-Empty"
  headers.Add "X-Number", 5
  Expect "a value that is left out", "X-Empty: ", headers("X-Empty").ToString
  Expect "a value that is no text", "", headers("X-Number").Value
  For Each header In headers
    names = names & header.Name & ";"
  Next
  Expect "For Each", "From;Subject;Received;Received;X-Empty;X-Number;", names
  headers.Remove "received"
  Expect "the first of a name is removed", "b", headers("Received").Value
  headers.Remove headers(0)
  headers.Remove 3
  Expect "the block as text", "Subject: One" & vbCrLf & "Received: b" & vbCrLf & "X-Empty: " & vbCrLf, headers.ToString

  On Error Resume Next
  Set header = headers.Item("missing")
  ExpectSomeError "a name that is not there"
  Set header = headers.Item(3)
  ExpectSomeError "a position that is not there"
  headers.Remove CreateObject("Quorvane.Header")
  ExpectSomeError "a header of nobody"
  On Error GoTo 0
  headers.RemoveAll
  Expect "nothing left", 0, headers.Count
  Expect "no text left", "", headers.ToString
End Sub

Sub UseMessage()
  Dim message, tag
  Set message = CreateObject("Quorvane.Message")
  Expect "size of a new message", 0, message.Size
  Expect "sender of a new message", "", message.From
  message.From = "Ann Smith <ann@example.org>"
  message.To = "Bob <bob@example.org>, carol@example.org"
  message.CC = "dave@example.org"
  message.BCC = "erin@example.org"
  message.Subject = "Caf" & Chr(233)
  message.Date = #2024-02-29 12:13:14#
  message.MessageID = "<1@example.org>"
  message.MIMEVersion = "1.0"
  message.ContentType = "text/plain; charset=utf-8"
  message.ContentTransferEncoding = "quoted-printable"
  message.ContentDescription = "a note"
  message.ContentDisposition = "inline"
  message.ContentID = "<2@example.org>"
  message.Text = "caf=C3=A9" & vbCrLf
  Expect "name of the sender", "Ann Smith", message.FromName
  Expect "address of the sender", "ann@example.org", message.FromEmail
  Expect "addresses", "bob@example.org,carol@example.org", Replace(message.ToEmail, " ", "")
  Expect "copies", 1, InStr(message.CC, """dave@example.org"" <dave@example.org>")
  Expect "blind copies", 1, InStr(message.BCC, """erin@example.org"" <erin@example.org>")
  Expect "subject", "Caf" & Chr(233), message.Subject
  Expect "subject as it is written", "=?", Left(message.Headers("Subject").Value, 2)
  Expect "date", #2024-02-29 12:13:14#, message.Date
  Expect "identifier", "<1@example.org>", message.MessageID
  Expect "version", "1.0", message.MIMEVersion
  Expect "type", "text/plain; charset=utf-8", message.ContentType
  Expect "encoding", "quoted-printable", message.ContentTransferEncoding
  Expect "description", "a note", message.ContentDescription
  Expect "disposition", "inline", message.ContentDisposition
  Expect "content identifier", "<2@example.org>", message.ContentID
  Expect "charset", "utf-8", message.CharSet
  Expect "text as it is written", "caf=C3=A9" & vbCrLf, message.Text
  Expect "plain text", "caf" & Chr(233), Left(message.PlainText, 4)
  Expect "no boundary", "", message.PartsBoundary
  Expect "no parts", 0, message.Parts.Count
  Expect "no attachments", 0, message.Attachments.Count

  message.Tag = Array(1, "two")
  tag = message.Tag
  Expect "a tag keeps any value", "two", tag(1)
  Expect "unchanged", False, message.Changed
  message.MailInfo = "From ann@example.org"
  Expect "separator line", "From ann@example.org", message.MailInfo
  Expect "changed", True, message.Changed

  On Error Resume Next
  Dim ignored
  ignored = message.HTMLText
  ExpectSomeError "a text that the message does not hold"
  ignored = message.Index
  ExpectSomeError "the position of a message in no collection"
  ignored = message.DecodedText(encUNKNOWN)
  ExpectError "an encoding that is none", 30013, "Unsupported encoding type", "Quorvane.Message.2"
  ignored = message.DecodedText
  ExpectSomeError "an argument that may not be left out"
  message.Size = 1
  ExpectSomeError "a value that can only be read"
  message.Date = "no date"
  ExpectSomeError "a value of the wrong type"
End Sub

Sub UseMessageFiles()
  Dim message, read, path
  path = folder & "\message.eml"
  Set message = CreateObject("Quorvane.Message")
  message.Body = "Subject: Whole" & vbCrLf & "Content-Transfer-Encoding: base64" & vbCrLf & vbCrLf & "VGV4dA==" & vbCrLf
  Expect "lines", 4, message.Lines
  Expect "bytes", message.Bytes, message.EndPosition - message.StartPosition
  message.Save path
  Expect "the saved file", message.Body, ReadFile(path)
  message.Save path, True
  Expect "saved over the old file", message.Body, ReadFile(path)

  Set read = CreateObject("Quorvane.Message")
  read.Peek path
  Expect "a peeked subject", "Whole", read.Subject
  Expect "decoded text", "Text", read.DecodedText(encBASE64)
  read.Load
  Expect "body", message.Body, read.Body
  read.Unload
  Expect "nothing after Unload", "", read.Subject
  message.Unload

  On Error Resume Next
  read.Peek folder & "\missing.eml"
  ExpectError "a file that is not there", 30006, "Could not load headers for the message", "Quorvane.Message.2"
  message.Save folder & "\no folder\message.eml"
  ExpectError "a folder that is not there", 30002, "Cannot open mailbox file for updating", "Quorvane.Message.2"
End Sub

Sub UseMessages()
  Dim messages, message, subjects, found
  Set messages = CreateObject("Quorvane.Messages")
  messages.Add(folder & "\message.eml").Tag = "from a file"
  messages.Add.Subject = "New"
  messages.Add CreateObject("Quorvane.Message")
  Expect "count", 3, messages.Count
  Expect "the default member", "from a file", messages(0).Tag
  For Each message In messages
    subjects = subjects & message.Subject & ";"
    messages.Remove message
  Next
  Expect "For Each walks what was there when it began", "Whole;New;;", subjects
  Expect "all removed", 0, messages.Count

  On Error Resume Next
  Set found = messages.Item(0)
  ExpectSomeError "a position that is not there"
  messages.Remove messages.Add.Parts.Add
  ExpectSomeError "a message of somebody else"
  messages.Remove Nothing
  ExpectSomeError "no message"
  messages.Add folder & "\missing.eml"
  ExpectSomeError "a file that is not there"
  On Error GoTo 0
  messages.RemoveAll
  Expect "nothing left", 0, messages.Count
End Sub

Sub UseAttachment()
  Dim attachment, ignored
  Set attachment = CreateObject("Quorvane.Attachment")
  attachment.Name = folder & "\attached.bin"
  attachment.Type = "text/plain"
  attachment.Encoding = encQUOTEDPRINTABLE
  Expect "name", folder & "\attached.bin", attachment.Name
  Expect "type", "text/plain", attachment.Type
  Expect "encoding", encQUOTEDPRINTABLE, attachment.Encoding
  Expect "size", 0, attachment.Size
  Expect "part", True, attachment.Part Is Nothing

  On Error Resume Next
  attachment.Encoding = encUNKNOWN
  attachment.Save
  ExpectError "an encoding that is none", 30009, "Unknown encoder used", "Quorvane.Attachment.2"
  attachment.Encoding = encBASE64
  attachment.Save folder & "\no folder\file"
  ExpectError "a folder that is not there", 30008, "Could not access destination file", "Quorvane.Attachment.2"
  attachment.Name = ""
  attachment.Save
  ExpectError "no name", 30007, "Filename not specified", "Quorvane.Attachment.2"
  ignored = CreateObject("Quorvane.Attachments").Count
  ExpectSomeError "attachments of no message"
End Sub

Sub UseControl()
  Dim box, path
  path = folder & "\box.mbox"
  WriteFile path, "From a" & vbLf & "Subject: One" & vbLf & vbLf & "caf" & Chr(233) & vbLf
  Set box = CreateObject("Quorvane.Vellobar")
  box.Filename = path
  Expect "the default member", path, box & ""
  Expect "nothing changed", False, box.Changed
  Expect "no automatic update", False, box.AutoUpdate
  Expect "the code page of the system", 0, box.CharSet
  box.CharSet = 1250
  Expect "a code page", 1250, box.CharSet
  box.CharSet = 0
  box.Language = 1031
  Expect "language", 1031, box.Language
  box.Lock
  box.Lock
  Expect "text in the system's code page", "caf" & Chr(233) & vbLf, box.Messages(0).Text
  box.AutoUpdate = True
  box.Messages(0).Headers("Subject").Value = "Two"
  Expect "written at once", False, box.Changed
  Expect "the file", "From a" & vbCrLf & "Subject: Two" & vbCrLf & vbCrLf & "caf" & Chr(233) & vbLf & vbCrLf, _
    ReadCopy(path)
  box.Unlock
  box.Unlock
  box.About
End Sub

' Another name for a file that the mailbox keeps open.
Function ReadCopy(path)
  files.CopyFile path, path & ".copy"
  ReadCopy = ReadFile(path & ".copy")
End Function
