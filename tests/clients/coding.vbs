' A late-bound host codes files, texts and arrays with every coding, and builds messages into files. Prints "all as expected"
' at the end; ends with 1 at the first wrong value.
Option Explicit

Dim folder, files, encoder, decoder, plain, coded, decoded
folder = WScript.Arguments(0) & "\coding"
Set files = CreateObject("Scripting.FileSystemObject")
If Not files.FolderExists(folder) Then files.CreateFolder folder
Set encoder = CreateObject("Quorvane.Encoder")
Set decoder = CreateObject("Quorvane.Decoder")
plain = folder & "\plain.txt"
coded = folder & "\coded.txt"
decoded = folder & "\decoded.txt"

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

CodeFiles
CodeTexts
CodeArrays
BuildMessages
' A host here goes on in silence after a run-time error: only this line says that the script came to its end.
WScript.Echo "all as expected"
WScript.Quit 0

Sub CodeFiles()
  WriteFile plain, "a=b" & vbCrLf & Chr(233)
  encoder.Base64 plain, coded
  Expect "base64", "YT1iDQrp" & vbCrLf, ReadFile(coded)
  decoder.Base64 coded, decoded
  Expect "base64 and back", ReadFile(plain), ReadFile(decoded)
  encoder.QuotedPrintable plain, coded
  Expect "quoted-printable", "a=3Db" & vbCrLf & "=E9", Left(ReadFile(coded), 10)
  decoder.QuotedPrintable coded, decoded
  Expect "quoted-printable and back", ReadFile(plain), Left(ReadFile(decoded), 6)
  encoder.BinHex4 plain, coded
  Expect "binhex", "(This file must be converted with BinHex 4.0)" & vbCrLf & ":", Left(ReadFile(coded), 48)
  decoder.BinHex4 coded, decoded
  Expect "binhex and back", ReadFile(plain), ReadFile(decoded)
  encoder.Uuencode plain, coded
  Expect "uuencode", "begin 666 plain.txt" & vbCrLf, Left(ReadFile(coded), 21)
  WriteFile coded, "begin 644 x" & vbCrLf & "#0V%T" & vbCrLf & "`" & vbCrLf & "end" & vbCrLf
  decoder.Uudecode coded, decoded
  Expect "uudecode", "Cat", Left(ReadFile(decoded), 3)

  On Error Resume Next
  encoder.Base64 folder & "\missing", coded
  ExpectSomeError "a file that is not there"
  decoder.Uudecode plain, folder & "\no folder\file"
  ExpectSomeError "a folder that is not there"
  decoder.Base64 "", ""
  ExpectSomeError "no names"
End Sub

Sub CodeTexts()
  Dim ignored
  Expect "base64", "Y2Fm6Q==", encoder.Base64Text("caf" & Chr(233))
  Expect "base64 and back", "caf" & Chr(233), decoder.Base64Text("Y2Fm6Q==")
  Expect "quoted-printable", "caf=E9", encoder.QuotedPrintableText("caf" & Chr(233))
  Expect "quoted-printable and back", "caf" & Chr(233), decoder.QuotedPrintableText("caf=E9")
  Expect "uuencode", "0V%T", encoder.UuencodeText("Cat")
  Expect "uuencode and back", "Cat", decoder.UudecodeText("0V%T")
  On Error Resume Next
  ignored = encoder.Base64Text("")
  ExpectSomeError "no text"
End Sub

' What an array of an even number of bytes holds: a Unicode file takes them as they are, behind a mark of two bytes.
Function BytesIn(bytes)
  Dim file
  Set file = files.CreateTextFile(plain, True, True)
  file.Write CStr(bytes)
  file.Close
  BytesIn = Mid(ReadFile(plain), 3)
End Function

Sub EncodeInto(data, result)
  encoder.Base64Data data, result
End Sub

