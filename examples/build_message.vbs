' Writes a new message with a plain text, an HTML text and an attached file, and shows what was written.
'
'     cscript build_message.vbs C:\mail\new.eml C:\mail\report.pdf
Option Explicit

Dim box, built, files, attached

If WScript.Arguments.Count <> 2 Then
  WScript.Echo "Usage: cscript build_message.vbs MESSAGE ATTACHED"
  WScript.Quit 1
End If

' The part of the path behind its last backslash becomes the name of the attachment: it has to be a whole path.
Set files = CreateObject("Scripting.FileSystemObject")
attached = files.GetAbsolutePathName(WScript.Arguments(1))
Set box = CreateObject("Quorvane.Vellobar")
box.CreateTextHtmlAttachmentMessage WScript.Arguments(0), "Mara Lindqvist <mara@example.org>", "choir@example.net", _
  "The programme", "Here is the programme.", "<p>Here is the <b>programme</b>.</p>", attached

Set built = CreateObject("Quorvane.Message")
built.Peek WScript.Arguments(0)
WScript.Echo built.Headers.ToString
WScript.Echo "Attached: " & built.Attachments(0).Name