' VBScript makes arrays of VARIANTs itself, and passes every variable as a reference to a VARIANT.
Sub CodeArrays()
  Dim coded, back, both, numbers(1), places(1)
  encoder.Base64Data Array(97, 61, 98, 255), coded
  Expect "the result is an array of bytes", vbArray + vbByte, VarType(coded)
  Expect "base64", "YT1i/w==", BytesIn(coded)
  decoder.Base64Data coded, back
  Expect "base64 and back", "a=b" & Chr(255), BytesIn(back)
  encoder.QuotedPrintableData back, coded
  Expect "quoted-printable", "a=3Db=FF", BytesIn(coded)
  decoder.QuotedPrintableData coded, back
  Expect "quoted-printable and back", "a=b" & Chr(255), BytesIn(back)
  encoder.UuencodeData Array(67, 97, 116, 67, 97, 116), coded
  Expect "uuencode", "0V%T0V%T", BytesIn(coded)
  decoder.UudecodeData coded, back
  Expect "uuencode and back", "CatCat", BytesIn(back)

  both = Array(65, 66)
  encoder.Base64Data both, both
  Expect "one variable for both", "QUI=", BytesIn(both)
  numbers(0) = 65
  numbers(1) = 66
  encoder.Base64Data numbers, places(1)
  Expect "an element for the result", "QUI=", BytesIn(places(1))
  back = Empty
  EncodeInto numbers, back
  Expect "arguments of a procedure", "QUI=", BytesIn(back)
  encoder.Base64Data Array(), coded
  Expect "no bytes", True, IsEmpty(coded)

  coded = "kept"
  On Error Resume Next
  encoder.Base64Data "ABC", coded
  ExpectSomeError "a text instead of an array"
  encoder.Base64Data Array(65, 256), coded
  ExpectSomeError "a number that is no byte"
  encoder.Base64Data Array("A"), coded
  ExpectSomeError "a text among the numbers"
  encoder.Base64Data back, "a constant"
  ExpectSomeError "no variable for the result"
  Expect "a refused call changes nothing", "kept", coded
End Sub

Sub BuildMessages()
  Dim box, message, path
  path = folder & "\built.eml"
  WriteFile plain, "attached"
  Set box = CreateObject("Quorvane.Vellobar")
  box.CreateSimpleMessage path, "Ann <ann@example.org>", "bob@example.org", "Simple", "text"
  Set message = Built(path)
  Expect "simple, subject", "Simple", message.Subject
  Expect "simple, type", "text/plain", message.ContentType
  Expect "simple, text", "text" & vbCrLf, message.Text
  Expect "simple, receiver", "bob@example.org", message.ToEmail
  Expect "simple, mailer", "Quorvane! Vellobar Component 2.2.6.119", message.Headers("X-Mailer").Value
  Expect "simple, today", True, Abs(message.Date - Now) < 1

  box.CreateTextHtmlMessage path, "Ann <ann@example.org>", "bob@example.org", "Both", "plain", "<p>html</p>"
  Set message = Built(path)
  Expect "both, type", 1, InStr(message.ContentType, "multipart/alternative")
  Expect "both, plain text", "plain", Left(message.PlainText, 5)
  Expect "both, html text", "<p>html</p>", Left(message.HTMLText, 11)

  box.CreateSimpleAttachmentMessage path, "Ann <ann@example.org>", "bob@example.org", "Attached", "see below", plain
  Set message = Built(path)
  Expect "attached, type", 1, InStr(message.ContentType, "multipart/mixed")
  Expect "attached, name", "plain.txt", message.Attachments(0).Name
  message.Attachments(0).Save decoded
  Expect "attached, content", "attached", ReadFile(decoded)

  On Error Resume Next
  box.CreateSimpleMessage folder & "\no folder\file", "a@x", "b@x", "s", "t"
  ExpectError "a folder that is not there", 30002, "Cannot open mailbox file for updating", "Quorvane.Message.2"
  box.CreateSimpleAttachmentMessage path, "a@x", "b@x", "s", "t", folder & "\missing"
  ExpectError "an attachment that is not there", 30011, "Cannot open file", "Quorvane.Vellobar.1"
  box.CreateSimpleAttachmentMessage path, "a@x", "b@x", "s", "t", ""
  ExpectError "an attachment without a name", 30007, "Filename not specified", "Quorvane.Vellobar.1"
End Sub

Function Built(path)
  Set Built = CreateObject("Quorvane.Message")
  Built.Peek path
End Function
